#include "playback/audioplayer.h"
#include "playback/mediabackend.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QFile>
#include <QGuiApplication>
#include <QMediaPlayer>
#include <QSignalSpy>

using namespace AudioFixtures;

namespace {

QString fixture(const QString& name)
{
    return TestEnvironment::documents() + QLatin1Char('/') + name;
}

QString tone(const QString& name, double seconds = 3.0, const QString& picturePath = {})
{
    Tone spec(seconds);
    spec.picturePath = picturePath;
    const QString path = fixture(name);
    return makeTone(path, spec) ? path : QString();
}

QString picture(const QString& name, unsigned rgb)
{
    const QString path = fixture(name);
    return makePicture(path, 32, 32, rgb) ? path : QString();
}

QUrl url(const QString& path)
{
    return QUrl::fromLocalFile(path);
}

} // namespace

class TestAudioPlayer : public QObject
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
    void init() { TestEnvironment::wipeHome(); }

    void soundComesOutWhilePlayingAndStopsOnPause();
    void playsEveryFormat_data();
    void playsEveryFormat();
    void seekIsClampedAndShownAtOnce_data();
    void seekIsClampedAndShownAtOnce();
    void sameFileResumesWithoutReloading();
    void pauseKeepsTheTimerAndTicksStayQuiet();
    void stopRewindsAndEndsTheTimer();
    void naturalEndCallsOnTrackFinished();
    void missingFileChangesNothing();
    void unplayableFileIsRefusedAndKeepsThePreviousTrack();
    void corruptFileFailsInsteadOfFinishing();
    void autoAdvanceThroughBrokenFilesStops();
    void latePictureOfAnotherFileIsDropped();
    void fileDeletedWhilePlayingIsSurvived();
};

void TestAudioPlayer::soundComesOutWhilePlayingAndStopsOnPause()
{
    if (MonitorRecorder::source().isEmpty())
        QSKIP("needs the test desktop's null sink: run under scripts/testenv (PLINK_TEST_MONITOR is unset)");
    const QString path = tone(QStringLiteral("tone.mp3"), 8.0);
    QVERIFY(!path.isEmpty());
    MonitorRecorder recorder;
    QVERIFY(recorder.start());
    QTest::qWait(1500); // the monitor's data starts flowing

    const double silentFrom = recorder.seconds();
    QTest::qWait(1000);
    AudioPlayer player;
    const double playFrom = recorder.seconds();
    QVERIFY(!player.play(url(path)));
    QTest::qWait(2500);
    player.pause();
    const double pauseFrom = recorder.seconds();
    QTest::qWait(2500);

    // Levels of a tone at -18 dBFS (RMS ~0.09), with half a second left at
    // each change for the sound server's buffers.
    QVERIFY2(recorder.level(silentFrom, playFrom) < 0.005, "the sink was not silent before playing");
    const double playing = recorder.level(playFrom + 0.5, pauseFrom);
    QVERIFY2(playing > 0.04, qPrintable(QStringLiteral("too quiet while playing: %1").arg(playing)));
    const double paused = recorder.level(pauseFrom + 0.5, recorder.seconds());
    QVERIFY2(paused < 0.005, qPrintable(QStringLiteral("sound after pause: %1").arg(paused)));
}

void TestAudioPlayer::playsEveryFormat_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"tone.mp3", "tone.flac", "tone.ogg", "tone.opus", "tone.m4a", "tone.wav"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestAudioPlayer::playsEveryFormat()
{
    QFETCH(QString, name);
    const QString path = tone(name, 2.0);
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    QSignalSpy durations(&player, &AudioPlayer::durationChanged);
    StdoutCapture output;
    QVERIFY(!player.play(url(path)));
    QVERIFY(player.isPlaying());
    QVERIFY(player.hasTimer());
    QTRY_VERIFY(qAbs(player.duration() - 2.0) < 0.1);
    QTRY_VERIFY_WITH_TIMEOUT(player.progress() > 0.2, 3000);
    QVERIFY(player.isPlaying());
    QVERIFY(!durations.isEmpty());
    QCOMPARE(output.lines(), QStringList());
}

void TestAudioPlayer::seekIsClampedAndShownAtOnce_data()
{
    QTest::addColumn<double>("fraction");
    QTest::addColumn<double>("expected");
    QTest::newRow("past the end") << 1.5 << 1.0;
    QTest::newRow("before the start") << -0.2 << 0.0;
    QTest::newRow("middle") << 0.5 << 0.5;
}

void TestAudioPlayer::seekIsClampedAndShownAtOnce()
{
    QFETCH(double, fraction);
    QFETCH(double, expected);
    AudioPlayer player;
    player.seek(fraction); // nothing open: no effect
    QCOMPARE(player.progress(), 0.0);

    const QString path = tone(QStringLiteral("tone.mp3"), 4.0);
    QVERIFY(!path.isEmpty());
    QVERIFY(!player.play(url(path)));
    QTest::qWait(300);
    player.seek(0.25); // while playing
    player.tick();
    QVERIFY2(qAbs(player.progress() - 0.25) < 0.03, qPrintable(QString::number(player.progress())));
    player.pause();
    player.seek(fraction);
    QCOMPARE(player.progress(), expected);
    QTRY_VERIFY(qAbs(double(player.player()->position()) - expected * 4000) < 100);
    // The next tick does not pull the scrub bar back to where it was.
    player.tick();
    QVERIFY(qAbs(player.progress() - expected) < 0.03);
}

void TestAudioPlayer::sameFileResumesWithoutReloading()
{
    const QString path = tone(QStringLiteral("tone.mp3"), 4.0, picture(QStringLiteral("cover.png"), 0x00ff00));
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    QVERIFY(!player.play(url(path)));
    QTRY_VERIFY(!player.albumArt().isNull());
    QTRY_VERIFY(player.progress() > 0.1);
    player.pause();
    const QMediaPlayer* opened = player.player();
    const qint64 position = opened->position();

    QSignalSpy players(&player, &AudioPlayer::playerChanged);
    QSignalSpy durations(&player, &AudioPlayer::durationChanged);
    QSignalSpy pictures(&player, &AudioPlayer::albumArtChanged);
    // The same file, once as a plain path without a scheme.
    QVERIFY(!player.play(QUrl(path)));
    QVERIFY(player.isPlaying());
    QCOMPARE(player.player(), opened);
    QVERIFY(player.player()->position() >= position);
    QTRY_VERIFY(player.player()->position() > position + 200);
    QCOMPARE(players.count(), 0);
    QCOMPARE(durations.count(), 0);
    QCOMPARE(pictures.count(), 0);
    QVERIFY(!player.albumArt().isNull());
}

void TestAudioPlayer::pauseKeepsTheTimerAndTicksStayQuiet()
{
    const QString path = tone(QStringLiteral("tone.mp3"), 4.0);
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    QVERIFY(!player.play(url(path)));
    QTRY_VERIFY(player.progress() > 0.05);
    QSignalSpy playing(&player, &AudioPlayer::isPlayingChanged);
    player.pause();
    QCOMPARE(playing.count(), 1);
    QVERIFY(!player.isPlaying());
    QVERIFY(player.hasTimer());

    QTest::qWait(200); // the position settles
    QSignalSpy progress(&player, &AudioPlayer::progressChanged);
    QTest::qWait(500);
    player.tick();
    QCOMPARE(progress.count(), 0);
    player.pause();
    QCOMPARE(playing.count(), 1);
}

void TestAudioPlayer::stopRewindsAndEndsTheTimer()
{
    AudioPlayer idle;
    QSignalSpy idleTimer(&idle, &AudioPlayer::timerChanged);
    idle.stop(); // nothing open: still safe, nothing changes
    QCOMPARE(idleTimer.count(), 0);

    const QString path = tone(QStringLiteral("tone.mp3"), 4.0);
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    QVERIFY(!player.play(url(path)));
    QTRY_VERIFY(player.progress() > 0.1);
    QSignalSpy timer(&player, &AudioPlayer::timerChanged);
    player.stop();
    QCOMPARE(player.progress(), 0.0);
    QVERIFY(!player.isPlaying());
    QVERIFY(!player.hasTimer());
    QCOMPARE(timer.count(), 1);
    QSignalSpy progress(&player, &AudioPlayer::progressChanged);
    QTest::qWait(500);
    QCOMPARE(progress.count(), 0);
    QCOMPARE(player.player()->position(), 0);

    // Playing again starts from the top with a fresh timer.
    QVERIFY(!player.play(url(path)));
    QVERIFY(player.hasTimer());
    QTRY_VERIFY(player.progress() > 0);
    QVERIFY(player.progress() < 0.5);
}

void TestAudioPlayer::naturalEndCallsOnTrackFinished()
{
    const QString path = tone(QStringLiteral("short.m4a"), 1.0);
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    int finished = 0;
    bool playingWhenCalled = true;
    player.onTrackFinished = [&] {
        ++finished;
        playingWhenCalled = player.isPlaying();
    };
    StdoutCapture output;
    QVERIFY(!player.play(url(path)));
    QTRY_COMPARE_WITH_TIMEOUT(finished, 1, 4000);
    QVERIFY(!playingWhenCalled);
    QVERIFY(player.hasTimer()); // the end does not stop the timer
    QTest::qWait(300);
    QCOMPARE(finished, 1);
    // Play pressed again on the ended track: it plays once more to its end.
    QVERIFY(!player.play(url(path)));
    QVERIFY(player.isPlaying());
    QTRY_COMPARE_WITH_TIMEOUT(finished, 2, 4000);
    QCOMPARE(output.lines(), QStringList());
}

void TestAudioPlayer::missingFileChangesNothing()
{
    const QString path = tone(QStringLiteral("tone.mp3"), 4.0);
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    QVERIFY(!player.play(url(path)));
    QTRY_VERIFY(player.duration() > 0);
    const QMediaPlayer* opened = player.player();
    QSignalSpy players(&player, &AudioPlayer::playerChanged);
    QSignalSpy playing(&player, &AudioPlayer::isPlayingChanged);

    StdoutCapture output;
    for (const QUrl& missing : {url(fixture(QStringLiteral("gone.mp3"))), QUrl(fixture(QStringLiteral("gone.mp3"))),
                                url(TestEnvironment::documents())}) {
        const std::optional<PlayError> error = player.play(missing);
        QVERIFY(error);
        QCOMPARE(error->domain, QStringLiteral("AudioPlayer"));
        QCOMPARE(error->code, -1);
        QCOMPARE(error->description, QStringLiteral("File does not exist"));
    }
    QCOMPARE(player.player(), opened);
    QCOMPARE(player.currentUrl(), url(path));
    QVERIFY(player.isPlaying());
    QCOMPARE(players.count(), 0);
    QCOMPARE(playing.count(), 0);
    QCOMPARE(output.lines(), QStringList()); // reporting it is the caller's
}

void TestAudioPlayer::unplayableFileIsRefusedAndKeepsThePreviousTrack()
{
    const QString good = tone(QStringLiteral("tone.mp3"), 4.0);
    const QString text = fixture(QStringLiteral("notes.m4a"));
    QFile file(text);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("these are words, not sound\n");
    file.close();

    AudioPlayer player;
    QVERIFY(!player.play(url(good)));
    QTRY_VERIFY(player.duration() > 0);
    const double duration = player.duration();
    QSignalSpy players(&player, &AudioPlayer::playerChanged);
    const std::optional<PlayError> error = player.play(url(text));
    QVERIFY(error);
    QVERIFY(error->domain != QLatin1String("AudioPlayer"));
    QVERIFY(!error->description.isEmpty());
    QCOMPARE(players.count(), 0);
    QCOMPARE(player.currentUrl(), url(good));
    QCOMPARE(player.duration(), duration);
    QVERIFY(player.isPlaying());
}

void TestAudioPlayer::corruptFileFailsInsteadOfFinishing()
{
    const QString noise = fixture(QStringLiteral("noise.mp3"));
    QVERIFY(writeRandomBytes(noise, 200 * 1024));
    AudioPlayer player;
    int finished = 0;
    player.onTrackFinished = [&] { ++finished; };
    QSignalSpy failures(&player, &AudioPlayer::playFailed);
    StdoutCapture output;
    player.play(url(noise)); // may be refused at once or fail while playing
    QTRY_VERIFY(!player.isPlaying());
    QTest::qWait(500);
    QVERIFY(!player.hasTimer());
    QCOMPARE(finished, 0);
    if (player.currentUrl() == url(noise)) {
        // Accepted, then failed while playing: reported here, once.
        QCOMPARE(failures.count(), 1);
        const QStringList lines = output.lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().startsWith(QStringLiteral("Error: Could not play ") + noise + QStringLiteral(". Error: ")));
    }
}

void TestAudioPlayer::autoAdvanceThroughBrokenFilesStops()
{
    QStringList broken;
    for (int i = 0; i < 3; ++i) {
        broken.append(fixture(QStringLiteral("broken%1.mp3").arg(i)));
        QVERIFY(writeRandomBytes(broken.last(), 100 * 1024, unsigned(i + 7)));
    }
    const QString first = tone(QStringLiteral("first.mp3"), 0.5);
    QVERIFY(!first.isEmpty());
    AudioPlayer player;
    int next = 0;
    int finished = 0;
    // The owner's usual answer to an ended track: play the next one.
    player.onTrackFinished = [&] {
        ++finished;
        if (next < broken.size())
            player.play(url(broken.at(next++)));
    };
    StdoutCapture output;
    QVERIFY(!player.play(url(first)));
    QTRY_COMPARE(finished, 1);
    QTest::qWait(1500);
    QCOMPARE(finished, 1);
    QCOMPARE(next, 1);
    QVERIFY(!player.isPlaying());
    QVERIFY(!player.hasTimer());
}

void TestAudioPlayer::latePictureOfAnotherFileIsDropped()
{
    const QString red = tone(QStringLiteral("red.mp3"), 3.0, picture(QStringLiteral("red.png"), 0xff0000));
    const QString blue = tone(QStringLiteral("blue.mp3"), 3.0, picture(QStringLiteral("blue.png"), 0x0000ff));
    const QString bare = tone(QStringLiteral("bare.mp3"), 3.0);
    QVERIFY(!red.isEmpty() && !blue.isEmpty() && !bare.isEmpty());

    // The red picture is still being read when the blue file opens: the event
    // loop does not run between the two calls.
    AudioPlayer player;
    QVERIFY(!player.play(url(red)));
    QVERIFY(!player.play(url(blue)));
    QTRY_VERIFY(!player.albumArt().isNull());
    QTest::qWait(300);
    QCOMPARE(QColor(player.albumArt().pixel(0, 0)), QColor(Qt::blue));

    // A file without a picture clears the last one, and a late blue stays out.
    QVERIFY(!player.play(url(red)));
    QVERIFY(!player.play(url(bare)));
    QVERIFY(player.albumArt().isNull());
    QTest::qWait(500);
    QVERIFY(player.albumArt().isNull());
}

void TestAudioPlayer::fileDeletedWhilePlayingIsSurvived()
{
    const QString path = tone(QStringLiteral("doomed.flac"), 1.5);
    QVERIFY(!path.isEmpty());
    AudioPlayer player;
    int finished = 0;
    player.onTrackFinished = [&] { ++finished; };
    QVERIFY(!player.play(url(path)));
    QTest::qWait(200);
    QVERIFY(QFile::remove(path));
    QTRY_VERIFY_WITH_TIMEOUT(!player.isPlaying(), 5000);
    // Playing it again is a missing file now.
    const std::optional<PlayError> error = player.play(url(path));
    QVERIFY(error);
    QCOMPARE(error->code, -1);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TestAudioPlayer)
#include "test_audioplayer.moc"
