#pragma once

#include "playback/pulseconnection.h"

#include <QObject>
#include <QString>

#include <limits>
#include <memory>

class AudioDecoder;
struct pa_stream;
struct pa_defer_event;

// The music's one stream on the sound server. The open track's decoder feeds
// it, and a queued successor follows it in the same stream, sample for
// sample. Decoding runs on the connection's event thread, in large pieces
// when the server asks for them; the calls here come from the user-interface
// thread and only queue work or move the stream (cork, flush), never wait
// for the server.
//
// Frames are counted from the last flush (an "epoch"): what the listener
// hears is the frames written less the server's latency. Events carry their
// epoch, so an event of an earlier one is recognised as stale.
class PlaybackStream : public QObject
{
    Q_OBJECT

public:
    explicit PlaybackStream(QObject* parent = nullptr);
    ~PlaybackStream() override;

    // Connects to the server and opens the stream unless they are open;
    // false, with the reason in *error, when no server answers.
    bool open(QString* error);
    int rate() const { return m_connection.rate(); }
    quint64 epoch();

    // From now on decoder (track `token`, at `from` seconds) is what plays.
    void start(std::unique_ptr<AudioDecoder> decoder, quint64 token, double from, bool paused);
    void setPaused(bool paused);
    // The open track from `seconds`, flushing all written after what is heard.
    void seek(double seconds);
    // The track after the open one, or that there is none.
    void queue(std::unique_ptr<AudioDecoder> next, quint64 token);
    void playToTheEnd();
    // Forgets the queued track; if some of it is written, the open track is
    // written again from where the listener is.
    void dropQueued();
    bool hasQueued();
    // The queued track's first frame is heard: it is the open track now.
    void commitQueued();
    void setVolume(float volume);

    // Seconds into track `token` that the listener hears; -1 when unknown.
    double position(quint64 token);
    // About how long until the listener hears frame (or, for the frame
    // after the last, has heard the end); zero or less once heard. Call it
    // again after the wait: the server's figures are asked for afresh.
    double secondsUntil(qint64 frame);

signals:
    void successorWanted(quint64 epoch);
    void queuedWritten(quint64 epoch, qint64 frame); // where the queued track begins
    void endWritten(quint64 epoch, qint64 frame);    // the frame after the last
    void trackFault(quint64 token, const QString& reason);
    void failed(const QString& reason);

private:
    enum class Tail { decoding, asked, last, drained };

    static void writeRequested(pa_stream* stream, size_t bytes, void* self);
    static void stateChanged(pa_stream* stream, void* self);
    void fill();
    void fillSoon();
    void restart(double seconds);
    void cork(bool paused);
    void closeStream();
    qint64 heardFrames(bool confirmed = false);
    void askTiming();
    void timingArrived(pa_stream* stream, int success);

    PulseConnection m_connection{"plinkBox"};
    pa_stream* m_stream = nullptr;
    pa_defer_event* m_fillEvent = nullptr;
    std::unique_ptr<AudioDecoder> m_active, m_queued;
    quint64 m_activeToken = 0, m_queuedToken = 0;
    bool m_writingQueued = false;
    qint64 m_written = 0;      // frames written in this epoch
    qint64 m_activeFrom = 0;   // frame of the epoch where the open track's data begins
    double m_activeSeconds = 0; // ... and its place in the track there
    qint64 m_queuedFrom = -1;
    quint64 m_epoch = 0;
    Tail m_tail = Tail::decoding;
    bool m_paused = true;
    float m_volume = 1.0f;
    // What the listener heard at a moment: frames of the epoch, at most limit.
    struct Clock {
        qint64 heard = 0;
        qint64 limit = 0;
        quint64 at = 0; // pa_rtclock_now()
    };
    static constexpr qint64 kUnbounded = std::numeric_limits<qint64>::max();
    Clock m_clock;
    // How long this epoch has played: before m_playingSince, and since then
    // unless corked (pa_rtclock_now() microseconds).
    quint64 m_played = 0;
    quint64 m_playingSince = 0;
    bool m_askedTiming = false;
    quint64 m_askedEpoch = 0;
};
