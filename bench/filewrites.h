#pragma once

#include <QHash>
#include <QString>

// What the playlist benchmark makes and counts.
namespace SettingsFixtures {

// A tenth of a second of silence as an MP3 made with ffmpeg; title and artist
// go into an ID3v2.3 tag, and without either the file has no tag at all.
bool makeMp3(const QString& path, const QString& title = {}, const QString& artist = {});

// Counts the completed writes of the files in one folder as inotify reports
// them: a plain write when the file is closed, an atomic one when renamed in.
class FileWrites
{
public:
    explicit FileWrites(const QString& folder);
    ~FileWrites();
    int count(const QString& fileName); // since the watch began

private:
    Q_DISABLE_COPY(FileWrites)
    int m_fd = -1;
    QHash<QString, int> m_counts;
};

} // namespace SettingsFixtures
