#include "playback/audiodecoder.h"
#include "playback/soundplayer.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QFile>
#include <QGuiApplication>

#include <algorithm>
#include <cmath>

using AudioFixtures::MonitorRecorder;

// Besides the shipped sounds, this binary has :/sounds/broken.m4a, which is text.
class TestSoundPlayer : public QObject
{
    Q_OBJECT

private slots:
    // A sound that cannot be played is reported at every press.
    void missingAndUnplayableSoundsAreReported()
    {
        SoundPlayer sounds;
        StdoutCapture output;
        for (const char* name : {"whistle", "broken", "broken"})
            sounds.playSound(QString::fromLatin1(name));
        const QStringList lines = output.lines();
        const QString broken = "Error: Could not play sound file broken. Error: ";
        QVERIFY2(lines.size() == 3 && lines[0] == "Error: Sound file whistle.m4a not found." && lines[1] == lines[2] &&
                     lines[1].startsWith(broken) && lines[1].size() > broken.size(),
                 qPrintable(lines.join('\n')));
    }

    // Every press is heard in full, as loud as the file holds it (above 1 %)
    // and within 30 ms; a new sound cuts the one still sounding short.
    void everyPressIsHeardAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"click", "min", "pop", "drag"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void everyPressIsHeardAtOnce()
    {
        if (MonitorRecorder::source().isEmpty())
            QSKIP("needs the test desktop's null sink: run under scripts/testenv");
        QFETCH(QString, name);
        QFile file(":/sounds/" + name + ".m4a");
        QString error;
        QVERIFY(file.open(QIODevice::ReadOnly));
        const std::vector<float> samples = AudioDecoder::decodeAll(file.readAll(), 48000, &error);
        const auto isLoud = [](float sample) { return std::abs(sample) > 0.01f; };
        const auto first = std::find_if(samples.begin(), samples.end(), isLoud);
        const auto last = std::find_if(samples.rbegin(), samples.rend(), isLoud);
        const double loud = double(std::distance(first, last.base())) / 2 / 48000; // stereo frames
        MonitorRecorder recorder(48000);
        QVERIFY(loud > 0 && recorder.start());
        SoundPlayer sounds;
        StdoutCapture output;
        for (int press = 0; press < 6; ++press) {
            const double mark = recorder.seconds();
            sounds.playSound(name);
            QTest::qWait(200);
            const double from = recorder.firstSoundAfter(mark, 0.01);
            const double until = recorder.seconds() - recorder.lastSoundBefore(recorder.seconds(), 0.01) - mark;
            QVERIFY2(from >= 0 && from < 0.03 && qAbs(until - from - loud) < 0.003,
                     qPrintable(QStringLiteral("press %1: from %2 s until %3 s").arg(press).arg(from).arg(until)));
        }
        // Cut by a click 20 ms in: nothing sounds after the click.
        const double mark = recorder.seconds();
        sounds.playSound(name);
        QTest::qWait(20);
        sounds.playSound("click");
        QTest::qWait(300);
        const double until = recorder.seconds() - recorder.lastSoundBefore(recorder.seconds(), 0.01) - mark;
        QVERIFY2(until < 0.06, qPrintable(QString::number(until)));
        QCOMPARE(output.lines(), QStringList());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestSoundPlayer)
#include "test_soundplayer.moc"
