#include "playback/audioplayer.h"

#include "playback/albumart.h"
#include "playback/audiodecoder.h"
#include "playback/playbackstream.h"
#include "store/console.h"

#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent>

namespace {

constexpr int tickMilliseconds = 100;

QString displayName(const QUrl& url)
{
    return url.isLocalFile() ? url.toLocalFile() : url.toDisplayString();
}

// A URL without a scheme is a path on this machine.
QUrl resolved(const QUrl& url)
{
    return url.scheme().isEmpty() ? QUrl::fromLocalFile(QFileInfo(url.path()).absoluteFilePath()) : url;
}

bool exists(const QUrl& file)
{
    return QFileInfo(file.isLocalFile() ? file.toLocalFile() : file.path()).isFile();
}

} // namespace

AudioPlayer::AudioPlayer(QObject* parent)
    : QObject(parent)
{
    m_timer.setInterval(tickMilliseconds);
    // The timer is our member, so a tick can never outlive the engine.
    connect(&m_timer, &QTimer::timeout, this, &AudioPlayer::tick);
    m_waypointTimer.setSingleShot(true);
    m_waypointTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_waypointTimer, &QTimer::timeout, this, &AudioPlayer::arrive);
}

AudioPlayer::~AudioPlayer() = default;

QUrl AudioPlayer::currentUrl() const
{
    return m_file ? m_file->url() : QUrl();
}

bool AudioPlayer::openStream(QString* error)
{
    if (!m_stream) {
        m_stream = std::make_unique<PlaybackStream>();
        // The stream reports from its own thread; these run here, queued.
        connect(m_stream.get(), &PlaybackStream::successorWanted, this, &AudioPlayer::queueSuccessor,
                Qt::QueuedConnection);
        connect(m_stream.get(), &PlaybackStream::queuedWritten, this, [this](quint64 epoch, qint64 frame) {
            m_waypoint = Waypoint{false, epoch, frame};
            armWaypoint();
        }, Qt::QueuedConnection);
        connect(m_stream.get(), &PlaybackStream::endWritten, this, [this](quint64 epoch, qint64 frame) {
            m_waypoint = Waypoint{true, epoch, frame};
            armWaypoint();
        }, Qt::QueuedConnection);
        connect(m_stream.get(), &PlaybackStream::trackFault, this, [this](quint64 token, const QString& reason) {
            AudioFile* file = m_file && m_file->token() == token ? m_file.get() : m_queuedFile.get();
            if (file && file->token() == token && file->firstFault())
                printLine(QStringLiteral("Error: Could not play ") + displayName(file->url()) +
                          QStringLiteral(" to its end. Error: ") + reason);
        }, Qt::QueuedConnection);
        connect(m_stream.get(), &PlaybackStream::failed, this, &AudioPlayer::fail, Qt::QueuedConnection);
    }
    return m_stream->open(error);
}

std::optional<PlayError> AudioPlayer::play(const QUrl& url)
{
    const QUrl file = resolved(url);
    if (!exists(file))
        return PlayError{QStringLiteral("AudioPlayer"), -1, QStringLiteral("File does not exist")};
    QString error;
    if (!openStream(&error))
        return PlayError{QStringLiteral("PulseAudio"), -2, error};

    if (m_file && file == m_file->url()) {
        // The open file resumes where it stands; nothing is reloaded. One
        // that has ended starts again, and one whose stream failed goes on
        // from where it was heard last.
        if (m_ended || m_resumeAt)
            m_stream->seek(m_ended ? 0 : *m_resumeAt);
        m_ended = false;
        m_resumeAt.reset();
        m_stream->setVolume(m_volume);
        m_stream->setPaused(false);
        setIsPlaying(true);
        restartTimer();
        armWaypoint();
        return std::nullopt;
    }
    std::unique_ptr<AudioDecoder> decoder = AudioDecoder::openFile(file.toLocalFile(), m_stream->rate(), &error);
    if (!decoder)
        return PlayError{QStringLiteral("FFmpeg"), -3, error};
    std::unique_ptr<AudioFile> opened = makeFile(file, decoder->duration());
    m_waypoint.reset();
    m_queuedFile.reset();
    m_ended = false;
    m_resumeAt.reset();
    m_stream->setVolume(1.0f);
    m_stream->start(std::move(decoder), opened->token(), 0, false);
    show(std::move(opened));
    setIsPlaying(true);
    restartTimer();
    return std::nullopt;
}

std::unique_ptr<AudioFile> AudioPlayer::makeFile(const QUrl& url, double duration)
{
    PlaybackStream* stream = m_stream.get();
    return std::make_unique<AudioFile>(url, duration, ++m_openCount,
                                       [stream](quint64 token) { return stream->position(token); });
}

// The new open file takes the old one's place in every field, at its start.
void AudioPlayer::show(std::unique_ptr<AudioFile> file)
{
    m_file = std::move(file);
    emit playerChanged();
    setDuration(m_file->duration());
    setProgress(0);
    // The volume lives in the open file: a new file starts at full volume.
    if (m_volume != m_file->volume()) {
        m_volume = m_file->volume();
        emit volumeChanged();
    }
    // A cover of the song before would be wrong for this one: clear it now;
    // the new file's own picture, if it has one, arrives shortly.
    setAlbumArt(QImage());
    loadAlbumArt();
}

void AudioPlayer::loadAlbumArt()
{
    const quint64 opened = m_file->token();
    auto* watcher = new QFutureWatcher<QImage>(this);
    connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, opened] {
        // A picture of a file that is no longer open is dropped.
        if (m_file && opened == m_file->token() && !watcher->result().isNull())
            setAlbumArt(watcher->result());
        watcher->deleteLater();
    });
    watcher->setFuture(QtConcurrent::run(readAlbumArt, m_file->url().toLocalFile()));
}

// The stream has written all of the open track: decide what follows it now,
// by the owner's rules, while the server still holds seconds of music. Only
// a track that plays on by itself is joined; a drag of the scrub bar (the
// timer held) or a pause lets it end the ordinary way.
void AudioPlayer::queueSuccessor(quint64 epoch)
{
    if (!m_stream || epoch != m_stream->epoch())
        return;
    std::optional<QUrl> next;
    if (m_isPlaying && m_timer.isActive() && nextTrackUrl)
        next = nextTrackUrl();
    std::unique_ptr<AudioDecoder> decoder;
    if (next) {
        // A missing or unplayable file is not queued: the ordinary end of
        // the track tries it again and reports it as it always does.
        const QUrl file = resolved(*next);
        QString error;
        if (exists(file))
            decoder = AudioDecoder::openFile(file.toLocalFile(), m_stream->rate(), &error);
        if (decoder)
            m_queuedFile = makeFile(file, decoder->duration());
    }
    if (decoder)
        m_stream->queue(std::move(decoder), m_queuedFile->token());
    else
        m_stream->playToTheEnd();
}

void AudioPlayer::dropQueuedTrack()
{
    if (m_stream && m_queuedFile) {
        m_stream->dropQueued();
        m_queuedFile.reset();
        if (m_waypoint && !m_waypoint->isEnd)
            m_waypoint.reset();
    }
}

// Waits, on a precise timer, until the listener reaches the waypoint: the
// queued track's first frame, or the end.
void AudioPlayer::armWaypoint()
{
    if (m_waypoint && m_isPlaying)
        m_waypointTimer.start(0);
}

void AudioPlayer::arrive()
{
    if (!m_waypoint || !m_isPlaying || !m_stream)
        return;
    if (m_waypoint->epoch != m_stream->epoch()) {
        m_waypoint.reset();
        return;
    }
    const double left = m_stream->secondsUntil(m_waypoint->frame);
    if (left > 0.001) {
        m_waypointTimer.start(int(left * 1000) + 1);
        return;
    }
    const bool isEnd = m_waypoint->isEnd;
    m_waypoint.reset();
    if (isEnd) {
        endOfTrack();
        return;
    }
    if (!m_queuedFile)
        return;
    // The queued track is heard: it becomes the open one, and the owner's
    // index moves before anything shows the new file.
    m_stream->commitQueued();
    std::unique_ptr<AudioFile> joined = std::move(m_queuedFile);
    if (onTrackJoined)
        onTrackJoined();
    m_stream->setVolume(1.0f);
    show(std::move(joined));
}

void AudioPlayer::endOfTrack()
{
    // A track dragged to its end ends when the scrub bar lets go.
    if (!m_timer.isActive()) {
        m_endWaitsForTimer = true;
        return;
    }
    m_ended = true;
    m_stream->setPaused(true);
    setProgress(1.0);
    setIsPlaying(false);
    if (onTrackFinished)
        onTrackFinished();
}

void AudioPlayer::fail(const QString& reason)
{
    if (!m_file)
        return;
    // Where the listener was; the next play goes on from there.
    m_resumeAt = m_progress * m_duration;
    m_waypoint.reset();
    m_queuedFile.reset();
    if (!m_isPlaying)
        return;
    printLine(QStringLiteral("Error: Could not play ") + displayName(m_file->url()) + QStringLiteral(". Error: ") +
              reason);
    setIsPlaying(false);
    invalidateTimer();
    emit playFailed(PlayError{QStringLiteral("PulseAudio"), -2, reason});
}

void AudioPlayer::pause()
{
    if (m_stream && m_file) {
        m_stream->setPaused(true);
        dropQueuedTrack();
    }
    setIsPlaying(false);
}

void AudioPlayer::stop()
{
    if (m_stream && m_file) {
        m_stream->setPaused(true);
        m_stream->seek(0);
    }
    m_waypoint.reset();
    m_queuedFile.reset();
    m_ended = false;
    m_endWaitsForTimer = false;
    if (m_resumeAt) // the stream failed: the next play starts from the top too
        m_resumeAt = 0.0;
    setProgress(0);
    setIsPlaying(false);
    invalidateTimer();
}

void AudioPlayer::seek(double fraction)
{
    if (!m_file)
        return;
    const double clamped = qBound(0.0, fraction, 1.0);
    m_waypoint.reset();
    m_queuedFile.reset();
    m_ended = false;
    m_endWaitsForTimer = false;
    if (m_resumeAt)
        m_resumeAt = clamped * m_duration;
    else
        m_stream->seek(clamped * m_duration);
    setProgress(clamped);
}

void AudioPlayer::invalidateTimer()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    emit timerChanged();
}

void AudioPlayer::restartTimer()
{
    const bool wasActive = m_timer.isActive();
    m_timer.start();
    if (!wasActive)
        emit timerChanged();
    if (m_endWaitsForTimer && m_isPlaying) {
        m_endWaitsForTimer = false;
        endOfTrack();
    }
}

void AudioPlayer::tick()
{
    if (!m_file || m_duration <= 0 || m_resumeAt || m_ended)
        return;
    const double seconds = m_stream->position(m_file->token());
    if (seconds >= 0)
        setProgress(qBound(0.0, seconds / m_duration, 1.0));
}

float AudioPlayer::volume() const
{
    return m_volume;
}

void AudioPlayer::setVolume(float volume)
{
    const float bounded = qBound(0.0f, volume, 1.0f);
    if (m_file) {
        m_file->setVolume(bounded);
        m_stream->setVolume(bounded);
    }
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
