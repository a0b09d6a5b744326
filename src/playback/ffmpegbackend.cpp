// The FFmpeg decoder, built as a module of its own (plinkbox-ffmpeg.so) that
// AudioDecoder loads only while a file needs it: whatever libsndfile does not
// open (AAC, ALAC, WMA, ...) and files of more than two channels.
#include "playback/decoderbackend.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

namespace {

// Decoding errors in a row after which the rest of a file counts as unreadable.
constexpr int maxFailuresInARow = 50;
constexpr int ioBufferSize = 16 * 1024;

QString describe(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return QString::fromUtf8(text);
}

// Encoder delay and padding that a file declares are trimmed, so tracks cut
// from one recording join sample for sample: MP3's LAME header and the
// delay of an MP4 edit list by libavcodec, the padding after an MP4 file's
// declared end here.
class FfmpegBackend : public DecoderBackend
{
public:
    explicit FfmpegBackend(int rate) : m_rate(rate) {}
    ~FfmpegBackend() override;

    bool open(const char* url, QString* error, const AVInputFormat* format = nullptr);
    bool openBytes(const QByteArray& bytes, QString* error);

    double duration() const override { return m_duration; }
    bool decodeMore(std::vector<float>& out) override;
    void finish(std::vector<float>& out) override;
    void seek(double seconds) override;
    double decodedTo() const override { return m_decodedTo; }
    QString fault() const override { return m_fault; }

private:
    bool setUpResampler(const AVFrame* frame);
    bool nextFrame();
    void convert(const AVFrame* frame, std::vector<float>& out);

    AVFormatContext* m_format = nullptr;
    AVCodecContext* m_codec = nullptr;
    AVIOContext* m_io = nullptr; // ours when reading from memory
    AVPacket* m_packet = nullptr;
    AVFrame* m_frame = nullptr;
    AVFrame* m_held = nullptr; // the first frame, decoded by open()
    SwrContext* m_resampler = nullptr;
    int m_inFormat = -1, m_inRate = 0, m_inChannels = 0; // what the resampler converts from
    QByteArray m_bytes;
    qint64 m_bytesRead = 0;
    int m_stream = -1;
    int m_rate;
    double m_duration = 0;
    double m_exactEnd = -1; // where the audio ends, where the file says so exactly
    double m_skipTo = -1;   // after a seek: samples before this time are dropped
    double m_decodedTo = 0; // seconds of the file decoded so far
    int m_failuresInARow = 0;
    QString m_fault;
};

void configureLibraries()
{
    av_log_set_level(AV_LOG_QUIET);
    // No audio file needs one allocation this large; a broken header that
    // asks for gigabytes is refused instead (found by fuzzing).
    av_max_alloc(128 * 1024 * 1024);
}

} // namespace

extern "C" Q_DECL_EXPORT DecoderBackend* plinkOpenWithFfmpeg(const char* path, const QByteArray* bytes, int rate, QString* error)
{
    // Once per load of the module: its libraries start afresh each time.
    static const bool configured = (configureLibraries(), true);
    Q_UNUSED(configured);
    auto decoder = std::make_unique<FfmpegBackend>(rate);
    if (bytes)
        return decoder->openBytes(*bytes, error) ? decoder.release() : nullptr;
    // The demuxer its suffix names is tried first: probing runs through every
    // demuxer FFmpeg has (and the libraries behind them), which costs
    // megabytes of memory for nothing when the name is right.
    static const QHash<QString, const char*> bySuffix{
        {QStringLiteral("mp3"), "mp3"}, {QStringLiteral("flac"), "flac"}, {QStringLiteral("ogg"), "ogg"},
        {QStringLiteral("oga"), "ogg"}, {QStringLiteral("opus"), "ogg"}, {QStringLiteral("m4a"), "mov"},
        {QStringLiteral("mp4"), "mov"}, {QStringLiteral("wav"), "wav"}, {QStringLiteral("aif"), "aiff"},
        {QStringLiteral("aiff"), "aiff"}};
    const char* guess = bySuffix.value(QFileInfo(QFile::decodeName(path)).suffix().toLower());
    if (guess && decoder->open(path, error, av_find_input_format(guess)))
        return decoder.release();
    decoder = std::make_unique<FfmpegBackend>(rate);
    return decoder->open(path, error) ? decoder.release() : nullptr;
}

bool FfmpegBackend::openBytes(const QByteArray& bytes, QString* error)
{
    m_bytes = bytes;
    auto read = [](void* opaque, uint8_t* buffer, int size) -> int {
        auto* self = static_cast<FfmpegBackend*>(opaque);
        const qint64 left = self->m_bytes.size() - self->m_bytesRead;
        if (left <= 0)
            return AVERROR_EOF;
        const int count = int(std::min<qint64>(left, size));
        std::memcpy(buffer, self->m_bytes.constData() + self->m_bytesRead, size_t(count));
        self->m_bytesRead += count;
        return count;
    };
    auto seek = [](void* opaque, int64_t offset, int whence) -> int64_t {
        auto* self = static_cast<FfmpegBackend*>(opaque);
        const qint64 size = self->m_bytes.size();
        if (whence & AVSEEK_SIZE)
            return size;
        const qint64 base = (whence & 3) == SEEK_CUR ? self->m_bytesRead : (whence & 3) == SEEK_END ? size : 0;
        if (base + offset < 0 || base + offset > size)
            return AVERROR(EINVAL);
        self->m_bytesRead = base + offset;
        return self->m_bytesRead;
    };
    auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferSize));
    m_io = avio_alloc_context(buffer, ioBufferSize, 0, this, read, nullptr, seek);
    if (!m_io) {
        av_free(buffer);
        *error = QStringLiteral("Out of memory");
        return false;
    }
    return open(nullptr, error);
}

FfmpegBackend::~FfmpegBackend()
{
    swr_free(&m_resampler);
    av_frame_free(&m_held);
    av_frame_free(&m_frame);
    av_packet_free(&m_packet);
    avcodec_free_context(&m_codec);
    avformat_close_input(&m_format);
    if (m_io) {
        av_freep(&m_io->buffer);
        avio_context_free(&m_io);
    }
}

bool FfmpegBackend::open(const char* url, QString* error, const AVInputFormat* format)
{
    m_format = avformat_alloc_context();
    m_packet = av_packet_alloc();
    m_frame = av_frame_alloc();
    if (!m_format || !m_packet || !m_frame) {
        *error = QStringLiteral("Out of memory");
        return false;
    }
    if (m_io) {
        m_format->pb = m_io;
        m_format->flags |= AVFMT_FLAG_CUSTOM_IO;
    }
    int result = avformat_open_input(&m_format, url, format, nullptr); // frees m_format on failure
    if (result >= 0)
        result = avformat_find_stream_info(m_format, nullptr);
    if (result < 0) {
        *error = describe(result);
        return false;
    }
    const AVCodec* codec = nullptr;
    m_stream = av_find_best_stream(m_format, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (m_stream < 0 || !codec) {
        *error = QStringLiteral("The file holds no audio that can be decoded");
        return false;
    }
    for (unsigned i = 0; i < m_format->nb_streams; ++i)
        m_format->streams[i]->discard = int(i) == m_stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    const AVStream* stream = m_format->streams[m_stream];
    m_codec = avcodec_alloc_context3(codec);
    if (!m_codec || (result = avcodec_parameters_to_context(m_codec, stream->codecpar)) < 0) {
        *error = m_codec ? describe(result) : QStringLiteral("Out of memory");
        return false;
    }
    m_codec->pkt_timebase = stream->time_base;
    if ((result = avcodec_open2(m_codec, codec, nullptr)) < 0) {
        *error = describe(result);
        return false;
    }
    if (m_codec->sample_rate != 0 && !plausibleRate(m_codec->sample_rate)) {
        *error = QStringLiteral("The file declares an impossible sample rate");
        return false;
    }
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
        m_duration = double(stream->duration) * av_q2d(stream->time_base);
    else if (m_format->duration != AV_NOPTS_VALUE && m_format->duration > 0)
        m_duration = double(m_format->duration) / AV_TIME_BASE;
    // An MP4 file's track length is exact (an edit list, or the track's own
    // count): its last frame's samples past it are the encoder's padding.
    if (std::strncmp(m_format->iformat->name, "mov", 3) == 0 && stream->duration > 0)
        m_exactEnd = m_duration;

    // The first frame decoded now, so that a file of noise fails here; it is
    // converted at the first read.
    m_held = av_frame_alloc();
    if (!m_held || !nextFrame()) {
        *error = m_fault.isEmpty() ? QStringLiteral("No audio could be decoded") : m_fault;
        return false;
    }
    av_frame_move_ref(m_held, m_frame);
    return true;
}

bool FfmpegBackend::setUpResampler(const AVFrame* frame)
{
    swr_free(&m_resampler);
    AVChannelLayout in{};
    if (frame->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&in, frame->ch_layout.nb_channels);
    else
        av_channel_layout_copy(&in, &frame->ch_layout);
    AVChannelLayout out = AV_CHANNEL_LAYOUT_STEREO;
    int result = swr_alloc_set_opts2(&m_resampler, &out, AV_SAMPLE_FMT_FLT, m_rate, &in,
                                     AVSampleFormat(frame->format), frame->sample_rate, 0, nullptr);
    // Mono goes to both sides at full level, as every player plays it.
    static const double monoToBoth[2] = {1.0, 1.0};
    if (result >= 0 && in.nb_channels == 1)
        result = swr_set_matrix(m_resampler, monoToBoth, 1);
    av_channel_layout_uninit(&in);
    if (result < 0 || swr_init(m_resampler) < 0) {
        swr_free(&m_resampler);
        return false;
    }
    m_inFormat = frame->format;
    m_inRate = frame->sample_rate;
    m_inChannels = frame->ch_layout.nb_channels;
    return true;
}

bool FfmpegBackend::decodeMore(std::vector<float>& out)
{
    if (m_held && m_held->nb_samples > 0) {
        convert(m_held, out);
        av_frame_unref(m_held);
        return true;
    }
    if (!nextFrame())
        return false;
    convert(m_frame, out);
    av_frame_unref(m_frame);
    return true;
}

// The next decoded frame into m_frame; false once the input is used up.
bool FfmpegBackend::nextFrame()
{
    bool flushing = false;
    for (;;) {
        int result = avcodec_receive_frame(m_codec, m_frame);
        if (result == 0) {
            m_failuresInARow = 0;
            return true;
        }
        if (result == AVERROR_EOF)
            break;
        if (result != AVERROR(EAGAIN) && ++m_failuresInARow > maxFailuresInARow) {
            m_fault = cannotDecode(m_decodedTo, describe(result));
            break;
        }
        if (flushing)
            continue;
        result = av_read_frame(m_format, m_packet);
        if (result < 0) {
            if (result != AVERROR_EOF)
                m_fault = QStringLiteral("The file cannot be read after %1 s: %2")
                              .arg(QString::number(m_decodedTo, 'f', 1), describe(result));
            // The decoder's last frames, then the end.
            avcodec_send_packet(m_codec, nullptr);
            flushing = true;
            continue;
        }
        if (m_packet->stream_index == m_stream) {
            result = avcodec_send_packet(m_codec, m_packet);
            if (result < 0 && result != AVERROR(EAGAIN) && ++m_failuresInARow > maxFailuresInARow) {
                av_packet_unref(m_packet);
                m_fault = cannotDecode(m_decodedTo, describe(result));
                break;
            }
        }
        av_packet_unref(m_packet);
    }
    return false;
}

void FfmpegBackend::convert(const AVFrame* frame, std::vector<float>& out)
{
    if (frame->nb_samples <= 0 || !plausibleRate(frame->sample_rate))
        return;
    if (!m_resampler || frame->format != m_inFormat || frame->sample_rate != m_inRate ||
        frame->ch_layout.nb_channels != m_inChannels) {
        if (!setUpResampler(frame))
            return;
    }
    const AVStream* stream = m_format->streams[m_stream];
    const double start = frame->best_effort_timestamp == AV_NOPTS_VALUE
        ? m_decodedTo
        : double(frame->best_effort_timestamp - (stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time)) *
            av_q2d(stream->time_base);
    const double end = start + double(frame->nb_samples) / frame->sample_rate;
    m_decodedTo = std::max(m_decodedTo, end);
    const int samples = m_exactEnd < 0 ? frame->nb_samples
        : int(std::clamp<long>(std::lround((m_exactEnd - start) * frame->sample_rate), 0, frame->nb_samples));
    if (samples == 0)
        return;
    qsizetype drop = 0;
    if (m_skipTo >= 0) {
        if (end <= m_skipTo)
            return; // wholly before the place sought
        drop = std::max<qsizetype>(0, qsizetype(std::lround((m_skipTo - start) * m_rate)));
        m_skipTo = -1;
    }
    const int room = swr_get_out_samples(m_resampler, samples);
    if (room <= 0)
        return;
    const size_t old = out.size();
    out.resize(old + size_t(room) * channels);
    auto* converted = reinterpret_cast<uint8_t*>(out.data() + old);
    const int made = swr_convert(m_resampler, &converted, room, const_cast<const uint8_t**>(frame->extended_data),
                                 samples);
    const size_t madeSamples = size_t(std::max(made, 0)) * channels;
    out.resize(old + madeSamples);
    const size_t cut = std::min(madeSamples, size_t(drop) * channels);
    out.erase(out.begin() + qsizetype(old), out.begin() + qsizetype(old + cut));
}

void FfmpegBackend::finish(std::vector<float>& out)
{
    if (!m_resampler)
        return;
    const int room = swr_get_out_samples(m_resampler, 0);
    if (room <= 0)
        return;
    const size_t old = out.size();
    out.resize(old + size_t(room) * channels);
    auto* converted = reinterpret_cast<uint8_t*>(out.data() + old);
    const int made = swr_convert(m_resampler, &converted, room, nullptr, 0);
    out.resize(old + size_t(std::max(made, 0)) * channels);
}

void FfmpegBackend::seek(double seconds)
{
    m_fault.clear();
    m_failuresInARow = 0;
    const AVStream* stream = m_format->streams[m_stream];
    const int64_t target = int64_t(seconds / av_q2d(stream->time_base)) +
        (stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time);
    av_frame_unref(m_held);
    av_seek_frame(m_format, m_stream, target, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(m_codec);
    swr_free(&m_resampler);
    m_skipTo = seconds;
    m_decodedTo = seconds;
}
