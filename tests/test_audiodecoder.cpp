#include "playback/audiodecoder.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QCoreApplication>

#include <unistd.h>

using namespace AudioFixtures;

namespace {

// An APEv2 tag: header, one item, footer. Each end: version 2000, size 50
// (the item and the footer), 1 item, flags "has a header" (and "is it").
QByteArray apeTag()
{
    const auto end = [](char flags) { return "APETAGEX" + QByteArray("\xd0\7\0\0\x32\0\0\0\1\0\0\0\0\0\0", 15) + flags + QByteArray(8, '\0'); };
    return end('\xa0') + QByteArray("\4\0\0\0\0\0\0\0Title\0Song", 18) + end('\x80');
}

// Tags: a 300-KB cover in front, APE and ID3v1 tags at the end.
struct Mp3 { bool variable, xing, vbri, tags; };

} // namespace

class TestAudioDecoder : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    // An MP3 lasts as long as its audio, however big its tags: what its Xing/Info or VBRI header declares (less the LAME
    // header's delay and padding), or else what its frames hold; decoded at its own 44.1 kHz to the end.
    void mp3LengthIsThatOfItsAudio_data()
    {
        QTest::addColumn<Mp3>("mp3");
        QTest::newRow("CBR, Info header") << Mp3{false, true, false, true};
        QTest::newRow("CBR, no header") << Mp3{false, false, false, true};
        QTest::newRow("VBR, Xing header") << Mp3{true, true, false, false};
        QTest::newRow("VBR, VBRI header") << Mp3{true, false, true, true};
        QTest::newRow("VBR, no header") << Mp3{true, false, false, false};
    }
    void mp3LengthIsThatOfItsAudio()
    {
        QFETCH(Mp3, mp3);
        const auto [variable, xing, vbri, tags] = mp3;
        const QString path = TestEnvironment::documents() + "/tone.mp3";
        Tone tone(3.0);
        tone.variableBitRate = variable;
        QVERIFY(makeTone(path, tone));
        const qint64 frames = xingFrameCount(TestFiles::readFile(path)); // the same frames without the header
        tone.xingHeader = xing;
        QVERIFY(frames > 0 && makeTone(path, tone));
        QByteArray bytes = TestFiles::readFile(path);
        if (vbri)
            bytes = withVbriHeader(bytes, quint32(frames));
        if (tags)
            bytes = id3Tag({pictureFrame(QByteArray(300 * 1024, 'x'))}) + bytes + apeTag() + "TAG" + QByteArray(125, ' ');
        QVERIFY(TestFiles::writeFile(path, bytes));

        // Without a LAME header, every frame plays whole.
        const double expected = xing ? 3.0 : double(frames) * 1152 / 44100;
        QString error;
        const std::unique_ptr<AudioDecoder> decoder = AudioDecoder::openFile(path, 44100, &error);
        QVERIFY2(decoder, qPrintable(error));
        const double length = decoder->duration(), decoded = double(AudioDecoder::decodeAll(bytes, 44100, &error).size()) / 2 / 44100;
        QVERIFY2(qAbs(length - expected) < 0.002 && qAbs(decoded - expected) < 0.002,
                 qPrintable(QStringLiteral("%1 s long, %2 s decoded, %3 s expected").arg(length).arg(decoded).arg(expected)));
    }

    // A damaged MP3 plays up to the damage; the decoder's library prints nothing.
    void damagedMp3EndsQuietly()
    {
        const QString path = TestEnvironment::documents() + "/tone.mp3", noise = TestEnvironment::documents() + "/noise";
        QVERIFY(makeTone(path, Tone(3.0)) && writeRandomBytes(noise, 8000));
        QByteArray mp3 = TestFiles::readFile(path);
        mp3.replace(mp3.size() / 3, 8000, TestFiles::readFile(noise));
        StdoutCapture errors(STDERR_FILENO);
        QString error;
        const double decoded = double(AudioDecoder::decodeAll(mp3, 44100, &error).size()) / 2 / 44100;
        QCOMPARE(errors.text(), QString());
        QVERIFY2(decoded > 0.9 && decoded < 1.1, qPrintable(QString::number(decoded)));
    }
};

PLINK_TEST_MAIN_WITH(QCoreApplication, TestAudioDecoder)
#include "test_audiodecoder.moc"
