#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVInputFormat;
struct AVIOContext;
struct AVPacket;
struct SwrContext;

// One audio file decoded with FFmpeg into interleaved stereo float samples at
// the output's rate. Encoder delay and padding that the file declares (MP3's
// LAME header, MP4 edit lists) are trimmed by libavcodec, so tracks cut from
// one recording join sample for sample. Not thread-safe: one thread at a time.
class AudioDecoder
{
public:
    static constexpr int channels = 2;

    // Opens and probes a file by its path, or bytes held in memory, and
    // decodes its first samples, so that a file without playable audio fails
    // here. Null on failure, with the reason in *error.
    static std::unique_ptr<AudioDecoder> openFile(const QString& path, int rate, QString* error);
    static std::unique_ptr<AudioDecoder> openBytes(const QByteArray& bytes, int rate, QString* error);
    // Everything in bytes decoded at once (for short sounds); empty on failure.
    static std::vector<float> decodeAll(const QByteArray& bytes, int rate, QString* error);
    // Keeps FFmpeg's own logging off standard error and its allocations in
    // bounds; once per process, before the first decoder.
    static void configureLibraries();

    ~AudioDecoder();
    AudioDecoder(const AudioDecoder&) = delete;
    AudioDecoder& operator=(const AudioDecoder&) = delete;

    double duration() const { return m_duration; } // seconds, as the file declares it
    int rate() const { return m_rate; }

    // Up to frames frames into out; fewer only once the input is used up.
    // The resampler's last samples stay in it until finish().
    qsizetype read(float* out, qsizetype frames);
    bool inputDone() const { return m_inputDone && !hasHeldFrame() && m_pending.size() == m_pendingRead; }
    // After inputDone(): the resampler's last samples become readable.
    void finish();
    bool atEnd() const { return m_finished && m_pending.size() == m_pendingRead; }

    // Moves to seconds from the start; at or past the end, to the end.
    void seek(double seconds);
    // Why decoding ended early (unreadable data, a file cut short); empty
    // when the file was read to its end.
    QString fault() const { return m_fault; }

private:
    AudioDecoder() = default;
    bool open(const char* url, QString* error, const AVInputFormat* format = nullptr);
    bool setUpResampler(const AVFrame* frame);
    bool hasHeldFrame() const;
    void decodeMore();
    bool nextFrame();
    void convert(const AVFrame* frame);

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
    int m_rate = 48000;
    double m_duration = 0;
    double m_skipTo = -1;      // after a seek: samples before this time are dropped
    double m_decodedTo = 0;    // seconds of the file decoded so far
    std::vector<float> m_pending; // converted, not yet read
    size_t m_pendingRead = 0;
    bool m_inputDone = false;
    bool m_finished = false;
    int m_failuresInARow = 0;
    QString m_fault;
};
