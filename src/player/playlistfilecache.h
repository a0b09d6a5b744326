#pragma once

#include "store/fileio.h"
#include "store/records.h"

#include <QString>

#include <functional>
#include <optional>

// The last decoded playlist file, kept while the file is unchanged on disk
// (same path and stamp), so that repainting the skin does
// not decode it again on every frame. A failed read is kept too, so that its
// message is printed once per change of the file, not once per frame.
class PlaylistFileCache
{
public:
    using Reader = std::function<std::optional<QList<Track>>()>;

    // The tracks of the file at path; read calls reader when it changed.
    const std::optional<QList<Track>>& tracks(const QString& path, const Reader& reader);
    int reads() const { return m_reads; }

private:
    struct Stamp {
        QString path;
        FileStamp file;
        bool operator==(const Stamp&) const = default;
    };
    std::optional<Stamp> m_stamp;
    std::optional<QList<Track>> m_tracks;
    int m_reads = 0;
};
