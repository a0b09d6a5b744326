#pragma once

// Files, folders and playlist files turned into the audio files to add, and
// playlists written out as M3U8. Runs on a worker thread: no GUI, no shared state.

#include "store/records.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>

class QMimeData;

// What the user handed over, made into the audio files to add.
struct FoundTracks {
    QList<QUrl> files;  // local file URLs (QUrl::fromLocalFile of absolute clean paths), in order
    QStringList lines;  // one line per thing skipped, ready to print, in order
};

// Files, folders and playlist files expanded into audio files, in the order handed.
// cancelled (may be empty) is polled now and then; when it returns true the walk stops early.
FoundTracks findTracks(const QList<QUrl>& handed, const std::function<bool()>& cancelled = {});
// The local files and folders among dropped URLs, in their order.
QList<QUrl> droppedLocalUrls(const QMimeData* mime);
bool isAudioFileName(const QString& path);     // by extension, case-insensitive
bool isPlaylistFileName(const QString& path);  // .m3u .m3u8 .pls, case-insensitive
// One playlist file's entries (each entry that is a folder is walked like a handed folder).
FoundTracks readPlaylistFile(const QString& path);
// The tracks as an extended M3U8 text for a file at playlistPath.
QByteArray toM3u8(const QList<Track>& tracks, const QString& playlistPath);
// Writes toM3u8 through writeFileAtomic; false (after one printed line) when it fails.
bool exportPlaylist(const QList<Track>& tracks, const QString& playlistPath);
