#include "support/stdoutcapture.h"

#include <QTest>

#include <cstdio>
#include <unistd.h>

StdoutCapture::StdoutCapture(int fd)
    : m_fd(fd)
{
    std::fflush(nullptr);
    if (!m_file.open())
        qFatal("cannot capture standard output");
    m_savedFd = dup(fd);
    dup2(m_file.handle(), fd);
}

StdoutCapture::~StdoutCapture()
{
    // A check failing while capturing wrote its message here: pass it on, with what was printed, or it goes unexplained.
    const QByteArray held = QTest::currentTestFailed() ? text().toUtf8() : QByteArray();
    std::fflush(nullptr);
    dup2(m_savedFd, m_fd);
    close(m_savedFd);
    std::fwrite(held.constData(), 1, size_t(held.size()), m_fd == STDERR_FILENO ? stderr : stdout);
    std::fflush(nullptr);
}

QString StdoutCapture::text()
{
    std::fflush(nullptr);
    QFile file(m_file.fileName());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList StdoutCapture::lines()
{
    QStringList result = text().split(QLatin1Char('\n'));
    if (result.last().isEmpty())
        result.removeLast();
    return result;
}
