#include "playback/soundplayer.h"

#include "playback/audiodecoder.h"
#include "playback/pulseconnection.h"
#include "store/console.h"

#include <QDir>
#include <QFile>
#include <QtConcurrent>

#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/mainloop-api.h>
#include <pulse/rtclock.h>
#include <pulse/stream.h>

#include <cstring>

namespace {

constexpr size_t frameBytes = AudioDecoder::channels * sizeof(float);
constexpr pa_usec_t lingerMicroseconds = 300000;

QString couldNotPlay(const QString& name, const QString& description)
{
    return QStringLiteral("Error: Could not play sound file ") + name + QStringLiteral(". Error: ") + description;
}

} // namespace

struct SoundPlayer::Playing {
    SoundPlayer* owner = nullptr;
    pa_stream* stream = nullptr;
    std::shared_ptr<const Sound> sound;
    size_t written = 0;              // bytes
    pa_time_event* linger = nullptr; // set once drained: when the stream goes
};

SoundPlayer::SoundPlayer(QObject* parent)
    : QObject(parent)
{
}

SoundPlayer::~SoundPlayer()
{
    m_preload.waitForFinished();
    if (!m_connection)
        return;
    PulseLocker locker(*m_connection);
    endPlaying();
}

void SoundPlayer::playSound(const QString& name)
{
    const QString resource = QStringLiteral(":/sounds/") + name + QStringLiteral(".m4a");
    if (!QFile::exists(resource)) {
        printLine(QStringLiteral("Error: Sound file ") + name + QStringLiteral(".m4a not found."));
        return;
    }
    preload().waitForFinished();
    const std::shared_ptr<const Sound> sound = m_sounds.value(name);
    // A sound that cannot be decoded is reported each time, and the one
    // sounding goes on.
    if (!sound || sound->samples.empty()) {
        printLine(couldNotPlay(name, sound ? sound->error : QStringLiteral("It was not decoded")));
        return;
    }
    if (!m_connection)
        m_connection = std::make_unique<PulseConnection>("plinkBox sounds");
    PulseLocker locker(*m_connection);
    QString error;
    if (!m_connection->ensureConnected(&error)) {
        printLine(couldNotPlay(name, error));
        return;
    }
    endPlaying();
    const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, uint32_t(rate), AudioDecoder::channels};
    pa_stream* stream = pa_stream_new(m_connection->context(), "Interface sound", &format, nullptr);
    if (!stream) {
        printLine(couldNotPlay(name, QString::fromUtf8(pa_strerror(pa_context_errno(m_connection->context())))));
        return;
    }
    // Room for the whole sound, started as soon as it is written; the
    // server is asked for a short latency while it plays.
    const auto bytes = uint32_t(sound->samples.size() * sizeof(float));
    const pa_buffer_attr buffer{uint32_t(-1), bytes, bytes, uint32_t(-1), uint32_t(-1)};
    m_playing = new Playing{this, stream, sound};
    pa_stream_set_write_callback(stream, &SoundPlayer::writeRequested, m_playing);
    pa_stream_connect_playback(stream, nullptr, &buffer, PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
}

QFuture<void> SoundPlayer::preload()
{
    if (!m_preloadStarted) {
        m_preloadStarted = true;
        m_preload = QtConcurrent::run([this] { decodeSounds(); });
    }
    return m_preload;
}

void SoundPlayer::decodeSounds()
{
    for (const QFileInfo& file : QDir(QStringLiteral(":/sounds")).entryInfoList({QStringLiteral("*.m4a")})) {
        auto sound = std::make_shared<Sound>();
        // The build decodes the shipped sounds beforehand, so that FFmpeg is
        // not loaded for them; any other is decoded here.
        QFile decoded(file.path() + '/' + file.completeBaseName() + QStringLiteral(".pcm"));
        QFile input(file.filePath());
        if (decoded.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = decoded.readAll();
            sound->samples.resize(size_t(bytes.size()) / sizeof(float));
            std::memcpy(sound->samples.data(), bytes.constData(), sound->samples.size() * sizeof(float));
        } else if (input.open(QIODevice::ReadOnly)) {
            sound->samples = AudioDecoder::decodeAll(input.readAll(), rate, &sound->error);
        } else {
            sound->error = input.errorString();
        }
        m_sounds.insert(file.completeBaseName(), sound);
    }
}

// On the event thread: the whole sound at once, then a drain, after which
// the stream ends itself.
void SoundPlayer::writeRequested(pa_stream* stream, size_t bytes, void* userdata)
{
    auto* playing = static_cast<Playing*>(userdata);
    const size_t total = playing->sound->samples.size() * sizeof(float);
    const size_t count = std::min(bytes, total - playing->written) / frameBytes * frameBytes;
    if (count == 0)
        return;
    pa_stream_write(stream, reinterpret_cast<const char*>(playing->sound->samples.data()) + playing->written, count,
                    nullptr, 0, PA_SEEK_RELATIVE);
    playing->written += count;
    if (playing->written < total)
        return;
    pa_stream_set_write_callback(stream, nullptr, nullptr);
    pa_operation* drain = pa_stream_drain(stream, [](pa_stream* drained, int, void* owner) {
        // Drained means handed to the output, not yet heard: the stream goes
        // a little later, so that its end is not cut from the output. The
        // timer is the sound's own, so whatever ends the sound ends it too.
        auto* self = static_cast<SoundPlayer*>(owner);
        if (!self->m_playing || self->m_playing->stream != drained || self->m_playing->linger)
            return;
        self->m_playing->linger = pa_context_rttime_new(
            pa_stream_get_context(drained), pa_rtclock_now() + lingerMicroseconds,
            [](pa_mainloop_api*, pa_time_event* event, const timeval*, void* player) {
                auto* sounds = static_cast<SoundPlayer*>(player);
                if (sounds->m_playing && sounds->m_playing->linger == event)
                    sounds->endPlaying();
            }, self);
    }, playing->owner);
    if (drain)
        pa_operation_unref(drain);
}

// Cuts the sound still playing short.
void SoundPlayer::endPlaying()
{
    if (!m_playing)
        return;
    if (m_playing->linger)
        m_connection->api()->time_free(m_playing->linger);
    pa_stream_set_write_callback(m_playing->stream, nullptr, nullptr);
    if (PA_STREAM_IS_GOOD(pa_stream_get_state(m_playing->stream)))
        pa_stream_disconnect(m_playing->stream);
    pa_stream_unref(m_playing->stream);
    delete m_playing;
    m_playing = nullptr;
}
