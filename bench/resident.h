#pragma once

#include <QByteArray>
#include <QFile>

// The process's resident memory in MiB, as the kernel counts it; -1 when unknown.
inline double residentMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024;
    }
    return -1;
}
