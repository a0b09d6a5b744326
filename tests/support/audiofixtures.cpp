#include "support/audiofixtures.h"

#include <QDebug>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QStringEncoder>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace AudioFixtures {

namespace {

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// The four bytes of value, most significant first, of bits each: ID3v2.4
// sizes keep the top bit of every byte clear (7), ID3v2.3 frame sizes do not.
QByteArray bigEndian(quint32 value, int bits)
{
    QByteArray bytes(4, '\0');
    for (int i = 3; i >= 0; --i, value >>= bits)
        bytes[i] = char(value & ((1u << bits) - 1));
    return bytes;
}

QByteArray frameBody(const Id3Frame& frame)
{
    // Latin-1, the MIME type, a front cover, an empty description.
    if (frame.id == "APIC")
        return QByteArray("\0image/png\0\3\0", 13) + frame.picture;
    static constexpr QStringConverter::Encoding encodings[] = {QStringConverter::Latin1, QStringConverter::Utf16LE,
                                                               QStringConverter::Utf16BE, QStringConverter::Utf8};
    // Only encoding 1 starts with a byte order mark.
    const auto bom = frame.encoding == Encoding::Utf16 ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default;
    QStringEncoder encoder(encodings[int(frame.encoding)], bom);
    return char(frame.encoding) + QByteArray(encoder.encode(frame.text));
}

} // namespace

bool makeTone(const QString& path, const Tone& tone)
{
    // One sine wave, whatever the offset: t counts from the wave's own start.
    const QString wave = QStringLiteral("0.125*sin(2*PI*%1*(t+%2))").arg(tone.frequency).arg(tone.offset, 0, 'f', 6);
    const QString signal = tone.silentTo > tone.silentFrom
        ? QStringLiteral("if(between(t,%1,%2),0,%3)").arg(tone.silentFrom).arg(tone.silentTo).arg(wave)
        : wave;
    const bool picture = !tone.picturePath.isEmpty(), tagged = picture || !tone.title.isEmpty() || !tone.artist.isEmpty();
    const auto split = [](const QString& options) { return options.split(QLatin1Char(' '), Qt::SkipEmptyParts); };
    QStringList arguments = split(QStringLiteral("-nostdin -y -loglevel error -f lavfi -i aevalsrc='%1':s=44100:d=%2")
                                      .arg(signal).arg(tone.seconds));
    if (picture)
        arguments << QStringLiteral("-i") << tone.picturePath;
    // The suffix's own codec; the bit rate is for the lossy ones. An untagged MP3 has no ID3 tag at all, so that
    // writeId3Tag() controls it; an empty title or artist is no tag.
    arguments << split(QStringLiteral("-map 0:a -map_metadata -1 ") + (tone.variableBitRate ? "-q:a 2" : "-b:a 128k")
                       + (tone.xingHeader ? "" : " -write_xing 0")
                       + (picture ? " -map 1:v -c:v copy -disposition:v attached_pic" : "")
                       + (tagged || !path.endsWith(QLatin1String(".mp3")) ? "" : " -id3v2_version 0"))
              << QStringLiteral("-metadata") << QStringLiteral("title=") + tone.title
              << QStringLiteral("-metadata") << QStringLiteral("artist=") + tone.artist;
    if (QProcess::execute(QStringLiteral("ffmpeg"), arguments << path) == 0)
        return true;
    qWarning() << "makeTone: ffmpeg failed:" << arguments;
    return false;
}

bool makePicture(const QString& path, int width, int height, unsigned rgb)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor::fromRgb(rgb));
    return image.save(path, "PNG");
}

qint64 xingFrameCount(const QByteArray& mp3)
{
    const QByteArray head = mp3.left(200);
    const qsizetype at = std::max(head.indexOf("Xing"), head.indexOf("Info"));
    // The flags, of which the lowest says a count follows.
    return at >= 0 && at + 12 <= head.size() && (head[at + 7] & 1) ? qFromBigEndian<quint32>(head.constData() + at + 8) : -1;
}

QByteArray withVbriHeader(const QByteArray& mp3, quint32 frames)
{
    // The first frame's version, layer, rate and channels at 128 kbit/s, unpadded: 417 bytes, all zero (silence
    // to a decoder that does not know VBRI) but for the VBRI header 32 bytes past the frame's own.
    QByteArray frame = mp3.left(4) + QByteArray(413, '\0');
    frame[2] = char(0x90 | (mp3[2] & 0x0C));
    frame.replace(36, 4, "VBRI");
    frame[41] = 1; // version
    qToBigEndian<quint32>(quint32(mp3.size()), frame.data() + 46);
    qToBigEndian<quint32>(frames, frame.data() + 50);
    return frame + mp3;
}

QByteArray id3Tag(const QList<Id3Frame>& frames, int version, bool extendedHeader)
{
    QByteArray body;
    for (const Id3Frame& frame : frames) {
        const QByteArray data = frameBody(frame);
        // The id, the size, no flags.
        body += frame.id.left(4) + bigEndian(quint32(data.size()), version == 4 ? 7 : 8) + QByteArray(2, '\0') + data;
    }
    // Its size (6, without itself in 2.3) and no flags; in 2.3 also no padding size.
    if (extendedHeader)
        body.prepend(version == 4 ? QByteArray("\0\0\0\6\1\0", 6) : QByteArray("\0\0\0\6\0\0\0\0\0\0", 10));
    else
        body.append(64, '\0'); // a little padding, as taggers leave
    // "ID3", the version, revision 0, the flags, the size.
    return "ID3" + QByteArray(1, char(version)) + QByteArray(1, '\0') + QByteArray(1, extendedHeader ? 0x40 : 0) +
        bigEndian(quint32(body.size()), 7) + body;
}

bool writeId3Tag(const QString& path, const QByteArray& tag)
{
    QFile file(path);
    QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (content.isEmpty())
        return false;
    if (content.startsWith("RIFF") && content.mid(8, 4) == "WAVE") {
        // A RIFF chunk "id3 " at the end, padded to an even size.
        QByteArray size(4, '\0');
        qToLittleEndian(quint32(tag.size()), size.data());
        content += "id3 " + size + tag + QByteArray(tag.size() % 2, '\0');
        qToLittleEndian(quint32(content.size() - 8), content.data() + 4);
    } else {
        content.prepend(tag);
    }
    return writeBytes(path, content);
}

bool writeRandomBytes(const QString& path, int size, unsigned seed)
{
    QList<quint32> words((size + 3) / 4);
    QRandomGenerator(seed).fillRange(words.data(), words.size());
    return writeBytes(path, QByteArray(reinterpret_cast<const char*>(words.constData()), size));
}

MonitorRecorder::~MonitorRecorder()
{
    m_parec.kill();
    m_parec.waitForFinished();
}

bool MonitorRecorder::start()
{
    const QString options = QStringLiteral("--raw --format=s16le --channels=1 --rate=%1 --latency-msec=10 -d").arg(m_rate);
    m_parec.start(QStringLiteral("parec"), options.split(QLatin1Char(' ')) << source());
    // Nothing comes for a second or two; from the first data on, the recording keeps pace with real time.
    if (QTest::qWaitFor([this] { return drain() > 0; }, 15000))
        return true;
    qWarning() << "MonitorRecorder: no data from" << source() << "(run under scripts/testenv):" << m_parec.errorString();
    return false;
}

qsizetype MonitorRecorder::drain()
{
    m_samples += m_parec.readAllStandardOutput();
    return m_samples.size() / 2;
}

double MonitorRecorder::level(double fromSeconds, double toSeconds)
{
    const qsizetype count = drain();
    const qsizetype first = qBound<qsizetype>(0, qsizetype(fromSeconds * m_rate), count);
    return levelOf(first, qBound<qsizetype>(first, qsizetype(toSeconds * m_rate), count));
}

QList<double> MonitorRecorder::levels(double windowSeconds, double fromSeconds)
{
    // Stepped in whole samples: seconds added up would make some windows a
    // sample longer, and a longer window of a tone has another level.
    const qsizetype count = drain(), window = qRound(windowSeconds * m_rate);
    QList<double> result;
    for (qsizetype first = qMax<qsizetype>(0, qRound(fromSeconds * m_rate)); window > 0 && first + window <= count;
         first += window)
        result.append(levelOf(first, first + window));
    return result;
}

double MonitorRecorder::levelOf(qsizetype first, qsizetype last) const
{
    double sum = 0;
    for (qsizetype i = first; i < last; ++i)
        sum += std::pow(loudness(i) / 32768.0, 2);
    return last == first ? 0 : std::sqrt(sum / double(last - first));
}

double MonitorRecorder::firstSoundAfter(double fromSeconds, double threshold)
{
    const qsizetype count = drain();
    for (qsizetype i = qMax<qsizetype>(0, qsizetype(fromSeconds * m_rate)); i < count; ++i) {
        if (loudness(i) > threshold * 32768)
            return double(i) / m_rate - fromSeconds;
    }
    return -1;
}

double MonitorRecorder::lastSoundBefore(double toSeconds, double threshold)
{
    for (qsizetype i = qMin(drain(), qsizetype(toSeconds * m_rate)) - 1; i >= 0; --i) {
        if (loudness(i) > threshold * 32768)
            return toSeconds - double(i) / m_rate;
    }
    return -1;
}

} // namespace AudioFixtures
