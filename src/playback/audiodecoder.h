#pragma once

#include "playback/decoderbackend.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

// One audio file decoded into interleaved stereo float samples at the
// output's rate, by libmpg123 or libsndfile where they open it, otherwise by
// FFmpeg, whose module is loaded only while such a file is open (Debian's
// FFmpeg maps some 90 libraries, about 20 MiB). Not thread-safe: one thread
// at a time.
class AudioDecoder
{
public:
    static constexpr int channels = DecoderBackend::channels;

    // Opens a file by its path, or bytes held in memory, and decodes its
    // first samples, so that a file without playable audio fails here. Null
    // on failure, with the reason in *error.
    static std::unique_ptr<AudioDecoder> openFile(const QString& path, int rate, QString* error);
    static std::unique_ptr<AudioDecoder> openBytes(const QByteArray& bytes, int rate, QString* error);
    // Everything in bytes decoded at once (for short sounds); empty on failure.
    static std::vector<float> decodeAll(const QByteArray& bytes, int rate, QString* error);

    ~AudioDecoder();
    AudioDecoder(const AudioDecoder&) = delete;
    AudioDecoder& operator=(const AudioDecoder&) = delete;

    double duration() const { return m_backend->duration(); } // seconds, as the file declares it
    int rate() const { return m_rate; }

    // Up to frames frames into out; fewer only once the input is used up.
    // The resampler's last samples stay in it until finish().
    qsizetype read(float* out, qsizetype frames);
    bool inputDone() const { return m_inputDone && m_pending.size() == m_pendingRead; }
    // After inputDone(): the resampler's last samples become readable.
    void finish();
    bool atEnd() const { return m_finished && m_pending.size() == m_pendingRead; }

    // Moves to seconds from the start; at or past the end, to the end.
    void seek(double seconds);
    // Why decoding ended early (unreadable data, a file cut short); empty
    // when the file was read to its end.
    QString fault() const { return m_fault; }

private:
    static std::unique_ptr<AudioDecoder> open(const QString* path, const QByteArray* bytes, int rate, QString* error);
    AudioDecoder(std::shared_ptr<void> module, DecoderBackend* backend, int rate);

    std::shared_ptr<void> m_module; // outlives m_backend, whose code may be in it
    std::unique_ptr<DecoderBackend> m_backend;
    int m_rate;
    std::vector<float> m_pending; // decoded, not yet read
    size_t m_pendingRead = 0;
    bool m_inputDone = false;
    bool m_finished = false;
    QString m_fault;
};
