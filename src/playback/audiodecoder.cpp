#include "playback/audiodecoder.h"

#include "playback/mpg123backend.h"
#include "playback/sndfilebackend.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>

#include <cstring>
#include <mutex>

#include <dlfcn.h>

namespace {

using OpenWithFfmpeg = decltype(&plinkOpenWithFfmpeg);

std::mutex moduleMutex;
std::weak_ptr<void> loadedModule;

// The FFmpeg module, loaded if no decoder holds it yet: installed beside the
// program's libraries, or where the build made it. It is unloaded with the
// last decoder that holds it.
std::shared_ptr<void> ffmpegModule(OpenWithFfmpeg* open, QString* error)
{
    std::lock_guard lock(moduleMutex);
    std::shared_ptr<void> module = loadedModule.lock();
    if (!module) {
        const QString program = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
        void* handle = nullptr;
        for (const QString& path : {QFileInfo(program).path() + '/' + QLatin1String(PLINK_FFMPEG_MODULE_FROM_BIN),
                                    QString::fromUtf8(PLINK_FFMPEG_MODULE_BUILT)}) {
            if (!handle && QFileInfo::exists(path))
                handle = dlopen(QFile::encodeName(path).constData(), RTLD_LAZY | RTLD_LOCAL);
        }
        if (!handle) {
            const char* why = dlerror();
            *error = QStringLiteral("The FFmpeg decoder cannot be loaded: ") +
                (why ? QString::fromLocal8Bit(why) : QStringLiteral("plinkbox-ffmpeg.so is missing"));
            return nullptr;
        }
        // Libraries FFmpeg brings in whose constructors allocate what nothing
        // ever frees (pixman's table of implementations, libssh's crypto
        // set-up): loaded again with the module, they would take a little
        // more memory each time. They stay once loaded (about 2 MiB with what
        // they need), and the rest of FFmpeg still goes with the module.
        for (const char* leaky : {"libpixman-1.so.0", "libssh-gcrypt.so.4"})
            dlopen(leaky, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        module = std::shared_ptr<void>(handle, [](void* loaded) {
            std::lock_guard unloading(moduleMutex);
            dlclose(loaded);
        });
        loadedModule = module;
    }
    *open = reinterpret_cast<OpenWithFfmpeg>(dlsym(module.get(), "plinkOpenWithFfmpeg"));
    if (!*open) {
        *error = QStringLiteral("The FFmpeg decoder cannot be loaded: it has no entry point");
        return nullptr;
    }
    return module;
}

// A copy in memory of our own: a text made in the FFmpeg module may point
// into the module's constant data, which is unmapped when it is unloaded.
QString owned(const QString& text)
{
    return text.isEmpty() ? QString() : QString(text.constData(), text.size());
}

} // namespace

std::unique_ptr<AudioDecoder> AudioDecoder::openFile(const QString& path, int rate, QString* error)
{
    return open(&path, nullptr, rate, error);
}

std::unique_ptr<AudioDecoder> AudioDecoder::openBytes(const QByteArray& bytes, int rate, QString* error)
{
    return open(nullptr, &bytes, rate, error);
}

// MPEG audio by libmpg123 itself, the rest by libsndfile first, as they cost
// nothing more; FFmpeg for what they refuse, whose reason is then the one given.
std::unique_ptr<AudioDecoder> AudioDecoder::open(const QString* path, const QByteArray* bytes, int rate, QString* error)
{
    std::unique_ptr<QIODevice> input;
    if (path)
        input = std::make_unique<QFile>(*path);
    else
        input = std::make_unique<QBuffer>();
    if (bytes)
        static_cast<QBuffer*>(input.get())->setData(*bytes);
    if (!input->open(QIODevice::ReadOnly)) {
        *error = input->errorString();
        return nullptr;
    }
    if (std::unique_ptr<DecoderBackend> backend = Mpg123Backend::recognises(*input)
            ? std::unique_ptr<DecoderBackend>(Mpg123Backend::open(std::move(input), rate, error))
            : SndfileBackend::open(std::move(input), rate, error))
        return std::unique_ptr<AudioDecoder>(new AudioDecoder(nullptr, backend.release(), rate));
    OpenWithFfmpeg openWithFfmpeg = nullptr;
    std::shared_ptr<void> module = ffmpegModule(&openWithFfmpeg, error);
    if (!module)
        return nullptr;
    // The file system's own bytes for the name: any letters, '#', '%' or '?'.
    const QByteArray name = path ? QFile::encodeName(*path) : QByteArray();
    DecoderBackend* backend = openWithFfmpeg(path ? name.constData() : nullptr, bytes, rate, error);
    if (!backend) {
        // The reason may be a literal in the module, which goes with it.
        *error = owned(*error);
        return nullptr;
    }
    return std::unique_ptr<AudioDecoder>(new AudioDecoder(std::move(module), backend, rate));
}

AudioDecoder::AudioDecoder(std::shared_ptr<void> module, DecoderBackend* backend, int rate)
    : m_module(std::move(module))
    , m_backend(backend)
    , m_rate(rate)
{
}

AudioDecoder::~AudioDecoder() = default;

std::vector<float> AudioDecoder::decodeAll(const QByteArray& bytes, int rate, QString* error)
{
    std::unique_ptr<AudioDecoder> decoder = openBytes(bytes, rate, error);
    std::vector<float> samples;
    if (!decoder)
        return samples;
    float chunk[4096 * channels];
    while (!decoder->atEnd()) {
        const qsizetype count = decoder->read(chunk, 4096);
        samples.insert(samples.end(), chunk, chunk + count * channels);
        if (decoder->inputDone())
            decoder->finish();
    }
    return samples;
}

qsizetype AudioDecoder::read(float* out, qsizetype frames)
{
    qsizetype done = 0;
    while (done < frames) {
        const size_t available = (m_pending.size() - m_pendingRead) / channels;
        if (available > 0) {
            const size_t count = std::min<size_t>(available, size_t(frames - done));
            std::memcpy(out + done * channels, m_pending.data() + m_pendingRead, count * channels * sizeof(float));
            m_pendingRead += count * channels;
            done += qsizetype(count);
            continue;
        }
        if (m_inputDone || m_finished)
            break;
        m_pending.clear();
        m_pendingRead = 0;
        if (m_backend->decodeMore(m_pending))
            continue;
        m_inputDone = true;
        m_fault = owned(m_backend->fault());
        // A file cut short: its length says more than what could be decoded.
        const double length = duration(), decoded = m_backend->decodedTo();
        if (m_fault.isEmpty() && length > 0 && decoded + std::max(1.0, length / 50) < length)
            m_fault = QStringLiteral("The file ends after %1 s of %2 s")
                          .arg(QString::number(decoded, 'f', 1), QString::number(length, 'f', 1));
    }
    return done;
}

void AudioDecoder::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    m_pending.erase(m_pending.begin(), m_pending.begin() + qsizetype(m_pendingRead));
    m_pendingRead = 0;
    m_backend->finish(m_pending);
}

void AudioDecoder::seek(double seconds)
{
    m_pending.clear();
    m_pendingRead = 0;
    m_fault.clear();
    if (duration() > 0 && seconds >= duration()) {
        // Nothing is left to play: the end, at once.
        m_inputDone = m_finished = true;
        return;
    }
    m_backend->seek(std::max(0.0, seconds));
    m_inputDone = m_finished = false;
}
