#pragma once

#include "roundtrip.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Runs one decoder over the fuzzer's bytes; a fault stops the run like a
// crash, so that libFuzzer keeps the input.
template <class Record>
void fuzzDecoder(const uint8_t* data, size_t size, Decoded<Record> (*decode)(const QByteArray&),
                 const char* what)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString fault = decoderFault(bytes, decode);
    if (fault.isEmpty())
        return;
    std::fprintf(stderr, "%s decoder: %s\n", what, qPrintable(fault));
    std::abort();
}
