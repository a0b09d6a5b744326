#pragma once

#include "store/records.h"

#include <QByteArray>
#include <QString>

// What is wrong with a decoder's answer to bytes, or an empty text. A failure
// must say why; a decoded record must survive being written and read again:
// the second decode succeeds, gives the same record, and writing that gives
// the same bytes. Shared by the fuzz targets and the decoder regression tests.
template <class Record>
QString decoderFault(const QByteArray& bytes, Decoded<Record> (*decode)(const QByteArray&))
{
    const Decoded<Record> first = decode(bytes);
    if (!first)
        return first.error.isEmpty() ? QStringLiteral("a failed decode gives no reason") : QString();
    const QByteArray written = toJson(*first.value);
    const Decoded<Record> again = decode(written);
    QString fault;
    if (!again)
        fault = QStringLiteral("the written file does not decode: ") + again.error;
    else if (!(*again.value == *first.value))
        fault = QStringLiteral("the written file decodes to another record");
    else if (toJson(*again.value) != written)
        fault = QStringLiteral("writing the record again gives other bytes");
    if (!fault.isEmpty())
        fault += QStringLiteral("\nwritten:\n") + QString::fromUtf8(written);
    return fault;
}
