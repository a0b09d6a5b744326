#include "playback/audiodecoder.h"

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
// Rates no audio has; a resampler built for one takes minutes (found by fuzzing).
bool plausibleRate(int rate)
{
    return rate >= 1000 && rate <= 768000;
}
constexpr int ioBufferSize = 16 * 1024;

QString describe(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return QString::fromUtf8(text);
}

QString seconds(double value)
{
    return QString::number(value, 'f', 1);
}

} // namespace

void AudioDecoder::configureLibraries()
{
    av_log_set_level(AV_LOG_QUIET);
    // No audio file needs one allocation this large; a broken header that
    // asks for gigabytes is refused instead (found by fuzzing).
    av_max_alloc(128 * 1024 * 1024);
}

std::unique_ptr<AudioDecoder> AudioDecoder::openFile(const QString& path, int rate, QString* error)
{
    std::unique_ptr<AudioDecoder> decoder(new AudioDecoder);
    decoder->m_rate = rate;
    // The file system's own bytes for the name: any letters, '#', '%' or '?'.
    const QByteArray name = QFile::encodeName(path);
    // The demuxer its suffix names is tried first: probing runs through every
    // demuxer FFmpeg has (and the libraries behind them), which costs
    // megabytes of memory for nothing when the name is right.
    static const QHash<QString, const char*> bySuffix{
        {QStringLiteral("mp3"), "mp3"}, {QStringLiteral("flac"), "flac"}, {QStringLiteral("ogg"), "ogg"},
        {QStringLiteral("oga"), "ogg"}, {QStringLiteral("opus"), "ogg"}, {QStringLiteral("m4a"), "mov"},
        {QStringLiteral("mp4"), "mov"}, {QStringLiteral("wav"), "wav"}, {QStringLiteral("aif"), "aiff"},
        {QStringLiteral("aiff"), "aiff"}};
    const char* guess = bySuffix.value(QFileInfo(path).suffix().toLower());
    if (guess && decoder->open(name.constData(), error, av_find_input_format(guess)))
        return decoder;
    decoder.reset(new AudioDecoder);
    decoder->m_rate = rate;
    if (!decoder->open(name.constData(), error))
        return nullptr;
    return decoder;
}

std::unique_ptr<AudioDecoder> AudioDecoder::openBytes(const QByteArray& bytes, int rate, QString* error)
{
    std::unique_ptr<AudioDecoder> decoder(new AudioDecoder);
    decoder->m_rate = rate;
    decoder->m_bytes = bytes;
    auto read = [](void* opaque, uint8_t* buffer, int size) -> int {
        auto* self = static_cast<AudioDecoder*>(opaque);
        const qint64 left = self->m_bytes.size() - self->m_bytesRead;
        if (left <= 0)
            return AVERROR_EOF;
        const int count = int(std::min<qint64>(left, size));
        std::memcpy(buffer, self->m_bytes.constData() + self->m_bytesRead, size_t(count));
        self->m_bytesRead += count;
        return count;
    };
    auto seek = [](void* opaque, int64_t offset, int whence) -> int64_t {
        auto* self = static_cast<AudioDecoder*>(opaque);
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
    decoder->m_io = avio_alloc_context(buffer, ioBufferSize, 0, decoder.get(), read, nullptr, seek);
    if (!decoder->m_io) {
        av_free(buffer);
        *error = QStringLiteral("Out of memory");
        return nullptr;
    }
    if (!decoder->open(nullptr, error))
        return nullptr;
    return decoder;
}

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

AudioDecoder::~AudioDecoder()
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

bool AudioDecoder::open(const char* url, QString* error, const AVInputFormat* format)
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

bool AudioDecoder::setUpResampler(const AVFrame* frame)
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

// Decodes one more frame into m_pending, or notes that the input is used up.
void AudioDecoder::decodeMore()
{
    if (hasHeldFrame()) {
        convert(m_held);
        av_frame_unref(m_held);
    } else if (nextFrame()) {
        convert(m_frame);
        av_frame_unref(m_frame);
    }
}

// The next decoded frame into m_frame; false once the input is used up.
bool AudioDecoder::nextFrame()
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
            m_fault = QStringLiteral("The file cannot be decoded after %1 s: %2").arg(seconds(m_decodedTo), describe(result));
            break;
        }
        if (flushing)
            continue;
        result = av_read_frame(m_format, m_packet);
        if (result < 0) {
            if (result != AVERROR_EOF)
                m_fault = QStringLiteral("The file cannot be read after %1 s: %2").arg(seconds(m_decodedTo), describe(result));
            // The decoder's last frames, then the end.
            avcodec_send_packet(m_codec, nullptr);
            flushing = true;
            continue;
        }
        if (m_packet->stream_index == m_stream) {
            result = avcodec_send_packet(m_codec, m_packet);
            if (result < 0 && result != AVERROR(EAGAIN) && ++m_failuresInARow > maxFailuresInARow) {
                av_packet_unref(m_packet);
                m_fault = QStringLiteral("The file cannot be decoded after %1 s: %2").arg(seconds(m_decodedTo), describe(result));
                break;
            }
        }
        av_packet_unref(m_packet);
    }
    m_inputDone = true;
    // A file cut short: its length says more than what could be decoded.
    if (m_fault.isEmpty() && m_duration > 0 && m_decodedTo + std::max(1.0, m_duration / 50) < m_duration)
        m_fault = QStringLiteral("The file ends after %1 s of %2 s").arg(seconds(m_decodedTo), seconds(m_duration));
    return false;
}

void AudioDecoder::convert(const AVFrame* frame)
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
    qsizetype drop = 0;
    if (m_skipTo >= 0) {
        if (end <= m_skipTo)
            return; // wholly before the place sought
        drop = std::max<qsizetype>(0, qsizetype(std::lround((m_skipTo - start) * m_rate)));
        m_skipTo = -1;
    }
    if (m_pendingRead > 0) {
        m_pending.erase(m_pending.begin(), m_pending.begin() + qsizetype(m_pendingRead));
        m_pendingRead = 0;
    }
    const int room = swr_get_out_samples(m_resampler, frame->nb_samples);
    if (room <= 0)
        return;
    const size_t old = m_pending.size();
    m_pending.resize(old + size_t(room) * channels);
    auto* out = reinterpret_cast<uint8_t*>(m_pending.data() + old);
    const int made = swr_convert(m_resampler, &out, room, const_cast<const uint8_t**>(frame->extended_data),
                                 frame->nb_samples);
    const size_t madeSamples = size_t(std::max(made, 0)) * channels;
    m_pending.resize(old + madeSamples);
    const size_t cut = std::min(madeSamples, size_t(drop) * channels);
    m_pending.erase(m_pending.begin() + qsizetype(old), m_pending.begin() + qsizetype(old + cut));
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
        if (!hasHeldFrame() && (m_inputDone || m_finished))
            break;
        decodeMore();
    }
    return done;
}

void AudioDecoder::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    if (!m_resampler)
        return;
    const int room = swr_get_out_samples(m_resampler, 0);
    if (room <= 0)
        return;
    const size_t old = m_pending.size();
    m_pending.resize(old + size_t(room) * channels);
    auto* out = reinterpret_cast<uint8_t*>(m_pending.data() + old);
    const int made = swr_convert(m_resampler, &out, room, nullptr, 0);
    m_pending.resize(old + size_t(std::max(made, 0)) * channels);
}

void AudioDecoder::seek(double seconds)
{
    m_pending.clear();
    m_pendingRead = 0;
    m_fault.clear();
    m_failuresInARow = 0;
    if (m_duration > 0 && seconds >= m_duration) {
        // Nothing is left to play: the end, at once.
        m_inputDone = m_finished = true;
        m_decodedTo = m_duration;
        return;
    }
    seconds = std::max(0.0, seconds);
    const AVStream* stream = m_format->streams[m_stream];
    const int64_t target = int64_t(seconds / av_q2d(stream->time_base)) +
        (stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time);
    av_frame_unref(m_held);
    av_seek_frame(m_format, m_stream, target, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(m_codec);
    swr_free(&m_resampler);
    m_inputDone = m_finished = false;
    m_skipTo = seconds;
    m_decodedTo = seconds;
}

bool AudioDecoder::hasHeldFrame() const
{
    return m_held && m_held->nb_samples > 0;
}
