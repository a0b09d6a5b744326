#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QtEndian>

// Audio files made on the spot, and an ear on the test sound server; a failure is a false or empty result.
namespace AudioFixtures {

// A sine tone at -18 dBFS made with ffmpeg, offset seconds into one endless tone (tones at offsets 0, 2, 4 … of 2 s
// each are cuts of one tone, sample for sample), silent from silentFrom to silentTo, in the suffix's container with
// title, artist and picture in its own tags. An untagged .mp3 has no ID3 tag, ready for writeId3Tag(); an .mp3 has
// a Xing/Info header (which holds the encoder's delay and padding) unless told not to.
struct Tone {
    explicit Tone(double length = 2.0) : seconds(length) {}
    Tone(double length, double silenceFrom, double silenceTo) : seconds(length), silentFrom(silenceFrom), silentTo(silenceTo) {}
    double seconds;
    int frequency = 440;
    double offset = 0;
    double silentFrom = 0, silentTo = 0;
    QString title, artist;
    QString picturePath; // a PNG or JPEG embedded as the cover
    bool variableBitRate = false;
    bool xingHeader = true;
};
bool makeTone(const QString& path, const Tone& tone = Tone());

// A solid-colour PNG, for covers.
bool makePicture(const QString& path, int width, int height, unsigned rgb);

// The frame count an MP3's Xing/Info header declares; -1 without one.
qint64 xingFrameCount(const QByteArray& mp3);
// A 44.1-kHz MP3 without a Xing header, with a VBRI header (as Fraunhofer's encoders write) in a frame of its own in front.
QByteArray withVbriHeader(const QByteArray& mp3, quint32 frames);

// A hand-made ID3v2 tag (version 3 or 4; UTF-8 and UTF-16BE exist only in 4), its encoding byte exact; several values
// of a text frame apart by a '\0'. An extended header comes with no padding, so that a reader miscounting it loses
// the last frames.
enum class Encoding : char { Latin1 = 0, Utf16 = 1, Utf16BE = 2, Utf8 = 3 };
struct Id3Frame {
    QByteArray id;
    QString text;
    Encoding encoding = Encoding::Latin1;
    QByteArray picture;
};
inline Id3Frame textFrame(const QByteArray& id, const QString& text, Encoding encoding = Encoding::Latin1) { return {id, text, encoding, {}}; }
inline Id3Frame pictureFrame(const QByteArray& png) { return {"APIC", {}, Encoding::Latin1, png}; }
QByteArray id3Tag(const QList<Id3Frame>& frames, int version = 3, bool extendedHeader = false);
// Puts the tag in front of an MP3 file, or as an "id3 " chunk into a WAV file.
bool writeId3Tag(const QString& path, const QByteArray& tag);

// size bytes of seeded pseudo-random data (not audio, whatever its name).
bool writeRandomBytes(const QString& path, int size, unsigned seed = 1);

// Listens to the test desktop's null sink ($PLINK_TEST_MONITOR), kept awake so that starts and stops time to a few
// milliseconds, as mono 16-bit samples (48 kHz, the sink's own, to time joins). Data arrive through the event loop
// (QTest::qWait); times are seconds into the recording.
class MonitorRecorder
{
public:
    explicit MonitorRecorder(int rate = 8000) : m_rate(rate) {}
    ~MonitorRecorder();
    Q_DISABLE_COPY(MonitorRecorder)

    static QString source() { return qEnvironmentVariable("PLINK_TEST_MONITOR"); } // empty outside the test desktop
    // Returns once the monitor's data flows; false if it does not.
    bool start();
    // So far: taken just before an action, it marks the action's place.
    double seconds() { return double(drain()) / m_rate; }
    // RMS level (0 … 1 of full scale) over [fromSeconds, toSeconds), and of each whole window from fromSeconds on.
    double level(double fromSeconds, double toSeconds);
    QList<double> levels(double windowSeconds, double fromSeconds = 0);
    // Seconds from fromSeconds to the first sample above threshold (-1: none); lastSoundBefore likewise back from toSeconds.
    double firstSoundAfter(double fromSeconds, double threshold = 0.02);
    double lastSoundBefore(double toSeconds, double threshold = 0.02);

private:
    qsizetype drain(); // the samples recorded so far
    double levelOf(qsizetype first, qsizetype last) const;
    int loudness(qsizetype index) const { return qAbs(qFromLittleEndian<qint16>(m_samples.constData() + 2 * index)); }

    int m_rate;
    QProcess m_parec;
    QByteArray m_samples; // s16le mono
};

} // namespace AudioFixtures
