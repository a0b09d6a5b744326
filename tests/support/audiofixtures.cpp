#include "support/audiofixtures.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRandomGenerator>
#include <QStringList>
#include <QtEndian>

#include <cmath>

namespace AudioFixtures {

namespace {

bool runTool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForStarted(10000)) {
        qWarning() << program << "did not start:" << process.errorString();
        return false;
    }
    process.waitForFinished(60000);
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qWarning().noquote() << program << arguments.join(QLatin1Char(' ')) << "failed:\n"
                             << QString::fromLocal8Bit(process.readAll().right(2000));
        return false;
    }
    return true;
}

QStringList codecArguments(const QString& suffix, bool tagged)
{
    if (suffix == QLatin1String("mp3")) {
        // No tag at all unless asked for, so that writeId3Tag() controls it.
        return {QStringLiteral("-c:a"), QStringLiteral("libmp3lame"), QStringLiteral("-b:a"),
                QStringLiteral("128k"), QStringLiteral("-id3v2_version"),
                tagged ? QStringLiteral("4") : QStringLiteral("0")};
    }
    if (suffix == QLatin1String("flac"))
        return {QStringLiteral("-c:a"), QStringLiteral("flac")};
    if (suffix == QLatin1String("ogg"))
        return {QStringLiteral("-c:a"), QStringLiteral("libvorbis")};
    if (suffix == QLatin1String("opus"))
        return {QStringLiteral("-c:a"), QStringLiteral("libopus"), QStringLiteral("-ar"), QStringLiteral("48000")};
    if (suffix == QLatin1String("m4a"))
        return {QStringLiteral("-c:a"), QStringLiteral("aac"), QStringLiteral("-b:a"), QStringLiteral("128k")};
    if (suffix == QLatin1String("wav"))
        return {QStringLiteral("-c:a"), QStringLiteral("pcm_s16le")};
    return {};
}

QByteArray syncSafe(quint32 value)
{
    QByteArray bytes(4, '\0');
    for (int i = 3; i >= 0; --i) {
        bytes[i] = char(value & 0x7f);
        value >>= 7;
    }
    return bytes;
}

QByteArray bigEndian32(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray encodedText(const QString& text, Encoding encoding)
{
    switch (encoding) {
    case Encoding::Latin1:
        return text.toLatin1();
    case Encoding::Utf16: {
        QByteArray bytes("\xff\xfe", 2); // little-endian with its byte order mark
        for (const QChar c : text) {
            bytes.append(char(c.unicode() & 0xff));
            bytes.append(char(c.unicode() >> 8));
        }
        return bytes;
    }
    case Encoding::Utf16BE: {
        QByteArray bytes;
        for (const QChar c : text) {
            bytes.append(char(c.unicode() >> 8));
            bytes.append(char(c.unicode() & 0xff));
        }
        return bytes;
    }
    case Encoding::Utf8:
        return text.toUtf8();
    }
    return {};
}

QByteArray frameBody(const Id3Frame& frame)
{
    QByteArray body;
    if (frame.id == "APIC") {
        body.append('\0'); // Latin-1 description
        body.append("image/png");
        body.append('\0');
        body.append(char(3)); // front cover
        body.append('\0');    // empty description
        body.append(frame.picture);
        return body;
    }
    body.append(char(frame.encoding));
    body.append(encodedText(frame.text, frame.encoding));
    return body;
}

} // namespace

bool makeTone(const QString& path, const Tone& tone)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool tagged = !tone.title.isEmpty() || !tone.artist.isEmpty() || !tone.picturePath.isEmpty();
    const QStringList codec = codecArguments(suffix, tagged);
    if (codec.isEmpty()) {
        qWarning() << "makeTone: no codec for" << path;
        return false;
    }
    // One sine wave, whatever the offset: t counts from the wave's own start.
    const QString wave = QStringLiteral("0.125*sin(2*PI*%1*(t+%2))").arg(tone.frequency).arg(tone.offset, 0, 'f', 6);
    const QString signal = tone.silentTo > tone.silentFrom
        ? QStringLiteral("if(between(t,%1,%2),0,%3)").arg(tone.silentFrom).arg(tone.silentTo).arg(wave)
        : wave;
    QStringList arguments{QStringLiteral("-nostdin"), QStringLiteral("-y"), QStringLiteral("-loglevel"),
                          QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                          QStringLiteral("-i"),
                          QStringLiteral("aevalsrc='%1':s=44100:d=%2").arg(signal).arg(tone.seconds)};
    if (!tone.picturePath.isEmpty())
        arguments << QStringLiteral("-i") << tone.picturePath;
    arguments << QStringLiteral("-map") << QStringLiteral("0:a");
    if (!tone.picturePath.isEmpty()) {
        arguments << QStringLiteral("-map") << QStringLiteral("1:v") << QStringLiteral("-c:v")
                  << QStringLiteral("copy") << QStringLiteral("-disposition:v")
                  << QStringLiteral("attached_pic");
    }
    arguments << QStringLiteral("-map_metadata") << QStringLiteral("-1") << codec;
    if (!tone.title.isEmpty())
        arguments << QStringLiteral("-metadata") << QStringLiteral("title=") + tone.title;
    if (!tone.artist.isEmpty())
        arguments << QStringLiteral("-metadata") << QStringLiteral("artist=") + tone.artist;
    arguments << path;
    return runTool(QStringLiteral("ffmpeg"), arguments);
}

bool makePicture(const QString& path, int width, int height, unsigned rgb)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor::fromRgb(rgb));
    if (!image.save(path, "PNG")) {
        qWarning() << "makePicture: cannot write" << path;
        return false;
    }
    return true;
}

Id3Frame textFrame(const QByteArray& id, const QString& text, Encoding encoding)
{
    return Id3Frame{id, text, encoding, {}};
}

Id3Frame pictureFrame(const QByteArray& png)
{
    return Id3Frame{"APIC", {}, Encoding::Latin1, png};
}

QByteArray id3Tag(const QList<Id3Frame>& frames, int version)
{
    QByteArray body;
    for (const Id3Frame& frame : frames) {
        const QByteArray data = frameBody(frame);
        body.append(frame.id.left(4));
        body.append(version == 4 ? syncSafe(quint32(data.size())) : bigEndian32(quint32(data.size())));
        body.append(2, '\0'); // no frame flags
        body.append(data);
    }
    body.append(64, '\0'); // a little padding, as taggers leave
    QByteArray tag("ID3");
    tag.append(char(version));
    tag.append('\0'); // revision
    tag.append('\0'); // no flags
    tag.append(syncSafe(quint32(body.size())));
    return tag + body;
}

bool writeId3Tag(const QString& path, const QByteArray& tag)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning() << "writeId3Tag: cannot read" << path;
        return false;
    }
    QByteArray content = file.readAll();
    file.close();
    if (content.startsWith("RIFF") && content.mid(8, 4) == "WAVE") {
        // A RIFF chunk "id3 " at the end, padded to an even size.
        QByteArray chunk("id3 ");
        QByteArray size(4, '\0');
        qToLittleEndian(quint32(tag.size()), size.data());
        chunk += size + tag;
        if (tag.size() % 2)
            chunk.append('\0');
        content += chunk;
        qToLittleEndian(quint32(content.size() - 8), content.data() + 4);
    } else {
        content.prepend(tag);
    }
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(content) != content.size()) {
        qWarning() << "writeId3Tag: cannot write" << path;
        return false;
    }
    return true;
}

bool writeRandomBytes(const QString& path, int size, unsigned seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (char& byte : bytes)
        byte = char(random.bounded(256));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != size) {
        qWarning() << "writeRandomBytes: cannot write" << path;
        return false;
    }
    return true;
}

MonitorRecorder::~MonitorRecorder()
{
    stop();
}

QString MonitorRecorder::source()
{
    return qEnvironmentVariable("PLINK_TEST_MONITOR");
}

bool MonitorRecorder::start()
{
    if (source().isEmpty()) {
        qWarning() << "MonitorRecorder: PLINK_TEST_MONITOR is not set (run under scripts/testenv)";
        return false;
    }
    m_samples.clear();
    m_parec.start(QStringLiteral("parec"),
                  {QStringLiteral("-d"), source(), QStringLiteral("--raw"), QStringLiteral("--format=s16le"),
                   QStringLiteral("--channels=1"), QStringLiteral("--rate=%1").arg(m_rate),
                   QStringLiteral("--latency-msec=10")});
    if (!m_parec.waitForStarted(5000)) {
        qWarning() << "MonitorRecorder: parec did not start:" << m_parec.errorString();
        return false;
    }
    // The monitor sends nothing for the first second or two (about 1.8 s
    // here); from its first data on, the recording keeps pace with real time.
    // Waiting for that data gives callers a timeline they can mark.
    QElapsedTimer waited;
    waited.start();
    while (m_samples.isEmpty() && waited.elapsed() < 15000) {
        m_parec.waitForReadyRead(100);
        drain();
    }
    if (m_samples.isEmpty()) {
        qWarning() << "MonitorRecorder: the monitor sent no data within 15 s";
        return false;
    }
    return true;
}

void MonitorRecorder::stop()
{
    if (m_parec.state() == QProcess::NotRunning)
        return;
    drain();
    m_parec.terminate();
    if (!m_parec.waitForFinished(3000))
        m_parec.kill();
    m_parec.waitForFinished(1000);
}

void MonitorRecorder::drain()
{
    m_samples += m_parec.readAllStandardOutput();
}

double MonitorRecorder::seconds()
{
    drain();
    return double(m_samples.size() / 2) / m_rate;
}

double MonitorRecorder::level(double fromSeconds, double toSeconds)
{
    drain();
    const qsizetype count = m_samples.size() / 2;
    const qsizetype first = qBound<qsizetype>(0, qsizetype(fromSeconds * m_rate), count);
    const qsizetype last = qBound<qsizetype>(first, qsizetype(toSeconds * m_rate), count);
    if (last == first)
        return 0;
    double sum = 0;
    for (qsizetype i = first; i < last; ++i) {
        const double sample = qFromLittleEndian<qint16>(m_samples.constData() + 2 * i) / 32768.0;
        sum += sample * sample;
    }
    return std::sqrt(sum / double(last - first));
}

QList<double> MonitorRecorder::levels(double windowSeconds, double fromSeconds)
{
    QList<double> result;
    const double end = seconds();
    for (double from = fromSeconds; from + windowSeconds <= end + 1e-9; from += windowSeconds)
        result.append(level(from, from + windowSeconds));
    return result;
}

double MonitorRecorder::firstSoundAfter(double fromSeconds, double threshold)
{
    drain();
    const qsizetype count = m_samples.size() / 2;
    const qint16 limit = qint16(threshold * 32768);
    for (qsizetype i = qMax<qsizetype>(0, qsizetype(fromSeconds * m_rate)); i < count; ++i) {
        if (std::abs(qFromLittleEndian<qint16>(m_samples.constData() + 2 * i)) > limit)
            return double(i) / m_rate - fromSeconds;
    }
    return -1;
}

double MonitorRecorder::lastSoundBefore(double toSeconds, double threshold)
{
    drain();
    const qint16 limit = qint16(threshold * 32768);
    for (qsizetype i = qMin<qsizetype>(m_samples.size() / 2, qsizetype(toSeconds * m_rate)) - 1; i >= 0; --i) {
        if (std::abs(qFromLittleEndian<qint16>(m_samples.constData() + 2 * i)) > limit)
            return toSeconds - double(i) / m_rate;
    }
    return -1;
}

} // namespace AudioFixtures
