#pragma once

#include "store/records.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Stops the run like a crash, so that libFuzzer keeps the input.
[[noreturn]] inline void fuzzFault(const char* what, const QString& fault)
{
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(fault));
    std::abort();
}

// One decoder over the fuzzer's bytes: a failure says why; a record written and decoded again is the same record,
// and writes the same bytes.
template <class Record>
int fuzzDecoder(const uint8_t* data, size_t size, Decoded<Record> (*decode)(const QByteArray&), const char* what)
{
    const Decoded<Record> first = decode(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!first && first.error.isEmpty())
        fuzzFault(what, "a failed decode gives no reason");
    if (!first)
        return 0;
    const QByteArray written = toJson(*first.value);
    const Decoded<Record> again = decode(written);
    if (!again || !(*again.value == *first.value) || toJson(*again.value) != written)
        fuzzFault(what, "the record changes when written and read again: " + again.error + "\n" + QString::fromUtf8(written));
    return 0;
}
