#include "playback/mpg123backend.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

namespace {

constexpr size_t framesAtOnce = 4096;

struct FrameHeader {
    int bytes = 0;   // the whole frame, header included
    int samples = 0; // per channel
    int bitrate = 0; // bit/s
    int rate = 0;
    int xingAt = 0; // where a Xing/Info header would start: past the side information
};

// The MPEG audio frame header in the four bytes at h; none for anything else,
// free-format frames included (their size is in no header).
std::optional<FrameHeader> frameHeader(const uchar* h)
{
    const int version = (h[1] >> 3) & 3;     // 0: MPEG 2.5, 1: none, 2: MPEG 2, 3: MPEG 1
    const int layer = 4 - ((h[1] >> 1) & 3); // 4: none
    const int bitrateIndex = h[2] >> 4, rateIndex = (h[2] >> 2) & 3;
    if (h[0] != 0xFF || (h[1] & 0xE0) != 0xE0 || version == 1 || layer == 4 || bitrateIndex == 0 ||
        bitrateIndex == 15 || rateIndex == 3)
        return std::nullopt;
    // kbit/s: MPEG 1 layers I, II and III, then MPEG 2 (and 2.5) layer I, and II and III.
    static constexpr short bitrates[5][15] = {
        {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
    };
    static constexpr int mpeg1Rates[3] = {44100, 48000, 32000};
    const bool mpeg1 = version == 3;
    const int bitrate = 1000 * bitrates[mpeg1 ? layer - 1 : std::min(layer, 2) + 2][bitrateIndex];
    const int rate = mpeg1Rates[rateIndex] >> (mpeg1 ? 0 : version == 2 ? 1 : 2);
    const int padding = (h[2] >> 1) & 1;
    const bool mono = h[3] >> 6 == 3;
    const int xingAt = 4 + (mpeg1 ? (mono ? 17 : 32) : (mono ? 9 : 17));
    if (layer == 1)
        return FrameHeader{(12 * bitrate / rate + padding) * 4, 384, bitrate, rate, xingAt};
    const int samples = layer == 3 && !mpeg1 ? 576 : 1152;
    return FrameHeader{samples / 8 * bitrate / rate + padding, samples, bitrate, rate, xingAt};
}

struct AudioBytes {
    qint64 start = 0, end = 0;
    // Frames: a VBRI header's count, or for a file of one bit rate that
    // declares none, what its audio bytes last at that rate (libmpg123 would
    // take every frame for as long as the first, 0.2 % too long when frames
    // are padded). None when libmpg123 reads a Xing/Info header's count, or
    // counts the frames of a file of several rates that declares none.
    std::optional<qint64> length;
    bool countFrames = false;
};

// Where the audio is: after the ID3v2 tags at the start (and any zero bytes
// after them), before the ID3v1 and APE tags at the end, past a VBRI header's
// frame. None unless two MPEG frames of one stream follow each other there.
std::optional<AudioBytes> findAudio(QIODevice& input)
{
    AudioBytes audio;
    uchar head[10];
    while (input.seek(audio.start) && input.read(reinterpret_cast<char*>(head), 10) == 10 && !std::memcmp(head, "ID3", 3))
        audio.start += 10 + (head[6] & 0x7F) * 0x200000 + (head[7] & 0x7F) * 0x4000 + (head[8] & 0x7F) * 0x80 + (head[9] & 0x7F) +
            (head[5] & 0x10 ? 10 : 0); // a footer
    const QByteArray block = input.seek(audio.start) ? input.read(16384) : QByteArray();
    const auto* bytes = reinterpret_cast<const uchar*>(block.constData());
    qsizetype at = 0;
    while (at < block.size() && bytes[at] == 0)
        ++at;
    const std::optional<FrameHeader> first = at + 4 <= block.size() ? frameHeader(bytes + at) : std::nullopt;
    // The next frame of the same version, layer and rate.
    const auto follows = [&](qsizetype next) {
        return next + 4 <= block.size() && frameHeader(bytes + next) && !((bytes[at + 1] ^ bytes[next + 1]) & 0xFE) &&
            !((bytes[at + 2] ^ bytes[next + 2]) & 0x0C);
    };
    if (!first || !follows(at + first->bytes)) {
        input.seek(0);
        return std::nullopt;
    }
    audio.start += at;
    const uchar* xing = bytes + at + first->xingAt;
    const bool counted = first->bytes >= first->xingAt + 8 && (!std::memcmp(xing, "Xing", 4) || !std::memcmp(xing, "Info", 4)) &&
        (xing[7] & 1); // its frame count is there
    const bool vbri = first->bytes >= 54 && !std::memcmp(bytes + at + 36, "VBRI", 4);
    if (vbri) {
        audio.length = qint64(qFromBigEndian<quint32>(bytes + at + 50)) * first->samples;
        audio.start += first->bytes;
    }
    audio.end = input.size();
    uchar tail[128];
    while (audio.end - audio.start >= 128 && input.seek(audio.end - 128) &&
           input.read(reinterpret_cast<char*>(tail), 128) == 128) {
        // An APE tag's size counts its footer, and its header if its flags say it has one.
        const uchar* ape = tail + 128 - 32;
        const qint64 apeSize = qFromLittleEndian<quint32>(ape + 12) + (ape[23] & 0x80 ? 32 : 0);
        if (!std::memcmp(tail, "TAG", 3))
            audio.end -= 128;
        else if (!std::memcmp(ape, "APETAGEX", 8) && apeSize >= 32 && apeSize <= audio.end - audio.start)
            audio.end -= apeSize;
        else
            break;
    }
    if (!vbri && !counted) {
        bool constant = true;
        for (qsizetype frame = at; constant && follows(frame); frame += frameHeader(bytes + frame)->bytes)
            constant = frameHeader(bytes + frame)->bitrate == first->bitrate;
        if (constant)
            audio.length = (audio.end - audio.start) * 8 * first->rate / first->bitrate;
        audio.countFrames = !constant;
    }
    input.seek(0);
    return audio;
}

} // namespace

bool Mpg123Backend::recognises(QIODevice& input)
{
    return findAudio(input).has_value();
}

std::unique_ptr<Mpg123Backend> Mpg123Backend::open(std::unique_ptr<QIODevice> input, int rate, QString* error)
{
    const std::optional<AudioBytes> audio = findAudio(*input);
    if (!audio) {
        *error = QStringLiteral("No MPEG audio frames");
        return nullptr;
    }
    std::unique_ptr<Mpg123Backend> decoder(new Mpg123Backend);
    decoder->m_input = std::move(input);
    decoder->m_start = audio->start;
    decoder->m_end = audio->end;
    int failure = MPG123_OK;
    mpg123_handle* handle = decoder->m_handle = mpg123_new(nullptr, &failure);
    if (!handle) {
        *error = QString::fromUtf8(mpg123_plain_strerror(failure));
        return nullptr;
    }
    mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_GAPLESS | MPG123_NO_FRANKENSTEIN, 0);
    // Stereo float at the file's own rate; mono comes on both sides at full level.
    mpg123_format_none(handle);
    const long* rates = nullptr;
    size_t rateCount = 0;
    mpg123_rates(&rates, &rateCount);
    for (size_t i = 0; i < rateCount; ++i)
        mpg123_format(handle, rates[i], MPG123_STEREO, MPG123_ENC_FLOAT_32);
    // libmpg123 sees the audio's bytes alone, from offset 0.
    mpg123_replace_reader_handle(
        handle,
        [](void* backend, void* out, size_t count) -> ssize_t {
            auto* self = static_cast<Mpg123Backend*>(backend);
            const qint64 left = std::max<qint64>(0, self->m_end - self->m_input->pos());
            return ssize_t(self->m_input->read(static_cast<char*>(out), std::min<qint64>(qint64(count), left)));
        },
        [](void* backend, off_t offset, int whence) -> off_t {
            auto* self = static_cast<Mpg123Backend*>(backend);
            const qint64 base = whence == SEEK_CUR ? self->m_input->pos() : whence == SEEK_END ? self->m_end : self->m_start;
            return base + offset >= self->m_start && self->m_input->seek(base + offset) ? off_t(base + offset - self->m_start) : -1;
        },
        nullptr);
    long fileRate = 0;
    int channelCount = 0, encoding = 0;
    if (mpg123_open_handle(handle, decoder.get()) != MPG123_OK ||
        mpg123_getformat(handle, &fileRate, &channelCount, &encoding) != MPG123_OK) {
        *error = QString::fromUtf8(mpg123_strerror(handle));
        return nullptr;
    }
    decoder->m_fileRate = fileRate;
    if (audio->countFrames)
        mpg123_scan(handle);
    decoder->m_length = audio->length.value_or(std::max<qint64>(0, mpg123_length(handle)));
    if (!decoder->m_resampler.start(int(fileRate), rate, error))
        return nullptr;
    // The first piece is decoded now, so that a file of noise fails here.
    if (!decoder->decodeMore(decoder->m_held) || decoder->m_held.empty()) {
        *error = decoder->m_fault.isEmpty() ? QStringLiteral("No audio could be decoded") : decoder->m_fault;
        return nullptr;
    }
    return decoder;
}

Mpg123Backend::~Mpg123Backend()
{
    mpg123_delete(m_handle);
}

bool Mpg123Backend::decodeMore(std::vector<float>& out)
{
    if (!m_held.empty()) {
        out.insert(out.end(), m_held.begin(), m_held.end());
        m_held.clear();
        return true;
    }
    m_frames.resize(framesAtOnce * channels);
    size_t bytes = 0;
    const int result = mpg123_read(m_handle, m_frames.data(), m_frames.size() * sizeof(float), &bytes);
    const size_t count = bytes / (channels * sizeof(float));
    if (count == 0) {
        if (result != MPG123_DONE)
            m_fault = cannotDecode(decodedTo(), result == MPG123_NEW_FORMAT ? QStringLiteral("its sample rate changes")
                                                                             : QString::fromUtf8(mpg123_strerror(m_handle)));
        return false;
    }
    m_position += qint64(count);
    m_resampler.append(m_frames.data(), count, out);
    return true;
}

void Mpg123Backend::seek(double seconds)
{
    m_fault.clear();
    m_held.clear();
    const qint64 frame = std::max<qint64>(0, std::llround(seconds * double(m_fileRate)));
    const off_t reached = mpg123_seek(m_handle, off_t(m_length > 0 ? std::min(frame, m_length) : frame), SEEK_SET);
    m_position = reached >= 0 ? reached : m_position;
    m_resampler.clear();
}
