#pragma once

#include <QString>

// Prints one line on standard output and flushes it. Line breaks inside the
// text are folded into spaces so that a message always stays one line.
void printLine(const QString& text);

// Stops the process on a programming error, naming what broke. Always on,
// unlike assert(), because a release build must not run on with a bad index.
[[noreturn]] void programmingError(const char* what);

#define PLINK_CHECK(condition, what)      \
    do {                                  \
        if (!(condition))                 \
            programmingError(what);       \
    } while (false)
