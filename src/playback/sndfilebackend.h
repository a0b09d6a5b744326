#pragma once

#include "playback/decoderbackend.h"
#include "playback/resampler.h"

#include <QIODevice>

#include <memory>

#include <sndfile.h>

// WAV, AIFF, FLAC, Ogg Vorbis and Opus through libsndfile, which the sound
// server's client library loads anyway: most files play without FFmpeg in
// the process. (MP3 goes to Mpg123Backend; libsndfile gets only what that
// does not recognise.) Other rates than the output's go through libsoxr.
class SndfileBackend : public DecoderBackend
{
public:
    // Null if libsndfile does not take the file, with its reason in *error.
    // Files of more than two channels are left to FFmpeg, which mixes them
    // down by their channel layout.
    static std::unique_ptr<SndfileBackend> open(std::unique_ptr<QIODevice> input, int rate, QString* error);
    ~SndfileBackend() override;

    double duration() const override;
    bool decodeMore(std::vector<float>& out) override;
    void finish(std::vector<float>& out) override;
    void seek(double seconds) override;
    double decodedTo() const override { return double(m_position) / m_info.samplerate; }
    QString fault() const override { return m_fault; }

private:
    SndfileBackend() = default;

    std::unique_ptr<QIODevice> m_input;
    SF_VIRTUAL_IO m_io{};
    SF_INFO m_info{};
    SNDFILE* m_file = nullptr;
    Resampler m_resampler;
    sf_count_t m_position = 0; // frames of the file read so far
    std::vector<float> m_frames;
    std::vector<float> m_held; // the first piece, read by open()
    QString m_fault;
};
