#pragma once

#include "playback/decoderbackend.h"
#include "playback/resampler.h"

#include <QIODevice>

#include <memory>

#include <mpg123.h>

// MP3 (and MPEG layer I and II) through libmpg123 itself, which libsndfile
// loads anyway. Under libsndfile it printed its complaints about damaged
// frames on standard error, and a file that declares no length was timed by
// its size, tags and cover included. Here it is quiet and sees only the
// audio's bytes: the length is the frame count the file declares (Xing/Info,
// VBRI), or else that of its audio bytes. The LAME header's encoder delay
// and padding are trimmed, so albums join sample for sample.
class Mpg123Backend : public DecoderBackend
{
public:
    // Whether the bytes are MPEG audio: two frames in a row where the ID3v2
    // tags end. The input is left at its start.
    static bool recognises(QIODevice& input);
    // Null if libmpg123 cannot decode it, with the reason in *error.
    static std::unique_ptr<Mpg123Backend> open(std::unique_ptr<QIODevice> input, int rate, QString* error);
    ~Mpg123Backend() override;

    double duration() const override { return m_length > 0 ? double(m_length) / m_fileRate : 0; }
    bool decodeMore(std::vector<float>& out) override;
    void finish(std::vector<float>& out) override { m_resampler.append(nullptr, 0, out); }
    void seek(double seconds) override;
    double decodedTo() const override { return double(m_position) / m_fileRate; }
    QString fault() const override { return m_fault; }

private:
    Mpg123Backend() = default;

    std::unique_ptr<QIODevice> m_input;
    qint64 m_start = 0, m_end = 0; // the audio's bytes, without tags
    mpg123_handle* m_handle = nullptr;
    Resampler m_resampler;
    long m_fileRate = 0;
    qint64 m_length = 0;   // frames; 0 if not known
    qint64 m_position = 0; // frames of the file read so far
    std::vector<float> m_frames;
    std::vector<float> m_held; // the first piece, read by open()
    QString m_fault;
};
