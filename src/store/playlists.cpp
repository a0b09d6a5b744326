// Config's playlist files: where they are, creating and deleting playlists.
#include "store/config.h"

#include "store/console.h"
#include "store/fileio.h"
#include "store/jsonreader.h"
#include "store/playlistwatcher.h"

#include <QCoreApplication>

#include <malloc.h>

QString Config::playlistsFolder() const
{
    //: A folder's name on disk: keep it as it is, or another language would not find the playlists.
    return applicationFolder() + QLatin1Char('/') + QCoreApplication::translate("Config", "Playlists");
}

void Config::watchPlaylistFiles()
{
    m_playlistWatcher = new PlaylistWatcher(this);
    const auto watchCatalogue = [this] {
        QHash<QUuid, QString> files;
        for (const Playlist& playlist : playlists())
            files.insert(playlist.id, playlistFileURL(playlist.id));
        m_playlistWatcher->watch(playlistsFolder(), files);
    };
    watchCatalogue();
    connect(this, &Config::changed, m_playlistWatcher, [watchCatalogue](Property property) {
        if (property == Property::playlists)
            watchCatalogue();
    });
    connect(m_playlistWatcher, &PlaylistWatcher::fileChanged, this, &Config::playlistTracksWritten);
}

QString Config::playlistFileURL(const QUuid& id) const
{
    return playlistsFolder() + QLatin1Char('/') + uuidText(id) + QStringLiteral(".json");
}

void Config::ensurePlaylistsFolder()
{
    // Only a missing folder counts as a first start; an empty one is left alone.
    const QString folder = playlistsFolder();
    if (existsAt(folder))
        return;
    if (const QString error = makeFolder(folder); !error.isEmpty()) {
        printLine(error);
        return;
    }
    createPlaylist();
}

void Config::createPlaylist()
{
    if (lastSelectedPlaylistID() != 0)
        setLastSelectedPlaylistID(0);
    //: The name of a new playlist
    const QString name = QCoreApplication::translate("Config", "Untitled");
    const QUuid id = QUuid::createUuid();
    const QString error = writeFileAtomic(playlistFileURL(id), toJson(PlaylistData{}));
    printLine(error.isEmpty() ? QStringLiteral("New playlist written successfully.") : error);
    QList<Playlist> catalogue = playlists();
    catalogue.append({id, name});
    setPlaylists(catalogue);
    saveSettings();
}

void Config::deletePlaylist(const QUuid& id)
{
    if (lastSelectedPlaylistID() != 0)
        setLastSelectedPlaylistID(0);
    const QString path = playlistFileURL(id);
    // The catalogue is never left empty.
    if (playlists().size() == 1)
        createPlaylist();
    if (existsAt(path)) {
        if (const QString error = removeFile(path); !error.isEmpty())
            printLine(QStringLiteral("Failed to delete playlist file: ") + error);
    }
    QList<Playlist> catalogue = playlists();
    const auto found = std::find_if(catalogue.begin(), catalogue.end(),
                                    [&](const Playlist& playlist) { return playlist.id == id; });
    if (found == catalogue.end())
        return;
    catalogue.erase(found);
    setPlaylists(catalogue);
    saveSettings();
}

void Config::writePlaylistTracks(const QUuid& id, const QList<Track>& tracks)
{
    if (m_unreadablePlaylists.remove(id))
        keepBrokenCopy(playlistFileURL(id));
    const QString error = writeFileAtomic(playlistFileURL(id), toJson(PlaylistData{tracks}));
    // The wording names theme.json although a playlist is written; it is kept as is.
    if (!error.isEmpty())
        printLine(QStringLiteral("Failed to write theme.json: ") + error);
    else {
        keepTracksRead({id, fileStamp(playlistFileURL(id)), tracks});
        if (m_playlistWatcher)
            m_playlistWatcher->noteWritten(id);
        emit playlistTracksWritten(id);
    }
}

namespace {

// Decoding leaves a long list's texts scattered among the decoder's freed
// blocks, three times the memory they need; copied afresh they sit together
// and the rest can be given back.
QList<Track> packed(const QList<Track>& tracks)
{
    const auto copy = [](const QString& text) { return QString(text.constData(), text.size()); };
    QList<Track> result;
    result.reserve(tracks.size());
    for (const Track& track : tracks)
        result.append({track.id, copy(track.urlString), copy(track.trackName), copy(track.artist)});
    return result;
}

} // namespace

void Config::keepTracksRead(TracksRead read) const
{
    // The current playlist and the one being edited, with room to switch between a few.
    constexpr qsizetype kept = 3;
    m_tracksRead.removeIf([&](const TracksRead& old) { return old.id == read.id; });
    m_tracksRead.prepend(std::move(read));
    if (m_tracksRead.size() > kept)
        m_tracksRead.resize(kept);
}

const Config::TracksRead* Config::tracksReadAt(const QUuid& id, const FileStamp& stamp) const
{
    for (const TracksRead& read : std::as_const(m_tracksRead)) {
        if (read.id == id && read.stamp == stamp)
            return &read;
    }
    return nullptr;
}

std::optional<QList<Track>> Config::readPlaylistTracks(const QUuid& id) const
{
    const QString path = playlistFileURL(id);
    const FileStamp stamp = fileStamp(path);
    if (const TracksRead* read = tracksReadAt(id, stamp))
        return read->tracks;
    ++m_playlistReads;
    const FileBytes file = readWholeFile(path);
    Decoded<PlaylistData> data = file.bytes ? playlistDataFromJson(*file.bytes) : Decoded<PlaylistData>{};
    std::optional<QList<Track>> tracks;
    if (data) {
        m_unreadablePlaylists.remove(id);
        tracks = std::move(data.value->tracks);
        if (file.bytes->size() > (1 << 20)) {
            tracks = packed(*tracks);
            malloc_trim(0);
        }
    } else {
        printLine(file.bytes ? data.error : file.error);
        m_unreadablePlaylists.insert(id);
    }
    keepTracksRead({id, stamp, tracks});
    return tracks;
}

std::optional<Track> Config::playlistTrack(const QUuid& id, qint64 index) const
{
    const QString path = playlistFileURL(id);
    const FileStamp stamp = fileStamp(path);
    if (const TracksRead* read = tracksReadAt(id, stamp))
        return read->tracks && index >= 0 && index < read->tracks->size() ? std::optional(read->tracks->at(index))
                                                                            : std::nullopt;
    if (index < 0)
        return std::nullopt;
    if (m_trackRead && m_trackRead->id == id && m_trackRead->index == index && m_trackRead->stamp == stamp)
        return m_trackRead->track;
    if (const FileBytes file = readWholeFile(path); file.bytes) {
        const JsonElement element = jsonArrayElement(*file.bytes, QLatin1StringView("tracks"), index);
        QString error;
        const auto object = element.outcome == JsonElement::Outcome::found
            ? parseJsonObject(element.text.toByteArray(), error) : std::nullopt;
        Decoded<Track> track = object ? trackFromJson(*object, index) : Decoded<Track>{};
        if (track || element.outcome == JsonElement::Outcome::pastTheEnd) {
            m_trackRead = TrackRead{id, index, stamp, track.value};
            return track.value;
        }
    }
    // Not as we write it: the whole decoding tells what is wrong.
    const auto tracks = readPlaylistTracks(id);
    return tracks && index < tracks->size() ? std::optional(tracks->at(index)) : std::nullopt;
}

std::optional<QList<Track>> Config::currentPlaylistTracks() const
{
    const qint64 index = currentPlaylistIndex();
    const QList<Playlist> catalogue = playlists();
    PLINK_CHECK(index >= 0 && index < catalogue.size(), "currentPlaylistIndex is outside the playlists");
    return readPlaylistTracks(catalogue.at(index).id);
}

bool Config::bringCurrentPlaylistIntoRange()
{
    const qint64 count = playlists().size();
    if (count == 0)
        return false;
    if (currentPlaylistIndex() < 0 || currentPlaylistIndex() >= count)
        setCurrentPlaylistIndex(0);
    return true;
}
