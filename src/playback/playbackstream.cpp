#include "playback/playbackstream.h"

#include "playback/audiodecoder.h"

#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/mainloop-api.h>
#include <pulse/rtclock.h>
#include <pulse/stream.h>
#include <pulse/volume.h>

#include <algorithm>

namespace {

constexpr size_t frameBytes = AudioDecoder::channels * sizeof(float);
// A large buffer, topped up in large pieces: the server and our event thread
// wake about twice a second while music plays. Pause, seek and stop do not
// wait for it: they cork or flush, and the server drops what it holds.
constexpr double bufferSeconds = 2.0;
constexpr double refillSeconds = 0.5;

// The server's reason in its own words is no use alone ("No such entity"):
// say what went away, and what the next play does.
QString serverFailure(pa_context* context)
{
    const int code = pa_context_errno(context);
    const QString reason = QString::fromUtf8(pa_strerror(code ? code : PA_ERR_KILLED));
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
        return QStringLiteral("The connection to the sound server was lost (%1); play again to go on from here "
                              "once it runs").arg(reason);
    return QStringLiteral("The sound server took away plinkBox's output (%1), as it does when the output device "
                          "goes; play again to go on from here on the output it has now").arg(reason);
}

QString noOutput(pa_context* context)
{
    return QStringLiteral("The sound server has no output plinkBox can play on (%1); choose an output device and "
                          "play again").arg(QString::fromUtf8(pa_strerror(pa_context_errno(context))));
}

void forget(pa_operation* operation)
{
    if (operation)
        pa_operation_unref(operation);
}

} // namespace

PlaybackStream::PlaybackStream(QObject* parent)
    : QObject(parent)
{
    // One event, enabled when a fill is wanted: nothing is allocated per
    // request, and nothing is left over when the stream goes.
    PulseLocker locker(m_connection);
    m_fillEvent = m_connection.api()->defer_new(m_connection.api(), [](pa_mainloop_api* api, pa_defer_event* event,
                                                                       void* self) {
        api->defer_enable(event, 0);
        static_cast<PlaybackStream*>(self)->fill();
    }, this);
    m_connection.api()->defer_enable(m_fillEvent, 0);
}

PlaybackStream::~PlaybackStream()
{
    // Under the lock, so that no decoding runs while the decoders go.
    PulseLocker locker(m_connection);
    m_connection.api()->defer_free(m_fillEvent);
    closeStream();
    m_active.reset();
    m_queued.reset();
}

void PlaybackStream::fillSoon()
{
    m_connection.api()->defer_enable(m_fillEvent, 1);
}

void PlaybackStream::closeStream()
{
    if (!m_stream)
        return;
    pa_stream_set_state_callback(m_stream, nullptr, nullptr);
    pa_stream_set_write_callback(m_stream, nullptr, nullptr);
    if (PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream)))
        pa_stream_disconnect(m_stream);
    pa_stream_unref(m_stream);
    m_stream = nullptr;
}

bool PlaybackStream::open(QString* error)
{
    PulseLocker locker(m_connection);
    if (m_stream && pa_stream_get_state(m_stream) == PA_STREAM_READY)
        return true;
    closeStream();
    if (!m_connection.ensureConnected(error))
        return false;
    const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, uint32_t(m_connection.rate()), AudioDecoder::channels};
    m_stream = pa_stream_new(m_connection.context(), "Music", &format, nullptr);
    if (!m_stream) {
        *error = noOutput(m_connection.context());
        return false;
    }
    pa_stream_set_state_callback(m_stream, &PlaybackStream::stateChanged, this);
    pa_stream_set_write_callback(m_stream, &PlaybackStream::writeRequested, this);
    const auto bytes = [&](double seconds) { return uint32_t(seconds * format.rate) * uint32_t(frameBytes); };
    // The server starts the stream (and starts it again after a flush) only
    // once it holds what it asks for by default, about what its output reads
    // ahead. Started on less, an output that had been idle reads past the end
    // of what it was given and then skips that much of what follows: seconds
    // of a track lost at its start, on a sound server with no other stream.
    // Our first write is far larger anyway, so this costs no time.
    const pa_buffer_attr buffer{uint32_t(-1), bytes(bufferSeconds), uint32_t(-1), bytes(refillSeconds),
                                uint32_t(-1)};
    pa_cvolume volume;
    pa_cvolume_set(&volume, format.channels, pa_sw_volume_from_linear(m_volume));
    const auto flags = PA_STREAM_START_CORKED;
    m_paused = true;
    if (pa_stream_connect_playback(m_stream, nullptr, &buffer, flags, &volume, nullptr) == 0) {
        while (PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream)) &&
               pa_stream_get_state(m_stream) != PA_STREAM_READY)
            m_connection.wait();
    }
    if (pa_stream_get_state(m_stream) != PA_STREAM_READY) {
        *error = noOutput(m_connection.context());
        closeStream();
        return false;
    }
    return true;
}

void PlaybackStream::stateChanged(pa_stream* stream, void* self)
{
    auto* playback = static_cast<PlaybackStream*>(self);
    const pa_stream_state_t state = pa_stream_get_state(stream);
    playback->m_connection.signal();
    if (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED)
        emit playback->failed(serverFailure(pa_stream_get_context(stream)));
}

void PlaybackStream::writeRequested(pa_stream*, size_t, void* self)
{
    static_cast<PlaybackStream*>(self)->fill();
}

quint64 PlaybackStream::epoch()
{
    PulseLocker locker(m_connection);
    return m_epoch;
}

// Writes as much as the server takes: the open track, then the queued one.
// At the open track's end it asks for a successor once, and with none it
// drains the stream so that the last frames play even below the start level.
void PlaybackStream::fill()
{
    if (!m_stream || pa_stream_get_state(m_stream) != PA_STREAM_READY || !m_active)
        return;
    size_t room = pa_stream_writable_size(m_stream);
    if (room == size_t(-1))
        return; // the connection is failing; its failure is reported by itself
    bool wrote = false;
    while (room >= frameBytes) {
        AudioDecoder& decoder = m_writingQueued ? *m_queued : *m_active;
        void* data = nullptr;
        size_t size = room;
        if (pa_stream_begin_write(m_stream, &data, &size) < 0 || size < frameBytes)
            break;
        const qsizetype frames = decoder.read(static_cast<float*>(data), qsizetype(size / frameBytes));
        if (frames > 0) {
            if (pa_stream_write(m_stream, data, size_t(frames) * frameBytes, nullptr, 0, PA_SEEK_RELATIVE) < 0)
                break;
            m_written += frames;
            room -= size_t(frames) * frameBytes;
            wrote = true;
            continue;
        }
        pa_stream_cancel_write(m_stream);
        if (m_writingQueued)
            break; // the queued track is written whole; more waits for its commit
        if (!m_queued && m_tail == Tail::decoding) {
            m_tail = Tail::asked;
            emit successorWanted(m_epoch);
        }
        if (!m_queued && m_tail == Tail::asked)
            break;
        if (!decoder.atEnd()) {
            // The input is used up; the resampler holds the last samples.
            decoder.finish();
            continue;
        }
        if (m_queued) {
            if (!decoder.fault().isEmpty())
                emit trackFault(m_activeToken, decoder.fault());
            m_writingQueued = true;
            m_queuedFrom = m_written;
            emit queuedWritten(m_epoch, m_written);
            continue;
        }
        if (m_tail == Tail::last) {
            if (!decoder.fault().isEmpty())
                emit trackFault(m_activeToken, decoder.fault());
            m_tail = Tail::drained;
            // Plays the last frames even below the start level.
            forget(pa_stream_drain(m_stream, nullptr, nullptr));
            emit endWritten(m_epoch, m_written);
        }
        break;
    }
    if (wrote)
        askTiming();
}

void PlaybackStream::start(std::unique_ptr<AudioDecoder> decoder, quint64 token, double from, bool paused)
{
    PulseLocker locker(m_connection);
    m_active = std::move(decoder);
    m_activeToken = token;
    restart(-1);
    m_activeSeconds = from;
    cork(paused);
}

void PlaybackStream::setPaused(bool paused)
{
    PulseLocker locker(m_connection);
    cork(paused);
}

void PlaybackStream::cork(bool paused)
{
    if (paused == m_paused)
        return;
    // The place heard holds still while corked (the server takes back what
    // it had not played) and runs on from there at once when uncorked.
    const pa_usec_t now = pa_rtclock_now();
    m_clock = Clock{heardFrames(), paused ? heardFrames() : kUnbounded, now};
    if (paused)
        m_played += now - m_playingSince;
    else
        m_playingSince = now;
    if (m_stream) {
        forget(pa_stream_cork(m_stream, paused, nullptr, nullptr));
        askTiming();
    }
    m_paused = paused;
}

void PlaybackStream::seek(double seconds)
{
    PulseLocker locker(m_connection);
    restart(std::max(0.0, seconds));
}

// A new epoch: the server drops all it holds, and the open track is written
// afresh, from seconds if that is not negative, else from where it stands.
void PlaybackStream::restart(double seconds)
{
    if (m_stream) {
        // Corking first takes back what the output holds of ours (up to its
        // whole latency, a second when we are its only stream): a flush
        // alone would leave that to be heard before the new place.
        if (!m_paused)
            forget(pa_stream_cork(m_stream, 1, nullptr, nullptr));
        forget(pa_stream_flush(m_stream, nullptr, nullptr));
        if (!m_paused)
            forget(pa_stream_cork(m_stream, 0, nullptr, nullptr));
    }
    ++m_epoch;
    m_written = 0;
    m_activeFrom = 0;
    if (seconds >= 0 && m_active) {
        m_active->seek(seconds);
        m_activeSeconds = seconds;
    }
    m_queued.reset();
    m_writingQueued = false;
    m_queuedFrom = -1;
    m_tail = Tail::decoding;
    // A new epoch is heard from its first frame at once: the cork above made
    // the output drop what it held.
    m_clock = Clock{0, kUnbounded, pa_rtclock_now()};
    m_played = 0;
    m_playingSince = m_clock.at;
    m_askedTiming = false;
    if (m_stream) {
        askTiming();
        fillSoon();
    }
}

void PlaybackStream::queue(std::unique_ptr<AudioDecoder> next, quint64 token)
{
    PulseLocker locker(m_connection);
    if (!m_active || m_tail != Tail::asked)
        return;
    m_queued = std::move(next);
    m_queuedToken = token;
    m_tail = Tail::decoding;
    fillSoon();
}

void PlaybackStream::playToTheEnd()
{
    PulseLocker locker(m_connection);
    if (m_tail != Tail::asked)
        return;
    m_tail = Tail::last;
    fillSoon();
}

void PlaybackStream::dropQueued()
{
    PulseLocker locker(m_connection);
    if (!m_queued)
        return;
    if (m_writingQueued) {
        // Some of it is with the server: everything after what is heard goes.
        const qint64 end = std::min(heardFrames(), m_queuedFrom);
        restart(m_activeSeconds + double(std::max<qint64>(0, end - m_activeFrom)) / m_connection.rate());
    }
    m_queued.reset();
    // The open track plays out; its end is then the ordinary one.
    m_tail = Tail::last;
    fillSoon();
}

bool PlaybackStream::hasQueued()
{
    PulseLocker locker(m_connection);
    return m_queued != nullptr;
}

void PlaybackStream::commitQueued()
{
    PulseLocker locker(m_connection);
    if (!m_queued || !m_writingQueued)
        return;
    m_active = std::move(m_queued);
    m_activeToken = m_queuedToken;
    m_activeFrom = m_queuedFrom;
    m_activeSeconds = 0;
    m_writingQueued = false;
    m_queuedFrom = -1;
    m_tail = Tail::decoding;
    fillSoon();
}

void PlaybackStream::setVolume(float volume)
{
    PulseLocker locker(m_connection);
    m_volume = volume;
    if (!m_stream || pa_stream_get_state(m_stream) != PA_STREAM_READY)
        return;
    pa_cvolume levels;
    pa_cvolume_set(&levels, AudioDecoder::channels, pa_sw_volume_from_linear(volume));
    forget(pa_context_set_sink_input_volume(m_connection.context(), pa_stream_get_index(m_stream), &levels,
                                            nullptr, nullptr));
}

// Frames of this epoch the listener has heard: the server's last figures
// (what the output has read of ours, less what it still holds), run on by
// the clock since, and never past what we wrote, nor past the time the
// epoch has been playing: whatever the figures say, nobody hears faster
// than the clock. Only a confirmed figure stays within what the output has
// read: the end is told by that, while the scrub bar runs on smoothly
// between the server's figures.
qint64 PlaybackStream::heardFrames(bool confirmed)
{
    const double rate = m_connection.rate();
    const pa_usec_t now = pa_rtclock_now();
    // Fresh figures for the next call: after each write they come anyway;
    // once the stream is drained, often enough to tell the end.
    if (!m_paused && now - m_clock.at > (m_tail == Tail::drained ? 100000u : 600000u))
        askTiming();
    const qint64 running = m_paused ? 0 : qint64(double(now - m_clock.at) * rate / 1e6);
    const pa_usec_t played = m_played + (m_paused ? 0 : now - m_playingSince);
    const qint64 bound =
        std::min({confirmed ? m_clock.limit : kUnbounded, m_written, qint64(double(played) * rate / 1e6)});
    return std::clamp<qint64>(m_clock.heard + running, 0, bound);
}

void PlaybackStream::askTiming()
{
    if (!m_stream || m_askedTiming)
        return;
    m_askedTiming = true;
    m_askedEpoch = m_epoch;
    forget(pa_stream_update_timing_info(m_stream, [](pa_stream* stream, int success, void* self) {
        static_cast<PlaybackStream*>(self)->timingArrived(stream, success);
    }, this));
}

void PlaybackStream::timingArrived(pa_stream* stream, int success)
{
    m_askedTiming = false;
    const pa_timing_info* timing = pa_stream_get_timing_info(stream);
    if (!success || !timing || timing->read_index_corrupt || timing->write_index_corrupt || m_askedEpoch != m_epoch)
        return; // figures of an epoch flushed since are no use
    // The epoch began where the server's write index stood less what we wrote since.
    const qint64 start = timing->write_index / qint64(frameBytes) - m_written;
    const qint64 read = timing->read_index / qint64(frameBytes) - start;
    const qint64 held = m_paused ? 0 : qint64(double(timing->sink_usec) * m_connection.rate() / 1e6);
    // Nothing past what the output has read can be heard; while music flows
    // that bound is overtaken at once, so it holds only once all is written.
    const bool bounded = m_paused || m_tail == Tail::drained;
    m_clock = Clock{read - held, bounded ? read : kUnbounded, pa_rtclock_now()};
}

double PlaybackStream::position(quint64 token)
{
    PulseLocker locker(m_connection);
    const qint64 heard = heardFrames();
    const double rate = m_connection.rate();
    if (token == m_activeToken && m_active) {
        const qint64 until = m_writingQueued ? std::min(heard, m_queuedFrom) : heard;
        return m_activeSeconds + double(std::max<qint64>(0, until - m_activeFrom)) / rate;
    }
    if (token == m_queuedToken && m_writingQueued)
        return double(std::max<qint64>(0, heard - m_queuedFrom)) / rate;
    return -1;
}

double PlaybackStream::secondsUntil(qint64 frame)
{
    PulseLocker locker(m_connection);
    return double(frame - heardFrames(true)) / m_connection.rate();
}
