#include "support/stdoutcapture.h"

#include <QByteArray>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

StdoutCapture::StdoutCapture()
{
    std::fflush(stdout);
    char path[] = "/tmp/plinkbox-stdout-XXXXXX";
    m_fileFd = mkstemp(path);
    unlink(path);
    m_savedFd = dup(STDOUT_FILENO);
    dup2(m_fileFd, STDOUT_FILENO);
}

StdoutCapture::~StdoutCapture()
{
    // A check that failed while capturing wrote its message here: pass it on,
    // with what the program printed, or the failure would go unexplained.
    if (QTest::currentTestFailed()) {
        const QByteArray held = text().toUtf8();
        if (write(m_savedFd, held.constData(), size_t(held.size())) < 0)
            std::perror("StdoutCapture");
    }
    std::fflush(stdout);
    dup2(m_savedFd, STDOUT_FILENO);
    close(m_savedFd);
    close(m_fileFd);
}

QString StdoutCapture::text()
{
    std::fflush(stdout);
    QByteArray all;
    char buffer[4096];
    for (off_t offset = 0;;) {
        const ssize_t got = pread(m_fileFd, buffer, sizeof buffer, offset);
        if (got <= 0)
            break;
        all.append(buffer, got);
        offset += got;
    }
    return QString::fromUtf8(all);
}

QStringList StdoutCapture::lines()
{
    QStringList result = text().split(QLatin1Char('\n'));
    if (!result.isEmpty() && result.last().isEmpty())
        result.removeLast();
    return result;
}
