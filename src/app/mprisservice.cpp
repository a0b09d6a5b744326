#include "app/mprisservice.h"

#include "app/trackopener.h"
#include "playback/audiodecoder.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "store/config.h"
#include "store/console.h"
#include "store/jsonreader.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QStandardPaths>
#include <QUrl>

#include <cmath>

namespace {

constexpr const char* playerInterface = "org.mpris.MediaPlayer2.Player";
const QString noTrack = QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack");

QString trackPath(const Track& track)
{
    return QStringLiteral("/org/plinkbox/track/") + track.id.toString(QUuid::Id128).toUpper();
}

// The root interface: identity and window.
class MprisRootAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ canQuit)
    Q_PROPERTY(bool CanRaise READ canRaise)
    Q_PROPERTY(bool HasTrackList READ hasTrackList)
    Q_PROPERTY(QString Identity READ identity)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ supportedUriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ supportedMimeTypes)

public:
    explicit MprisRootAdaptor(MprisService* service)
        : QDBusAbstractAdaptor(service)
        , m_service(service)
    {
    }

    bool canQuit() const { return true; }
    bool canRaise() const { return true; }
    bool hasTrackList() const { return false; }
    QString identity() const { return QStringLiteral("plinkBox"); }
    QString desktopEntry() const { return QStringLiteral("plinkbox"); }
    QStringList supportedUriSchemes() const { return {QStringLiteral("file")}; }
    QStringList supportedMimeTypes() const { return TrackOpener::supportedMimeTypes(); }

public slots:
    void Raise() { m_service->raise(); }
    void Quit() { m_service->quit(); }

private:
    MprisService* m_service;
};

// The player interface: state, metadata and transport.
class MprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(QString LoopStatus READ loopStatus WRITE setLoopStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(bool Shuffle READ shuffle WRITE setShuffle)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(bool CanGoNext READ canGoNext)
    Q_PROPERTY(bool CanGoPrevious READ canGoPrevious)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPlay)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)

public:
    explicit MprisPlayerAdaptor(MprisService* service)
        : QDBusAbstractAdaptor(service)
        , m_service(service)
    {
        connect(service, &MprisService::seeked, this, &MprisPlayerAdaptor::Seeked);
    }

    QString playbackStatus() const { return m_service->playbackStatus(); }
    QString loopStatus() const { return m_service->loopStatus(); }
    void setLoopStatus(const QString& status) { m_service->setLoopStatus(status); }
    double rate() const { return 1.0; }
    void setRate(double rate) { m_service->setRate(rate); }
    bool shuffle() const { return m_service->shuffle(); }
    void setShuffle(bool on) { m_service->setShuffle(on); }
    QVariantMap metadata() const { return m_service->metadata(); }
    double volume() const { return m_service->volume(); }
    void setVolume(double volume) { m_service->setVolume(volume); }
    qlonglong position() const { return m_service->position(); }
    bool canGoNext() const { return m_service->canGoNext(); }
    bool canGoPrevious() const { return m_service->canGoPrevious(); }
    bool canPlay() const { return m_service->canPlay(); }
    bool canSeek() const { return m_service->canSeek(); }
    bool canControl() const { return true; }

public slots:
    void Next() { m_service->next(); }
    void Previous() { m_service->previous(); }
    void Pause() { m_service->pause(); }
    void PlayPause() { m_service->playPause(); }
    void Stop() { m_service->stop(); }
    void Play() { m_service->play(); }
    void Seek(qlonglong offset) { m_service->seek(offset); }
    void SetPosition(const QDBusObjectPath& trackId, qlonglong position) { m_service->setPosition(trackId, position); }
    void OpenUri(const QString& uri) { m_service->openUri(uri); }

signals:
    void Seeked(qlonglong Position);

private:
    MprisService* m_service;
};

} // namespace

MprisService::MprisService(Config& config, AudioPlayer& audioPlayer, Transport& transport,
                           std::function<void()> raise, std::function<void(const QList<QUrl>&)> open,
                           QObject* parent)
    : QObject(parent)
    , m_config(config)
    , m_audioPlayer(audioPlayer)
    , m_transport(transport)
    , m_raise(std::move(raise))
    , m_open(std::move(open))
{
    new MprisRootAdaptor(this);
    new MprisPlayerAdaptor(this);

    connect(&m_config, &Config::changed, this, [this](Config::Property property) {
        switch (property) {
        case Config::Property::loopTracks:
        case Config::Property::shuffleTracks:
        case Config::Property::playlists:
        case Config::Property::currentPlaylistIndex:
        case Config::Property::currentTrackIndex:
            refreshMetadata();
            break;
        default:
            break;
        }
    });
    connect(&m_config, &Config::playlistTracksWritten, this, &MprisService::refreshMetadata);
    for (auto signal : {&AudioPlayer::playerChanged, &AudioPlayer::durationChanged, &AudioPlayer::albumArtChanged})
        connect(&m_audioPlayer, signal, this, &MprisService::refreshMetadata);
    for (auto signal : {&AudioPlayer::isPlayingChanged, &AudioPlayer::timerChanged, &AudioPlayer::volumeChanged})
        connect(&m_audioPlayer, signal, this, &MprisService::publish);
    connect(&m_audioPlayer, &AudioPlayer::progressChanged, this, &MprisService::notePosition);
    m_metadata = currentMetadata();
}

MprisService::~MprisService()
{
    if (!m_coverPath.isEmpty())
        QFile::remove(m_coverPath);
}

bool MprisService::registerOnSessionBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    // Object first: a client that sees the name appear may ask at once.
    if (!bus.registerObject(QString::fromLatin1(objectPath), this, QDBusConnection::ExportAdaptors))
        return false;
    return bus.registerService(QString::fromLatin1(serviceName));
}

QString MprisService::playbackStatus() const
{
    if (m_audioPlayer.isPlaying())
        return QStringLiteral("Playing");
    // An open file with its timer running is paused (or at its end); a
    // stopped or never-opened player has no timer.
    return m_audioPlayer.player() && m_audioPlayer.hasTimer() ? QStringLiteral("Paused") : QStringLiteral("Stopped");
}

QString MprisService::loopStatus() const
{
    return m_config.loopTracks() ? QStringLiteral("Playlist") : QStringLiteral("None");
}

void MprisService::setLoopStatus(const QString& status)
{
    // Looping a single track is not something the player does; any loop
    // request turns looping over the playlist on.
    const bool loop = status != QLatin1String("None");
    if (loop != m_config.loopTracks())
        m_transport.toggleLoopTracks();
}

bool MprisService::shuffle() const
{
    return m_config.shuffleTracks();
}

void MprisService::setShuffle(bool on)
{
    if (on != m_config.shuffleTracks())
        m_transport.toggleShuffleTracks();
}

qint64 MprisService::position() const
{
    // A track skipped to while paused is not open yet: it stands at its start.
    return currentTrackIsOpen() ? m_audioPlayer.player()->position() * 1000 : 0;
}

bool MprisService::currentTrackIsOpen() const
{
    return m_audioPlayer.player() && !m_currentUrl.isEmpty() && m_audioPlayer.currentUrl() == m_currentUrl;
}

double MprisService::volume() const
{
    return m_audioPlayer.player() ? m_audioPlayer.volume() : 1.0;
}

void MprisService::setVolume(double volume)
{
    if (!m_audioPlayer.player() || !std::isfinite(volume))
        return;
    m_audioPlayer.setVolume(float(std::clamp(volume, 0.0, 1.0)));
}

void MprisService::setRate(double rate)
{
    // One speed only; a rate of zero asks for a pause.
    if (rate == 0.0)
        pause();
}

bool MprisService::canSeek() const
{
    return currentTrackIsOpen() && m_audioPlayer.duration() > 0;
}

bool MprisService::canStep(Transport::Direction direction, qint64 trackCount) const
{
    // Shuffle draws a next track from the others; Previous is always the one above.
    const qint64 current = m_config.currentTrackIndex();
    if (trackCount == 0 || m_config.loopTracks())
        return trackCount > 0;
    if (direction == Transport::Direction::previous)
        return current > 0;
    return current + 1 < trackCount || (m_config.shuffleTracks() && trackCount > 1);
}

void MprisService::openUri(const QString& uri)
{
    if (m_open)
        m_open({TrackOpener::fromArgument(uri)});
}

void MprisService::quit()
{
    QCoreApplication::quit();
}

void MprisService::next()
{
    step(Transport::Direction::next);
}

void MprisService::previous()
{
    step(Transport::Direction::previous);
}

void MprisService::step(Transport::Direction direction)
{
    // Where the skin's buttons wrap around or restart the track, the desktop
    // expects the end of a list that does not loop to stop playback. A move
    // leaves a paused or stopped player so, as the buttons do.
    const auto tracks = m_transport.currentTracks();
    if (!tracks || tracks->isEmpty())
        return;
    if (canStep(direction, tracks->size()))
        m_transport.skip(direction);
    else
        m_audioPlayer.stop();
}

void MprisService::play()
{
    if (!m_audioPlayer.isPlaying())
        m_transport.playPauseCommand();
}

void MprisService::pause()
{
    if (m_audioPlayer.isPlaying())
        m_transport.playPauseCommand();
}

void MprisService::playPause()
{
    m_transport.playPauseCommand();
}

void MprisService::stop()
{
    m_audioPlayer.stop();
}

void MprisService::perform(const QString& method)
{
    static const QHash<QString, void (MprisService::*)()> commands = {
        {QStringLiteral("Play"), &MprisService::play},   {QStringLiteral("Pause"), &MprisService::pause},
        {QStringLiteral("PlayPause"), &MprisService::playPause}, {QStringLiteral("Stop"), &MprisService::stop},
        {QStringLiteral("Next"), &MprisService::next},   {QStringLiteral("Previous"), &MprisService::previous},
    };
    const auto command = commands.constFind(method);
    PLINK_CHECK(command != commands.cend(), "a Player method without arguments");
    (this->*command.value())();
}

void MprisService::seek(qint64 offset)
{
    if (!canSeek())
        return;
    const qint64 length = qint64(m_audioPlayer.duration() * 1e6);
    const qint64 target = std::max<qint64>(0, position() + offset);
    if (target > length) {
        next(); // past the end behaves like Next
        return;
    }
    seekTo(target);
}

void MprisService::setPosition(const QDBusObjectPath& trackId, qint64 target)
{
    const qint64 length = qint64(m_audioPlayer.duration() * 1e6);
    if (!canSeek() || target < 0 || target > length
        || trackId.path() != m_metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path())
        return;
    seekTo(target);
}

void MprisService::seekTo(qint64 target)
{
    // Announced once, here; not again by the progress change the seek makes,
    // nor at the next tick if the backend takes a moment to report the place.
    m_seeking = true;
    m_audioPlayer.seek(double(target) / (m_audioPlayer.duration() * 1e6));
    m_seeking = false;
    m_lastPosition = target;
    m_lastPositionAt = QDateTime::currentMSecsSinceEpoch();
    emit seeked(target);
}

void MprisService::notePosition()
{
    // A position that jumps (the scrub bar, a seek) is announced as Seeked;
    // steady progress is not, as clients extrapolate it themselves.
    if (m_seeking)
        return;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 current = position();
    const qint64 expected = m_lastPosition + (m_audioPlayer.isPlaying() ? (now - m_lastPositionAt) * 1000 : 0);
    if (m_lastPositionAt != 0 && std::abs(current - expected) > 1'000'000)
        emit seeked(current);
    m_lastPosition = current;
    m_lastPositionAt = now;
}

QVariantMap MprisService::currentMetadata()
{
    QVariantMap metadata;
    const QList<Playlist> playlists = m_config.playlists();
    const qint64 playlist = m_config.currentPlaylistIndex();
    const qint64 index = m_config.currentTrackIndex();
    std::optional<QList<Track>> tracks;
    if (playlist >= 0 && playlist < playlists.size())
        tracks = m_config.readPlaylistTracks(playlists.at(playlist).id);
    m_trackCount = tracks ? tracks->size() : 0;
    m_currentUrl.clear();
    if (!tracks || index < 0 || index >= tracks->size()) {
        metadata.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(QDBusObjectPath(noTrack)));
        return metadata;
    }
    const Track& track = tracks->at(index);
    m_currentUrl = QUrl(track.urlString);
    metadata.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(QDBusObjectPath(trackPath(track))));
    metadata.insert(QStringLiteral("xesam:title"), track.trackName);
    metadata.insert(QStringLiteral("xesam:artist"), QStringList{track.artist});
    metadata.insert(QStringLiteral("xesam:url"), track.urlString);
    // Length and cover belong to the open file, which is this track's only
    // while the player has it open. A track skipped to while another is open
    // (paused) has its length read from its file; before any file is opened
    // that read is spared, to keep it off the launch.
    const qint64 length = currentTrackIsOpen()        ? qint64(m_audioPlayer.duration() * 1e6)
                          : m_audioPlayer.player() ? lengthOf(m_currentUrl)
                                                   : 0;
    if (length > 0)
        metadata.insert(QStringLiteral("mpris:length"), length);
    if (currentTrackIsOpen() && !m_coverPath.isEmpty())
        metadata.insert(QStringLiteral("mpris:artUrl"), QUrl::fromLocalFile(m_coverPath).toString());
    return metadata;
}

qint64 MprisService::lengthOf(const QUrl& url)
{
    if (m_probed.first != url) {
        // Any rate will do: only the length the file declares is wanted. A
        // file that cannot be opened has no length to show; Play reports why.
        QString error;
        const auto decoder = url.isLocalFile() ? AudioDecoder::openFile(url.toLocalFile(), 48000, &error) : nullptr;
        m_probed = {url, decoder ? qint64(decoder->duration() * 1e6) : 0};
    }
    return m_probed.second;
}

void MprisService::refreshMetadata()
{
    // The cover is handed to clients as a file, written once per picture.
    const QImage art = m_audioPlayer.albumArt();
    if (art.cacheKey() != m_coverKey) {
        m_coverKey = art.cacheKey();
        if (!m_coverPath.isEmpty())
            QFile::remove(m_coverPath);
        m_coverPath.clear();
        if (!art.isNull()) {
            const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
            const QString path = folder + QStringLiteral("/plinkbox-cover-%1-%2.png")
                                              .arg(QCoreApplication::applicationPid())
                                              .arg(quint64(m_coverKey));
            if (art.save(path, "PNG"))
                m_coverPath = path;
        }
    }
    const QVariantMap before = std::exchange(m_metadata, currentMetadata());
    // Another track starts where it starts: no Seeked for that jump.
    if (before.value(QStringLiteral("mpris:trackid")) != m_metadata.value(QStringLiteral("mpris:trackid")))
        m_lastPositionAt = 0;
    publish();
}

void MprisService::publish()
{
    QVariantMap now;
    now.insert(QStringLiteral("PlaybackStatus"), playbackStatus());
    now.insert(QStringLiteral("LoopStatus"), loopStatus());
    now.insert(QStringLiteral("Shuffle"), shuffle());
    now.insert(QStringLiteral("Metadata"), m_metadata);
    now.insert(QStringLiteral("Volume"), volume());
    now.insert(QStringLiteral("CanSeek"), canSeek());
    now.insert(QStringLiteral("CanGoNext"), canGoNext());
    now.insert(QStringLiteral("CanGoPrevious"), canGoPrevious());
    now.insert(QStringLiteral("CanPlay"), canPlay());
    now.insert(QStringLiteral("CanPause"), canPlay());
    QVariantMap changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (m_published.value(it.key()) != it.value())
            changed.insert(it.key(), it.value());
    }
    m_published = now;
    if (changed.isEmpty())
        return;
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(objectPath),
                                                     QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("PropertiesChanged"));
    signal << QString::fromLatin1(playerInterface) << changed << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

#include "mprisservice.moc"
