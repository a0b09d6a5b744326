#include "playback/mediabackend.h"
#include "playback/soundplayer.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QGuiApplication>
#include <QMediaPlayer>

// The shipped sounds come from the art library; this test binary adds one
// more resource, :/sounds/broken.m4a, which is text and cannot be played.
class TestSoundPlayer : public QObject
{
    Q_OBJECT

private slots:
    // As main() does, before the first multimedia object. The backend then
    // prints its one-time debug chatter here, not into a captured stdout.
    void initTestCase()
    {
        chooseMediaBackend();
        QMediaPlayer warmUp;
    }

    void makingOneCreatesNoMediaObjects();
    void everyShippedSoundPlays_data();
    void everyShippedSoundPlays();
    void missingSoundIsReported();
    void unplayableSoundIsReportedAndThePreviousStays();
    void aNewSoundEndsThePreviousOne();
    void aSoundIsLoadedOnceAndReplayed();
    void soundIsHeard();
};

void TestSoundPlayer::makingOneCreatesNoMediaObjects()
{
    SoundPlayer sounds;
    QVERIFY(sounds.children().isEmpty());
    QCOMPARE(sounds.player(), nullptr);
}

void TestSoundPlayer::everyShippedSoundPlays_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"click", "min", "pop", "drag"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestSoundPlayer::everyShippedSoundPlays()
{
    QFETCH(QString, name);
    SoundPlayer sounds;
    StdoutCapture output;
    sounds.playSound(name);
    QVERIFY(sounds.player());
    QCOMPARE(sounds.player()->source(), QUrl(QStringLiteral("qrc:/sounds/") + name + QStringLiteral(".m4a")));
    QVERIFY(sounds.player()->duration() > 0);
    QTRY_COMPARE(sounds.player()->mediaStatus(), QMediaPlayer::EndOfMedia);
    QCOMPARE(output.lines(), QStringList());
}

void TestSoundPlayer::missingSoundIsReported()
{
    SoundPlayer sounds;
    StdoutCapture output;
    sounds.playSound(QStringLiteral("whistle"));
    QCOMPARE(output.lines(), QStringList{QStringLiteral("Error: Sound file whistle.m4a not found.")});
    QCOMPARE(sounds.player(), nullptr);
}

void TestSoundPlayer::unplayableSoundIsReportedAndThePreviousStays()
{
    SoundPlayer sounds;
    StdoutCapture output;
    sounds.playSound(QStringLiteral("click"));
    QMediaPlayer* click = sounds.player();
    QVERIFY(click);
    sounds.playSound(QStringLiteral("broken"));
    QCOMPARE(sounds.player(), click);
    QTest::qWait(200); // a late error would print a second line
    const QStringList lines = output.lines();
    QCOMPARE(lines.size(), 1);
    const QString prefix = QStringLiteral("Error: Could not play sound file broken. Error: ");
    QVERIFY2(lines.first().startsWith(prefix) && lines.first().size() > prefix.size(), qPrintable(lines.first()));
}

void TestSoundPlayer::aNewSoundEndsThePreviousOne()
{
    SoundPlayer sounds;
    sounds.playSound(QStringLiteral("min"));
    QMediaPlayer* first = sounds.player();
    sounds.playSound(QStringLiteral("drag"));
    QMediaPlayer* second = sounds.player();
    QVERIFY(first && second && first != second);
    QCOMPARE(first->playbackState(), QMediaPlayer::StoppedState);
    QCOMPARE(second->playbackState(), QMediaPlayer::PlayingState);
    QTRY_COMPARE(second->mediaStatus(), QMediaPlayer::EndOfMedia);
    QVERIFY(first->mediaStatus() != QMediaPlayer::EndOfMedia);
}

void TestSoundPlayer::aSoundIsLoadedOnceAndReplayed()
{
    SoundPlayer sounds;
    sounds.playSound(QStringLiteral("pop"));
    QMediaPlayer* pop = sounds.player();
    QTRY_COMPARE(pop->mediaStatus(), QMediaPlayer::EndOfMedia);
    sounds.playSound(QStringLiteral("pop"));
    QCOMPARE(sounds.player(), pop);
    QCOMPARE(pop->playbackState(), QMediaPlayer::PlayingState);
    // A replay while it still sounds starts it again.
    sounds.playSound(QStringLiteral("pop"));
    QCOMPARE(pop->playbackState(), QMediaPlayer::PlayingState);
    QCOMPARE(sounds.findChildren<QMediaPlayer*>().size(), 1);
}

void TestSoundPlayer::soundIsHeard()
{
    using AudioFixtures::MonitorRecorder;
    if (MonitorRecorder::source().isEmpty())
        QSKIP("needs the test desktop's null sink: run under scripts/testenv (PLINK_TEST_MONITOR is unset)");
    MonitorRecorder recorder;
    QVERIFY(recorder.start());
    QTest::qWait(1500);
    SoundPlayer sounds;
    const double before = recorder.seconds();
    QTest::qWait(500);
    QCOMPARE(recorder.firstSoundAfter(before), -1.0);
    // Each sound twice: a replay must sound as full as the first play. (The
    // 40-ms click is too short for the sink's monitor to catch reliably.)
    // Played in full, "min" measures ~0.007 and "drag" ~0.003 over these
    // windows; a lost sound stays under 0.0005.
    for (const char* name : {"min", "drag", "min", "drag"}) {
        const double mark = recorder.seconds();
        sounds.playSound(QString::fromLatin1(name));
        QTest::qWait(800);
        const double level = recorder.level(mark, mark + 0.8);
        QVERIFY2(level > 0.0015, qPrintable(QStringLiteral("%1 measured %2").arg(QLatin1String(name)).arg(level)));
    }
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TestSoundPlayer)
#include "test_soundplayer.moc"
