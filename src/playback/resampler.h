#pragma once

#include <QString>

#include <vector>

#include <soxr.h>

// Interleaved stereo float from a file's rate to the output's, through
// libsoxr; copied as it is when the two rates are the same.
class Resampler
{
public:
    Resampler() = default;
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    // False, with libsoxr's reason in *error, if it cannot convert.
    bool start(int fromRate, int toRate, QString* error);
    // count frames onto out; null frames (after the last) flush what is held.
    void append(const float* frames, size_t count, std::vector<float>& out);
    void clear(); // forgets what is held, as after a seek

private:
    soxr_t m_soxr = nullptr; // none when the rates are the same
    int m_from = 0;
    int m_to = 0;
};
