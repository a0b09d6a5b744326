#include "filewrites.h"

#include <QFile>
#include <QProcess>

#include <sys/inotify.h>
#include <unistd.h>

namespace SettingsFixtures {

bool makeMp3(const QString& path, const QString& title, const QString& artist)
{
    QStringList arguments{"-v", "error", "-y", "-f", "lavfi", "-i", "anullsrc=r=8000:cl=mono", "-t", "0.1"};
    if (title.isEmpty() && artist.isEmpty())
        arguments << "-write_id3v1" << "0" << "-id3v2_version" << "0";
    else
        arguments << "-metadata" << "title=" + title << "-metadata" << "artist=" + artist << "-id3v2_version" << "3";
    arguments << "-codec:a" << "libmp3lame" << path;
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), arguments);
    if (ffmpeg.waitForFinished(30000) && ffmpeg.exitStatus() == QProcess::NormalExit && ffmpeg.exitCode() == 0)
        return true;
    qWarning("ffmpeg could not make %s: %s", qPrintable(path), ffmpeg.readAllStandardError().constData());
    return false;
}

FileWrites::FileWrites(const QString& folder)
    : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (m_fd < 0 || inotify_add_watch(m_fd, QFile::encodeName(folder).constData(), IN_CLOSE_WRITE | IN_MOVED_TO) < 0)
        qWarning("cannot watch %s", qPrintable(folder));
}

FileWrites::~FileWrites()
{
    if (m_fd >= 0)
        close(m_fd);
}

int FileWrites::count(const QString& fileName)
{
    alignas(inotify_event) char buffer[16384];
    ssize_t size = 0;
    while (m_fd >= 0 && (size = read(m_fd, buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            if (event->len > 0)
                ++m_counts[QFile::decodeName(event->name)];
            at += ssize_t(sizeof(inotify_event)) + event->len;
        }
    }
    return m_counts.value(fileName);
}

} // namespace SettingsFixtures
