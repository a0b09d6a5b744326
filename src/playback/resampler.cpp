#include "playback/resampler.h"

#include <cmath>

namespace {
constexpr int channels = 2;
}

Resampler::~Resampler()
{
    soxr_delete(m_soxr);
}

bool Resampler::start(int fromRate, int toRate, QString* error)
{
    m_from = fromRate;
    m_to = toRate;
    if (fromRate == toRate)
        return true;
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_error_t failure = nullptr;
    m_soxr = soxr_create(fromRate, toRate, channels, &failure, &io, &quality, nullptr);
    if (failure)
        *error = QString::fromUtf8(failure);
    return !failure;
}

void Resampler::append(const float* frames, size_t count, std::vector<float>& out)
{
    if (!m_soxr) {
        if (frames)
            out.insert(out.end(), frames, frames + count * channels);
        return;
    }
    for (;;) {
        const size_t room = size_t(std::ceil(double(count) * m_to / m_from)) + 64;
        const size_t old = out.size();
        out.resize(old + room * channels);
        size_t used = 0, made = 0;
        soxr_process(m_soxr, frames, count, &used, out.data() + old, room, &made);
        out.resize(old + made * channels);
        // Flushing (no frames) goes on until the resampler has nothing left.
        if (frames ? used >= count : made == 0)
            return;
        frames += used * channels;
        count -= used;
    }
}

void Resampler::clear()
{
    if (m_soxr)
        soxr_clear(m_soxr);
}
