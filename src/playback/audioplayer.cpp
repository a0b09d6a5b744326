#include "playback/audioplayer.h"

#include "playback/albumart.h"
#include "store/console.h"

#include <QAudioOutput>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QMediaPlayer>
#include <QTimer>
#include <QtConcurrent>

namespace {

constexpr int tickMilliseconds = 100;
// An end of media before this point, short of the file's known end, means
// nothing could be decoded: the FFmpeg backend "plays" a corrupt file that way.
constexpr qint64 endAtStartMilliseconds = 100;

QString displayName(const QUrl& url)
{
    return url.isLocalFile() ? url.toLocalFile() : url.toDisplayString();
}

} // namespace

AudioPlayer::AudioPlayer(QObject* parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setInterval(tickMilliseconds);
    // The timer is our child, so a tick can never outlive the engine.
    connect(m_timer, &QTimer::timeout, this, &AudioPlayer::tick);
}

AudioPlayer::~AudioPlayer() = default;

QMediaPlayer* AudioPlayer::player() const
{
    return m_player;
}

bool AudioPlayer::hasTimer() const
{
    return m_timer->isActive();
}

double AudioPlayer::progress() const
{
    return m_progress;
}

double AudioPlayer::duration() const
{
    return m_duration;
}

bool AudioPlayer::isPlaying() const
{
    return m_isPlaying;
}

QImage AudioPlayer::albumArt() const
{
    return m_albumArt;
}

QUrl AudioPlayer::currentUrl() const
{
    return m_url;
}

std::optional<PlayError> AudioPlayer::play(const QUrl& url)
{
    // A URL without a scheme is a path on this machine.
    const QUrl file = url.scheme().isEmpty() ? QUrl::fromLocalFile(QFileInfo(url.path()).absoluteFilePath()) : url;
    if (!QFileInfo(file.isLocalFile() ? file.toLocalFile() : file.path()).isFile())
        return PlayError{QStringLiteral("AudioPlayer"), -1, QStringLiteral("File does not exist")};

    if (m_player && file == m_url) {
        // The open file resumes where it stands; nothing is reloaded.
        m_player->play();
        setIsPlaying(true);
        restartTimer();
        return std::nullopt;
    }
    if (auto error = open(file))
        return error;
    m_player->play();
    setIsPlaying(true);
    loadAlbumArt();
    restartTimer();
    return std::nullopt;
}

// Makes a player for file and, if the backend accepts it, puts it in place of
// the open one. A refused file leaves everything as it was.
std::optional<PlayError> AudioPlayer::open(const QUrl& file)
{
    auto* player = new QMediaPlayer(this);
    auto* output = new QAudioOutput(player);
    player->setAudioOutput(output);
    // Connected first, because the FFmpeg backend may signal from inside
    // setSource(); until the player is ours, its signals are ignored.
    connect(player, &QMediaPlayer::durationChanged, this, [this, player](qint64 milliseconds) {
        if (player == m_player)
            setDuration(double(milliseconds) / 1000.0);
    });
    connect(player, &QMediaPlayer::mediaStatusChanged, this,
            [this, player](QMediaPlayer::MediaStatus status) { onMediaStatusChanged(player, status); });
    connect(player, &QMediaPlayer::errorOccurred, this, [this, player](QMediaPlayer::Error, const QString& text) {
        if (player == m_player)
            fail(text);
    });
    // The FFmpeg backend opens the file inside setSource(): a file it cannot
    // open is known here, and is the caller's to report.
    player->setSource(file);
    if (player->error() != QMediaPlayer::NoError || player->mediaStatus() == QMediaPlayer::InvalidMedia) {
        PlayError error{QStringLiteral("QMediaPlayer"), int(player->error()), player->errorString()};
        if (error.description.isEmpty())
            error.description = QStringLiteral("The file cannot be played");
        delete player;
        return error;
    }

    if (m_player) {
        // The old player may be the sender of the signal we are answering
        // (a track that finished starts the next one): delete it later.
        m_player->disconnect(this);
        if (m_player->playbackState() != QMediaPlayer::StoppedState)
            m_player->stop();
        m_player->deleteLater();
    }
    m_player = player;
    m_output = output;
    m_url = file;
    ++m_openCount;
    // The volume lives in the open file's player: a new file starts at full volume.
    if (m_volume != output->volume()) {
        m_volume = output->volume();
        emit volumeChanged();
    }

    emit playerChanged();
    setDuration(double(player->duration()) / 1000.0);
    // A cover of the song before would be wrong for this one: clear it now;
    // the new file's own picture, if it has one, arrives shortly.
    setAlbumArt(QImage());
    return std::nullopt;
}

void AudioPlayer::loadAlbumArt()
{
    const quint64 opened = m_openCount;
    auto* watcher = new QFutureWatcher<QImage>(this);
    connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, opened] {
        // A picture of a file that is no longer open is dropped.
        if (opened == m_openCount && !watcher->result().isNull())
            setAlbumArt(watcher->result());
        watcher->deleteLater();
    });
    watcher->setFuture(QtConcurrent::run(readAlbumArt, m_url.toLocalFile()));
}

void AudioPlayer::onMediaStatusChanged(QMediaPlayer* source, int status)
{
    if (source != m_player)
        return;
    if (status == QMediaPlayer::InvalidMedia) {
        fail(m_player->errorString().isEmpty() ? QStringLiteral("The file cannot be played")
                                               : m_player->errorString());
        return;
    }
    // Only a playing track can end. The FFmpeg backend also reports an end
    // again when a file that has ended is stopped: that is no new end.
    if (status != QMediaPlayer::EndOfMedia || !m_isPlaying)
        return;
    const qint64 position = m_player->position();
    const qint64 length = m_player->duration();
    if (position < endAtStartMilliseconds && !(length > 0 && position >= length)) {
        fail(QStringLiteral("No audio could be decoded"));
        return;
    }
    setIsPlaying(false);
    if (onTrackFinished)
        onTrackFinished();
}

void AudioPlayer::fail(const QString& description)
{
    printLine(QStringLiteral("Error: Could not play ") + displayName(m_url) + QStringLiteral(". Error: ") +
              description);
    // The backend may still say "playing" after an error.
    if (m_player->playbackState() != QMediaPlayer::StoppedState)
        m_player->stop();
    setIsPlaying(false);
    invalidateTimer();
    emit playFailed(PlayError{QStringLiteral("QMediaPlayer"), int(m_player->error()), description});
}

void AudioPlayer::pause()
{
    if (m_player)
        m_player->pause();
    setIsPlaying(false);
}

void AudioPlayer::stop()
{
    if (m_player) {
        m_player->stop();
        m_player->setPosition(0);
    }
    setProgress(0);
    setIsPlaying(false);
    invalidateTimer();
}

void AudioPlayer::seek(double fraction)
{
    if (!m_player)
        return;
    const double clamped = qBound(0.0, fraction, 1.0);
    m_player->setPosition(qint64(clamped * double(m_player->duration())));
    setProgress(clamped);
}

void AudioPlayer::invalidateTimer()
{
    if (!m_timer->isActive())
        return;
    m_timer->stop();
    emit timerChanged();
}

void AudioPlayer::restartTimer()
{
    const bool wasActive = m_timer->isActive();
    m_timer->start();
    if (!wasActive)
        emit timerChanged();
}

void AudioPlayer::tick()
{
    if (!m_player)
        return;
    const qint64 length = m_player->duration();
    if (length > 0)
        setProgress(qBound(0.0, double(m_player->position()) / double(length), 1.0));
}

float AudioPlayer::volume() const
{
    return m_volume;
}

void AudioPlayer::setVolume(float volume)
{
    const float bounded = qBound(0.0f, volume, 1.0f);
    if (m_output)
        m_output->setVolume(bounded);
    if (bounded == m_volume)
        return;
    m_volume = bounded;
    emit volumeChanged();
}

void AudioPlayer::setProgress(double value)
{
    if (m_progress == value)
        return;
    m_progress = value;
    emit progressChanged();
}

void AudioPlayer::setDuration(double value)
{
    if (m_duration == value)
        return;
    m_duration = value;
    emit durationChanged();
}

void AudioPlayer::setIsPlaying(bool value)
{
    if (m_isPlaying == value)
        return;
    m_isPlaying = value;
    emit isPlayingChanged();
}

void AudioPlayer::setAlbumArt(const QImage& value)
{
    if (m_albumArt == value)
        return;
    m_albumArt = value;
    emit albumArtChanged();
}
