#include "player/playlistfilecache.h"

#include <QFileInfo>

const std::optional<QList<Track>>& PlaylistFileCache::tracks(const QString& path, const Reader& reader)
{
    const QFileInfo info(path);
    Stamp stamp{path, {}, {}, -1};
    if (info.exists())
        stamp = {path, info.lastModified(), info.birthTime(), info.size()};
    if (m_stamp != stamp) {
        m_tracks = reader();
        m_stamp = stamp;
        ++m_reads;
    }
    return m_tracks;
}
