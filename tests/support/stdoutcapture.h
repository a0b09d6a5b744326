#pragma once

#include <QStringList>

// Captures what the program prints on standard output while it is alive, so
// that a test can check the exact one-line messages.
class StdoutCapture
{
public:
    StdoutCapture();
    ~StdoutCapture();
    Q_DISABLE_COPY(StdoutCapture)

    QString text();
    QStringList lines(); // without the trailing empty line

private:
    int m_savedFd = -1;
    int m_fileFd = -1;
};
