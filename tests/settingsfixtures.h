#pragma once

#include <QHash>
#include <QString>

// Fixtures shared by the playlist editor's tests and benchmark.
namespace SettingsFixtures {

// A tenth of a second of silence as an MP3 made with ffmpeg; title and artist
// go into an ID3v2.3 tag, and without either the file has no tag at all.
bool makeMp3(const QString& path, const QString& title = {}, const QString& artist = {});

// Counts the completed writes of the files in one folder as the kernel
// reports them (inotify): a plain write when the file is closed, an atomic
// one when its temporary file is renamed into place.
class FileWrites
{
public:
    explicit FileWrites(const QString& folder);
    ~FileWrites();
    FileWrites(const FileWrites&) = delete;
    FileWrites& operator=(const FileWrites&) = delete;

    bool isWatching() const { return m_watch >= 0; }
    // Writes of fileName since the watch began (or since the last reset).
    int count(const QString& fileName);
    void reset();

private:
    void drain();

    int m_fd = -1;
    int m_watch = -1;
    QHash<QString, int> m_counts;
};

} // namespace SettingsFixtures
