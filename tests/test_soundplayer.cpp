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
    void missingAndUnplayableSoundsAreReported()
    {
        SoundPlayer sounds;
        StdoutCapture output;
        sounds.playSound(QStringLiteral("whistle"));
        sounds.playSound(QStringLiteral("broken"));
        const QStringList lines = output.lines();
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.first(), QStringLiteral("Error: Sound file whistle.m4a not found."));
        const QString prefix = QStringLiteral("Error: Could not play sound file broken. Error: ");
        QVERIFY2(lines.last().startsWith(prefix) && lines.last().size() > prefix.size(), qPrintable(lines.last()));
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
        QFile file(QStringLiteral(":/sounds/") + name + QStringLiteral(".m4a"));
        QString error;
        QVERIFY(file.open(QIODevice::ReadOnly));
        const std::vector<float> samples = AudioDecoder::decodeAll(file.readAll(), 48000, &error);
        const auto isLoud = [](float sample) { return std::abs(sample) > 0.01f; };
        const auto first = std::find_if(samples.begin(), samples.end(), isLoud);
        const auto last = std::find_if(samples.rbegin(), samples.rend(), isLoud);
        QVERIFY(first != samples.end());
        const double loud = double(std::distance(first, last.base())) / 2 / 48000;
        MonitorRecorder recorder(48000);
        QVERIFY(recorder.start());
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
        sounds.playSound(QStringLiteral("click"));
        QTest::qWait(300);
        const double until = recorder.seconds() - recorder.lastSoundBefore(recorder.seconds(), 0.01) - mark;
        QVERIFY2(until < 0.06, qPrintable(QString::number(until)));
        QCOMPARE(output.lines(), QStringList());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestSoundPlayer)
#include "test_soundplayer.moc"
