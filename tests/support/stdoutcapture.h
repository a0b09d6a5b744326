#pragma once

#include <QStringList>
#include <QTemporaryFile>

// Captures what the program prints on standard output (or, given its file
// descriptor, standard error) while it is alive, so that a test can check the
// exact one-line messages.
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
