#pragma once

#include <QStringList>
#include <QTemporaryFile>

// What the program prints on standard output (or the descriptor given) while this lives: the exact one-line messages.
class StdoutCapture
{
public:
    explicit StdoutCapture(int fd = 1);
    ~StdoutCapture();
    Q_DISABLE_COPY(StdoutCapture)

    QString text();
    QStringList lines(); // without the trailing empty line

private:
    QTemporaryFile m_file;
    int m_fd;
    int m_savedFd = -1;
};
