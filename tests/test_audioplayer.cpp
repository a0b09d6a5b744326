#include "playback/audioplayer.h"
#include "playback/mediabackend.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QGuiApplication>
#include <QMediaPlayer>
#include <QSignalSpy>

using namespace AudioFixtures;

namespace {

// A tone in Documents, with a solid-colour cover when rgb is given; empty if it could not be made.
QString tone(const QString& name, double seconds = 4.0, std::optional<unsigned> rgb = {})
{
    const QString path = TestEnvironment::documents() + QLatin1Char('/') + name;
    Tone wanted(seconds);
    if (rgb && !makePicture(wanted.picturePath = path + QStringLiteral(".png"), 32, 32, *rgb))
        return {};
    return makeTone(path, wanted) ? path : QString();
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
    // As main() does; the backend's one-time chatter then stays out of captured output.
    void initTestCase()
    {
        chooseMediaBackend();
        QMediaPlayer warmUp;
    }
    void init() { TestEnvironment::wipeHome(); }

    // Heard while playing, silent once paused (timer kept, no tick changes
    // anything); seeks are clamped and shown at once; the same file resumes
    // without a reload; stop rewinds and ends the timer, and play then starts
    // from the top.
    void playPauseResumeAndStop()
    {
        if (MonitorRecorder::source().isEmpty())
            QSKIP("needs the test desktop's null sink: run under scripts/testenv");
        const QString path = tone(QStringLiteral("tone.mp3"), 8.0);
        MonitorRecorder recorder;
        QVERIFY(!path.isEmpty() && recorder.start());
        AudioPlayer player;
        player.stop(); // nothing open: safe
        player.seek(0.5); // nothing open: no effect
        QCOMPARE(player.progress(), 0.0);
        const double playFrom = recorder.seconds();
        QVERIFY(!player.play(url(path)));
        QTest::qWait(2500);
        QSignalSpy playing(&player, &AudioPlayer::isPlayingChanged);
        player.pause();
        player.pause();
        const double pauseFrom = recorder.seconds();
        QCOMPARE(playing.count(), 1);
        QTest::qWait(500); // the position settles
        QSignalSpy changes(&player, &AudioPlayer::progressChanged);
        QTest::qWait(2000);
        QCOMPARE(changes.count(), 0);
        QVERIFY(player.hasTimer());
        // The tone is at -18 dBFS (RMS ~0.09); half a second is left for the server's buffers.
        const double heard = recorder.level(playFrom + 0.5, pauseFrom);
        QVERIFY2(heard > 0.04, qPrintable(QString::number(heard)));
        const double paused = recorder.level(pauseFrom + 0.5, recorder.seconds());
        QVERIFY2(paused < 0.005, qPrintable(QString::number(paused)));
        for (const auto& [fraction, expected] : {std::pair{1.5, 1.0}, {-0.2, 0.0}, {0.5, 0.5}}) {
            player.seek(fraction);
            QCOMPARE(player.progress(), expected);
            QTRY_VERIFY(qAbs(double(player.player()->position()) - expected * 8000) < 100);
            player.tick(); // does not pull the scrub bar back
            QVERIFY(qAbs(player.progress() - expected) < 0.03);
        }

        const QMediaPlayer* opened = player.player();
        const qint64 position = opened->position();
        QSignalSpy reloads(&player, &AudioPlayer::durationChanged);
        QVERIFY(!player.play(QUrl(path))); // the same file, as a plain path
        QCOMPARE(player.player(), opened);
        QTRY_VERIFY(opened->position() > position + 200);
        QCOMPARE(reloads.count(), 0);

        player.stop();
        QVERIFY(!player.isPlaying() && !player.hasTimer());
        QTest::qWait(500);
        QCOMPARE(player.progress(), 0.0);
        QVERIFY(!player.play(url(path)));
        QTRY_VERIFY(player.progress() > 0);
        QVERIFY(player.progress() < 0.25);
    }

    void playsEveryFormat_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"tone.mp3", "tone.flac", "tone.ogg", "tone.opus", "tone.m4a", "tone.wav"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void playsEveryFormat()
    {
        QFETCH(QString, name);
        AudioPlayer player;
        QVERIFY(!player.play(url(tone(name, 2.0))));
        QTRY_VERIFY(qAbs(player.duration() - 2.0) < 0.1);
        QTRY_VERIFY_WITH_TIMEOUT(player.progress() > 0.2, 3000);
        QVERIFY(player.isPlaying());
    }

    // Missing and refused files leave the playing track as it is and print
    // nothing (reporting them is the caller's). A natural end calls
    // onTrackFinished once, also for a replay of the ended track; a corrupt
    // file that "ends" at its start fails instead, so an owner that plays the
    // next track on each end does not spin through broken files.
    void failuresAndEndsOfTracks()
    {
        const QString documents = TestEnvironment::documents(), path = tone(QStringLiteral("short.m4a"), 2.0);
        const QString text = documents + QStringLiteral("/notes.m4a"), noise = documents + QStringLiteral("/noise.mp3");
        QVERIFY(!path.isEmpty() && TestFiles::writeFile(text, "these are words, not sound\n"));
        QVERIFY(writeRandomBytes(noise, 200 * 1024));
        AudioPlayer player;
        int finished = 0;
        bool playingWhenCalled = true;
        player.onTrackFinished = [&] {
            playingWhenCalled = player.isPlaying();
            if (++finished == 2)
                player.play(url(noise));
        };
        QSignalSpy failures(&player, &AudioPlayer::playFailed);
        StdoutCapture output;
        QVERIFY(!player.play(url(path)));
        QTRY_VERIFY(player.duration() > 0);
        const double duration = player.duration();
        QSignalSpy players(&player, &AudioPlayer::playerChanged);
        const QString gone = documents + QStringLiteral("/gone.mp3");
        for (const QUrl& missing : {url(gone), QUrl(gone), url(documents)}) {
            const PlayError error = player.play(missing).value_or(PlayError());
            QCOMPARE(error.domain, QStringLiteral("AudioPlayer"));
            QCOMPARE(error.code, -1);
            QCOMPARE(error.description, QStringLiteral("File does not exist"));
        }
        const std::optional<PlayError> error = player.play(url(text));
        QVERIFY(error && error->domain != QLatin1String("AudioPlayer") && !error->description.isEmpty());
        QCOMPARE(player.currentUrl(), url(path));
        QCOMPARE(player.duration(), duration);
        QVERIFY(player.isPlaying() && players.isEmpty());

        QTRY_COMPARE_WITH_TIMEOUT(finished, 1, 4000);
        QVERIFY(!playingWhenCalled && player.hasTimer());
        QTest::qWait(300);
        QCOMPARE(finished, 1);
        QCOMPARE(output.lines(), QStringList());
        QVERIFY(!player.play(url(path)));
        QTRY_COMPARE_WITH_TIMEOUT(finished, 2, 4000);
        QTest::qWait(1500); // a broken file must not "finish" and advance again
        QCOMPARE(finished, 2);
        QVERIFY(!player.isPlaying() && !player.hasTimer());
        if (player.currentUrl() == url(noise)) { // accepted, then failed: reported here, once
            QCOMPARE(failures.count(), 1);
            QCOMPARE(output.lines().size(), 1);
            QVERIFY(output.lines().first().startsWith(QStringLiteral("Error: Could not play ") + noise +
                                                      QStringLiteral(". Error: ")));
        }
    }

    void latePictureOfAnotherFileIsDropped()
    {
        const QString red = tone(QStringLiteral("red.mp3"), 3.0, 0xff0000);
        const QString blue = tone(QStringLiteral("blue.mp3"), 3.0, 0x0000ff);
        const QString bare = tone(QStringLiteral("bare.mp3"), 3.0);
        AudioPlayer player;
        // No event loop runs between the two calls: red's picture is still being read.
        QVERIFY(!player.play(url(red)));
        QVERIFY(!player.play(url(blue)));
        QTRY_VERIFY(!player.albumArt().isNull());
        QTest::qWait(300);
        QCOMPARE(QColor(player.albumArt().pixel(0, 0)), QColor(Qt::blue));
        // A file without a picture clears the last one, and a late red stays out.
        QVERIFY(!player.play(url(red)));
        QVERIFY(!player.play(url(bare)));
        QTest::qWait(500);
        QVERIFY(player.albumArt().isNull());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestAudioPlayer)
#include "test_audioplayer.moc"
