#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>

// Audio files for tests, made on the spot, and an ear on the test sound
// server. Everything here reports a failure with qWarning and a false/empty
// result, so that a test can QVERIFY it.
namespace AudioFixtures {

// A sine tone at -18 dBFS made with ffmpeg, from offset seconds into one
// endless tone (so that tones with offsets 0, 2, 4 … of 2 s each are cuts of
// one tone, sample for sample), silent from silentFrom to silentTo. The
// container and codec follow the suffix of the path (.mp3 .flac .ogg .opus .m4a .wav). title/artist/picture go into the
// container's own tags (MP4 atoms for .m4a, Vorbis comments for .flac/.ogg,
// ID3v2.4 for .mp3); leave them empty for an untagged file. An .mp3 made
// without tags has no ID3 tag at all, ready for writeId3Tag().
struct Tone {
    explicit Tone(double length = 2.0) : seconds(length) {}
    double seconds;
    int frequency = 440;
    double offset = 0;
    double silentFrom = 0, silentTo = 0;
    QString title;
    QString artist;
    QString picturePath; // a PNG or JPEG embedded as the cover
};
bool makeTone(const QString& path, const Tone& tone = Tone());

// A solid-colour PNG of the given size, for covers.
bool makePicture(const QString& path, int width, int height, unsigned rgb);

// One frame of a hand-made ID3v2 tag, so that tests control the text
// encoding byte exactly. A text frame ("TIT2", "TPE1", ...) holds text; an
// "APIC" frame holds picture bytes (mime type image/png) and ignores text.
enum class Encoding : char { Latin1 = 0, Utf16 = 1, Utf16BE = 2, Utf8 = 3 };
struct Id3Frame {
    QByteArray id;
    QString text;
    Encoding encoding = Encoding::Latin1;
    QByteArray picture;
};
Id3Frame textFrame(const QByteArray& id, const QString& text, Encoding encoding = Encoding::Latin1);
Id3Frame pictureFrame(const QByteArray& png);
// version 3 or 4 (UTF-8 and UTF-16BE exist only in 4).
QByteArray id3Tag(const QList<Id3Frame>& frames, int version = 3);
// Puts the tag in front of an MP3 file, or as an "id3 " chunk into a WAV file.
bool writeId3Tag(const QString& path, const QByteArray& tag);

// size bytes of seeded pseudo-random data (not audio, whatever its name).
bool writeRandomBytes(const QString& path, int size, unsigned seed = 1);

// Listens to the test desktop's null sink through its monitor source
// ($PLINK_TEST_MONITOR, set by scripts/testenv) with parec, as mono 16-bit
// samples at 8 kHz, or at the sink's full rate to time joins. The test
// desktop keeps the sink awake, so that starts and stops can be timed to a
// few milliseconds.
// Recorded data arrive through the event loop (QTest::qWait).
class MonitorRecorder
{
public:
    explicit MonitorRecorder(int rate = sampleRate) : m_rate(rate) {}
    ~MonitorRecorder();
    MonitorRecorder(const MonitorRecorder&) = delete;
    MonitorRecorder& operator=(const MonitorRecorder&) = delete;

    // Empty when not running under the test desktop.
    static QString source();
    static constexpr int sampleRate = 8000;

    // Starts recording and returns once the monitor's data flows; false (with
    // a warning) if there is no monitor or it sends nothing.
    bool start();
    void stop();

    // Seconds recorded so far; taken just before an action, it marks the
    // action's place in the recording.
    double seconds();
    // RMS level (0 … 1 of full scale) of each whole window of windowSeconds,
    // from fromSeconds on.
    QList<double> levels(double windowSeconds, double fromSeconds = 0);
    // Seconds from fromSeconds to the first sample louder than threshold
    // (0 … 1), or -1 if none came; lastSoundBefore likewise backwards.
    double firstSoundAfter(double fromSeconds, double threshold = 0.02);
    double lastSoundBefore(double toSeconds, double threshold = 0.02);
    // RMS level over [fromSeconds, toSeconds).
    double level(double fromSeconds, double toSeconds);

private:
    void drain();

    int m_rate;
    QProcess m_parec;
    QByteArray m_samples; // s16le mono
};

} // namespace AudioFixtures
