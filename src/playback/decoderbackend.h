#pragma once

#include <QString>

#include <vector>

// One way of decoding a file, behind AudioDecoder: libmpg123, libsndfile, or
// FFmpeg in its own loadable module. What it gives is interleaved stereo float at the
// output rate it was opened for.
class DecoderBackend
{
public:
    static constexpr int channels = 2;

    virtual ~DecoderBackend() = default;

    virtual double duration() const = 0; // seconds, as the file declares it; 0 if it does not
    // Appends the next piece of the file to out; false once the input is used up.
    virtual bool decodeMore(std::vector<float>& out) = 0;
    // After the input is used up: the resampler's last samples.
    virtual void finish(std::vector<float>& out) = 0;
    virtual void seek(double seconds) = 0; // within the file's length
    virtual double decodedTo() const = 0;  // seconds of the file decoded so far
    // Why decoding ended early (unreadable data); empty if it did not.
    virtual QString fault() const = 0;

    // Rates no audio has; a resampler built for one takes minutes (found by fuzzing).
    static bool plausibleRate(long long rate) { return rate >= 1000 && rate <= 768000; }
    static QString cannotDecode(double after, const QString& why)
    {
        return QStringLiteral("The file cannot be decoded after %1 s: %2").arg(QString::number(after, 'f', 1), why);
    }
};

// The FFmpeg module's one entry point: a file by its path (path), or bytes in
// memory (bytes). Null on failure, with the reason in *error.
extern "C" DecoderBackend* plinkOpenWithFfmpeg(const char* path, const QByteArray* bytes, int rate, QString* error);
