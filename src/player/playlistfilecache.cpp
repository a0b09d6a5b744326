#include "player/playlistfilecache.h"


const std::optional<QList<Track>>& PlaylistFileCache::tracks(const QString& path, const Reader& reader)
{
    const Stamp stamp{path, fileStamp(path)};
    if (m_stamp != stamp) {
        m_tracks = reader();
        m_stamp = stamp;
        ++m_reads;
    }
    return m_tracks;
}
