#include "playback/mediabackend.h"
#include "playback/soundplayer.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QGuiApplication>
#include <QMediaPlayer>

using AudioFixtures::MonitorRecorder;

// Besides the shipped sounds, this binary has :/sounds/broken.m4a, which is text.
class TestSoundPlayer : public QObject
{
    Q_OBJECT

private slots:
    // As main() does; the backend's one-time chatter then stays out of captured output.
    void initTestCase()
    {
        chooseMediaBackend();
        QMediaPlayer warmUp;
    }

    void missingAndUnplayableSoundsAreReported()
    {
        SoundPlayer sounds;
        StdoutCapture output;
        sounds.playSound(QStringLiteral("whistle"));
        QCOMPARE(sounds.player(), nullptr);
        sounds.playSound(QStringLiteral("click"));
        QMediaPlayer* click = sounds.player();
        sounds.playSound(QStringLiteral("broken"));
        QVERIFY(click && sounds.player() == click); // the one before stays
        QTest::qWait(200); // a late error would print another line
        const QStringList lines = output.lines();
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.first(), QStringLiteral("Error: Sound file whistle.m4a not found."));
        const QString prefix = QStringLiteral("Error: Could not play sound file broken. Error: ");
        QVERIFY2(lines.last().startsWith(prefix) && lines.last().size() > prefix.size(), qPrintable(lines.last()));
    }

    // A new sound stops the one still sounding, and replays sound as full as the first play.
    void oneSoundAtATimeAndHeard()
    {
        if (MonitorRecorder::source().isEmpty())
            QSKIP("needs the test desktop's null sink: run under scripts/testenv");
        MonitorRecorder recorder;
        QVERIFY(recorder.start());
        SoundPlayer sounds;
        StdoutCapture output;
        // Each sound once, to its end: all four load, and each is short.
        for (const char* name : {"drag", "pop", "click", "min"}) {
            sounds.playSound(QString::fromLatin1(name));
            QCOMPARE(sounds.player()->playbackState(), QMediaPlayer::PlayingState);
            QVERIFY2(sounds.player()->duration() > 20 && sounds.player()->duration() < 150, name);
            QTRY_COMPARE(sounds.player()->mediaStatus(), QMediaPlayer::EndOfMedia);
        }
        // Loaded, a replay starts within milliseconds, so "min" is still sounding.
        sounds.playSound(QStringLiteral("min"));
        QMediaPlayer* min = sounds.player();
        sounds.playSound(QStringLiteral("drag"));
        QVERIFY(sounds.player() != min);
        QCOMPARE(min->playbackState(), QMediaPlayer::StoppedState);
        QVERIFY(min->mediaStatus() != QMediaPlayer::EndOfMedia); // cut short, not ended
        QTest::qWait(300);
        // In full, "min" measures ~0.007 and "drag" ~0.003, a lost sound under
        // 0.0005. (The 40-ms click is too short for the monitor to catch.)
        for (const char* name : {"min", "drag", "min", "drag"}) {
            const double mark = recorder.seconds();
            sounds.playSound(QString::fromLatin1(name));
            QTest::qWait(800);
            const double level = recorder.level(mark, mark + 0.8);
            QVERIFY2(level > 0.0015, qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(name)).arg(level)));
        }
        QCOMPARE(output.lines(), QStringList());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestSoundPlayer)
#include "test_soundplayer.moc"
