#include "playback/sndfilebackend.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr sf_count_t framesAtOnce = 4096;

QIODevice* device(void* input)
{
    return static_cast<QIODevice*>(input);
}

} // namespace

std::unique_ptr<SndfileBackend> SndfileBackend::open(std::unique_ptr<QIODevice> input, int rate, QString* error)
{
    std::unique_ptr<SndfileBackend> decoder(new SndfileBackend);
    decoder->m_input = std::move(input);
    decoder->m_io = {
        [](void* in) -> sf_count_t { return device(in)->size(); },
        [](sf_count_t offset, int whence, void* in) -> sf_count_t {
            const qint64 base = whence == SEEK_CUR ? device(in)->pos() : whence == SEEK_END ? device(in)->size() : 0;
            return device(in)->seek(base + offset) ? device(in)->pos() : -1;
        },
        [](void* out, sf_count_t count, void* in) -> sf_count_t {
            return std::max<sf_count_t>(0, device(in)->read(static_cast<char*>(out), count));
        },
        nullptr,
        [](void* in) -> sf_count_t { return device(in)->pos(); },
    };
    decoder->m_file = sf_open_virtual(&decoder->m_io, SFM_READ, &decoder->m_info, decoder->m_input.get());
    if (!decoder->m_file) {
        *error = QString::fromUtf8(sf_strerror(nullptr));
        return nullptr;
    }
    const SF_INFO& info = decoder->m_info;
    if (info.channels < 1 || info.channels > 2 || !plausibleRate(info.samplerate)) {
        *error = QStringLiteral("Not a mono or stereo file at a plausible rate");
        return nullptr;
    }
    if (!decoder->m_resampler.start(info.samplerate, rate, error))
        return nullptr;
    // The first piece is decoded now, so that a file of noise fails here.
    if (!decoder->decodeMore(decoder->m_held) || decoder->m_held.empty()) {
        *error = decoder->m_fault.isEmpty() ? QStringLiteral("No audio could be decoded") : decoder->m_fault;
        return nullptr;
    }
    return decoder;
}

SndfileBackend::~SndfileBackend()
{
    if (m_file)
        sf_close(m_file);
}

double SndfileBackend::duration() const
{
    return m_info.frames > 0 && m_info.frames != SF_COUNT_MAX ? double(m_info.frames) / m_info.samplerate : 0;
}

bool SndfileBackend::decodeMore(std::vector<float>& out)
{
    if (!m_held.empty()) {
        out.insert(out.end(), m_held.begin(), m_held.end());
        m_held.clear();
        return true;
    }
    m_frames.resize(size_t(framesAtOnce * m_info.channels));
    const sf_count_t count = sf_readf_float(m_file, m_frames.data(), framesAtOnce);
    if (count <= 0) {
        if (sf_error(m_file) != SF_ERR_NO_ERROR)
            m_fault = cannotDecode(decodedTo(), QString::fromUtf8(sf_strerror(m_file)));
        return false;
    }
    m_position += count;
    if (m_info.channels == 1) {
        // Mono goes to both sides at full level, as every player plays it.
        m_frames.resize(size_t(count) * channels);
        for (sf_count_t i = count - 1; i >= 0; --i)
            m_frames[size_t(2 * i)] = m_frames[size_t(2 * i + 1)] = m_frames[size_t(i)];
    }
    m_resampler.append(m_frames.data(), size_t(count), out);
    return true;
}

void SndfileBackend::finish(std::vector<float>& out)
{
    m_resampler.append(nullptr, 0, out);
}

void SndfileBackend::seek(double seconds)
{
    m_fault.clear();
    m_held.clear();
    const sf_count_t frame = std::clamp<sf_count_t>(std::llround(seconds * m_info.samplerate), 0, m_info.frames);
    const sf_count_t reached = sf_seek(m_file, frame, SEEK_SET);
    m_position = reached >= 0 ? reached : m_position;
    m_resampler.clear();
}
