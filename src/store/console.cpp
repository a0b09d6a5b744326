#include "store/console.h"

#include <cstdio>
#include <cstdlib>

void printLine(const QString& text)
{
    QString line = text;
    line.replace(QLatin1String("\r\n"), QLatin1String(" "));
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    line.replace(QLatin1Char('\r'), QLatin1Char(' '));
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void programmingError(const char* what)
{
    std::fprintf(stderr, "plinkbox: programming error: %s\n", what);
    std::fflush(stderr);
    std::abort();
}
