#include "app/trackopener.h"

#include "playback/audioplayer.h"
#include "playback/tagreader.h"
#include "player/transport.h"
#include "store/config.h"
#include "store/console.h"

#include <QDir>

TrackOpener::TrackOpener(Config& config, AudioPlayer& audioPlayer, Transport& transport, QObject* parent)
    : QObject(parent)
    , m_config(config)
    , m_audioPlayer(audioPlayer)
    , m_transport(transport)
{
}

QStringList TrackOpener::supportedMimeTypes()
{
    return {QStringLiteral("audio/mpeg"),  QStringLiteral("audio/mp4"),   QStringLiteral("audio/x-m4a"),
            QStringLiteral("audio/aac"),   QStringLiteral("audio/flac"),  QStringLiteral("audio/x-flac"),
            QStringLiteral("audio/ogg"),   QStringLiteral("audio/x-vorbis+ogg"), QStringLiteral("audio/x-opus+ogg"),
            QStringLiteral("audio/opus"),  QStringLiteral("audio/x-wav"), QStringLiteral("audio/wav"),
            QStringLiteral("audio/x-aiff"), QStringLiteral("audio/aiff"),
            // Playlist files: their tracks are added.
            QStringLiteral("audio/x-mpegurl"), QStringLiteral("audio/mpegurl"),
            QStringLiteral("application/vnd.apple.mpegurl"), QStringLiteral("audio/x-scpls")};
}

QUrl TrackOpener::fromArgument(const QString& argument)
{
    const QUrl url(argument);
    if (url.scheme().size() > 1) // a drive-letter-like "c:" is no scheme
        return url;
    return QUrl::fromLocalFile(QDir::current().absoluteFilePath(argument));
}

void TrackOpener::open(const QList<QUrl>& urls, std::function<void()> done)
{
    // Folders are walked and playlist files read along with the tags.
    collectTracksAsync(urls, this, [this, done](const CollectedTracks& found) {
        if (!found.files.isEmpty())
            addAndPlay(found.files, found.tags);
        if (done)
            done();
    });
}

void TrackOpener::addAndPlay(const QList<QUrl>& files, const QList<TrackTags>& tags)
{
    PLINK_CHECK(tags.size() == files.size(), "the tag reader gave a result per file");
    if (!m_config.bringCurrentPlaylistIntoRange())
        m_config.createPlaylist();
    const QUuid id = m_config.playlists().at(m_config.currentPlaylistIndex()).id;
    // An unreadable list has been reported, and the store keeps it beside the new one.
    QList<Track> tracks = m_config.readPlaylistTracks(id).value_or(QList<Track>());
    const qint64 first = tracks.size();
    for (qsizetype i = 0; i < files.size(); ++i)
        tracks.append(Track::make(files.at(i).toString(QUrl::FullyEncoded), tags.at(i).title, tags.at(i).artist));
    m_config.writePlaylistTracks(id, tracks);
    // A failed write has been reported; the new tracks are not there to play.
    const std::optional<QList<Track>> written = m_config.readPlaylistTracks(id);
    if (!written || written->size() != tracks.size())
        return;
    m_config.setCurrentTrackIndex(first);
    if (m_audioPlayer.isPlaying())
        m_audioPlayer.stop();
    m_transport.playCurrentTrack();
    emit opened(int(files.size()));
}
