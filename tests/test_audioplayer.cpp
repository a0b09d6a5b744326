#include "playback/audiodecoder.h"
#include "playback/soundplayer.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

using namespace AudioFixtures;

namespace {

// A tone in Documents, with a solid-colour cover when rgb is given; empty if it could not be made.
QString tone(const QString& name, Tone wanted, std::optional<unsigned> rgb = {})
{
    const QString path = TestEnvironment::documents() + '/' + name;
    if (rgb && !makePicture(wanted.picturePath = path + ".png", 32, 32, *rgb))
        return {};
    return makeTone(path, wanted) ? path : QString();
}

const auto url = &QUrl::fromLocalFile;

// Seconds from mark to the last sound heard so far.
double lastHeard(MonitorRecorder& recorder, double mark, double threshold = 0.02)
{
    const double now = recorder.seconds();
    return now - recorder.lastSoundBefore(now, threshold) - mark;
}

// The test's own sound server, its null sink named as the test desktop's so that a recorder finds its monitor.
// `awake`: a silent stream keeps the sink to real time, as a device does; without it our stream is alone, as on most desktops.
class OwnServer
{
public:
    OwnServer() : m_previous(qgetenv("PULSE_SERVER"))
    {
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(m_runtime.filePath("native")));
    }
    ~OwnServer()
    {
        stop();
        qputenv("PULSE_SERVER", m_previous);
    }
    bool start(bool awake)
    {
        m_server.startCommand(QStringLiteral("env -u DBUS_SESSION_BUS_ADDRESS HOME=%1 PULSE_RUNTIME_PATH=%1 "
                                             "pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=no "
                                             "-L \"module-null-sink sink_name=plinkbox_null rate=48000\" "
                                             "-L \"module-native-protocol-unix socket=%1/native auth-anonymous=1\"")
                                  .arg(m_runtime.path()));
        if (!QTest::qWaitFor([&] { return QFile::exists(m_runtime.filePath("native")); }, 10000))
            return false;
        if (awake) {
            m_awake.setStandardInputFile("/dev/zero");
            m_awake.startCommand("pacat --latency-msec=10 --raw");
        }
        QTest::qWait(500);
        return true;
    }
    void stop()
    {
        for (QProcess* process : {&m_awake, &m_server}) {
            process->terminate();
            process->waitForFinished(5000);
        }
        QFile::remove(m_runtime.filePath("native"));
    }

private:
    QTemporaryDir m_runtime;
    QByteArray m_previous;
    QProcess m_server, m_awake;
};

} // namespace

class TestAudioPlayer : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::wipeHome();
        if (QByteArray(QTest::currentTestFunction()).endsWith("AtOnce") && MonitorRecorder::source().isEmpty())
            QSKIP("needs the test desktop's null sink: run under scripts/testenv");
    }

    // Any name opens; play, pause (holding the place) and a seek are heard at once; the same file resumes
    // without a reload; the volume is heard; stop rewinds and ends the timer.
    void playPauseSeekHeardAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("mp3") << QStringLiteral("Déjà vu – Café.mp3");
        QTest::newRow("flac") << QStringLiteral("日本 #1 %?.flac");
    }
    void playPauseSeekHeardAtOnce()
    {
        QFETCH(QString, name);
        // A silent middle tells a seek's place by ear.
        const QString path = tone(name, Tone(6.0, 2.0, 4.0)), other = tone("other " + name, Tone(1.0));
        MonitorRecorder recorder;
        QVERIFY(!path.isEmpty() && !other.isEmpty() && recorder.start());
        AudioPlayer player;
        player.seek(0.5); // nothing open: no effect
        QVERIFY(!player.play(url(path)));
        double mark = recorder.seconds();
        QTest::qWait(1000);
        QVERIFY2(qBound(0.0, recorder.firstSoundAfter(mark), 0.05) == recorder.firstSoundAfter(mark), "play");

        QSignalSpy playing(&player, &AudioPlayer::isPlayingChanged);
        player.pause();
        player.pause();
        mark = recorder.seconds();
        QTest::qWait(800);
        QVERIFY(playing.count() == 1 && player.hasTimer() && qAbs(player.progress() * 6.0 - 1.0) < 0.1);
        QVERIFY2(lastHeard(recorder, mark) < 0.05, "pause");

        // Into the silence while paused, resumed by a plain path: no reload, nothing heard.
        player.seek(2.5 / 6.0);
        QSignalSpy reloads(&player, &AudioPlayer::durationChanged);
        const AudioFile* opened = player.player();
        QUrl plainPath;
        plainPath.setPath(path);
        QVERIFY(!player.play(plainPath));
        QVERIFY(player.player() == opened && reloads.isEmpty());
        mark = recorder.seconds();
        QTest::qWait(400);
        QVERIFY(recorder.level(mark, recorder.seconds()) < 0.002);
        player.seek(4.5 / 6.0);
        mark = recorder.seconds();
        QTest::qWait(400);
        QVERIFY2(qBound(0.0, recorder.firstSoundAfter(mark), 0.05) == recorder.firstSoundAfter(mark), "seek");
        player.tick(); // the scrub bar runs with what is heard, even once the whole rest is written
        QVERIFY(qAbs(player.progress() * 6.0 - 4.5 - (recorder.seconds() - mark)) < 0.06);

        // The volume is our stream's, and lives in the open file: another file plays at full volume.
        const double full = recorder.level(recorder.seconds() - 0.2, recorder.seconds());
        player.setVolume(0.25f);
        mark = recorder.seconds();
        QTest::qWait(300);
        QVERIFY2(qAbs(recorder.level(mark + 0.1, mark + 0.3) / full - 0.25) < 0.05, "volume");
        QVERIFY(!player.play(url(other)));
        mark = recorder.seconds();
        QTest::qWait(300);
        QVERIFY2(qAbs(recorder.level(mark + 0.1, mark + 0.3) / full - 1) < 0.05, "full volume");

        player.stop();
        mark = recorder.seconds();
        QTest::qWait(300);
        QVERIFY(!player.isPlaying() && !player.hasTimer() && player.progress() == 0.0);
        QVERIFY(recorder.level(mark + 0.05, recorder.seconds()) < 0.002);
        QVERIFY(!player.play(url(path)));
        QTRY_VERIFY(player.progress() > 0);
        QVERIFY(player.progress() < 0.1);
    }

    // Three cuts of one tone play as one through the transport's end-of-track rule, then stop at the list's end:
    // no sample lost or repeated, no dip at a join (a join leaving the index behind would play a track twice).
    void tracksJoinWithoutAGapAtOnce_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<double>("tolerance"); // of a cycle's level at a join: lossless is exact
        QTest::newRow("flac") << QStringLiteral("flac") << 0.0025;
        QTest::newRow("mp3") << QStringLiteral("mp3") << 0.1;
    }
    void tracksJoinWithoutAGapAtOnce()
    {
        QFETCH(QString, suffix);
        QFETCH(double, tolerance);
        QStringList cuts;
        for (int i = 0; i < 3; ++i) {
            Tone cut(1.0);
            cut.frequency = 480; // 100 samples a cycle at the sink's 48 kHz
            cut.offset = 1.0 * i;
            cuts.append(tone(QStringLiteral("cut%1.").arg(i) + suffix, cut));
        }
        MonitorRecorder recorder(48000);
        QVERIFY(recorder.start());
        PlayerFixture::Rig rig(cuts);
        rig.config.setLoopTracks(false);
        const double mark = recorder.seconds();
        rig.transport.playPausePressed();
        QTRY_VERIFY_WITH_TIMEOUT(!rig.player.isPlaying(), 6000);
        QTest::qWait(300);

        const double start = mark + recorder.firstSoundAfter(mark), end = mark + lastHeard(recorder, mark);
        QVERIFY2(qAbs(end - start - 3.0) < 0.003, qPrintable(QStringLiteral("%1 s of sound").arg(end - start)));
        // Whole cycles have one level wherever they start: a lost or repeated piece, or a filter's edge, shows off it.
        const QList<double> cycles = recorder.levels(0.1 / 48, start + 0.01);
        QList<double> sorted = cycles;
        std::sort(sorted.begin(), sorted.end());
        const double steady = sorted.at(sorted.size() / 2);
        QVERIFY(qAbs(steady - 0.125 / std::sqrt(2.0)) < 0.01);
        for (qsizetype i = 0; i < cycles.size() && (i + 1) * 0.1 / 48 < end - start - 0.02; ++i) {
            const double at = 0.01 + i * 0.1 / 48;
            const bool nearJoin = qAbs(at - 1) < 0.05 || qAbs(at - 2) < 0.05;
            QVERIFY2(qAbs(cycles.at(i) - steady) < (nearJoin ? tolerance : 0.1) * steady,
                     qPrintable(QStringLiteral("%1 at %2 s").arg(cycles.at(i)).arg(at)));
        }
    }

    // A playlist rewritten after the next track was queued drops it: the track's end plays what the new list holds.
    void aChangedPlaylistDropsTheQueuedTrack()
    {
        const QStringList tones{tone("a.wav", Tone(1.0)), tone("b.wav", Tone(1.0)), tone("c.wav", Tone(1.0))};
        PlayerFixture::Rig rig(tones);
        rig.transport.playPausePressed();
        QTest::qWait(300);
        rig.config.writePlaylistTracks(rig.three, {Track::make(url(tones[0]).toString(), "a", "Sine"),
                                                   Track::make(url(tones[2]).toString(), "c", "Sine")});
        QTRY_COMPARE_WITH_TIMEOUT(rig.config.currentTrackIndex(), 1, 5000); // the first stream of a fresh server starts late
        QCOMPARE(rig.player.currentUrl(), url(tones[2]));
    }

    // Every format decodes to its exact length and plays to its end, once; refused files leave the open one playing;
    // a seek to the end ends a track, a paused one staying there; a file cut short prints one line and ends with its audio.
    void endsAndFailures()
    {
        const QString documents = TestEnvironment::documents();
        const QString text = documents + "/notes.m4a", noise = documents + "/noise.mp3", gone = documents + "/gone.mp3";
        const QString cut = tone("cut.mp3", Tone(3.0)), whole = tone("whole.flac", Tone(3.0));
        QVERIFY(TestFiles::writeFile(text, "these are words, not sound\n"));
        QVERIFY(writeRandomBytes(noise, 200 * 1024) && QFile::resize(cut, QFileInfo(cut).size() / 2));
        // A WAV header declaring 1.95 GHz (found by fuzzing: its resampler took minutes).
        const QString impossible = tone("impossible.wav", Tone(0.2));
        QByteArray wav = TestFiles::readFile(impossible);
        qToLittleEndian<quint32>(0x74711f40, wav.data() + 24);
        QVERIFY(TestFiles::writeFile(impossible, wav));
        AudioPlayer player;
        QList<bool> playingAtEnds; // one entry per end of track
        player.onTrackFinished = [&] { playingAtEnds << player.isPlaying(); };
        StdoutCapture output;
        QString path;
        for (const char* suffix : {"opus", "ogg", "flac", "wav", "mp3", "m4a"}) {
            path = tone(QStringLiteral("Grüße é #1 %?.") + QLatin1String(suffix), Tone(0.3));
            // Decoded to the sample, without the encoder's delay or padding.
            QString error;
            const qsizetype frames = qsizetype(AudioDecoder::decodeAll(TestFiles::readFile(path), 48000, &error).size()) / 2;
            QVERIFY2(frames == 14400, qPrintable(QStringLiteral("%1: %2 frames %3").arg(suffix).arg(frames).arg(error)));
            QVERIFY2(!player.play(url(path)) && qAbs(player.duration() - 0.3) < 0.005, suffix);
            QTRY_COMPARE_WITH_TIMEOUT(playingAtEnds, QList<bool>{false}, 4000);
            QVERIFY(player.hasTimer() && player.progress() == 1.0);
            playingAtEnds.clear();
        }
        QVERIFY(!player.play(url(path))); // an ended track plays again, to its end
        QTRY_COMPARE_WITH_TIMEOUT(playingAtEnds, QList<bool>{false}, 4000);
        playingAtEnds.clear();
        QVERIFY(!player.play(url(whole)));
        for (const QUrl& missing : {url(gone), QUrl(gone), url(documents)}) {
            const PlayError error = player.play(missing).value_or(PlayError());
            QVERIFY(error.domain == "AudioPlayer" && error.code == -1 && error.description == "File does not exist");
        }
        QStringList refusals;
        for (const QString& refused : {text, noise, impossible}) {
            const std::optional<PlayError> error = player.play(url(refused));
            QVERIFY(error && error->domain != "AudioPlayer");
            refusals << error->description;
        }
        // FFmpeg, needed by the M4A and the refused files, is let go with them; what it said is read after that.
        QVERIFY(!TestFiles::readFile("/proc/self/maps").contains("libavcodec"));
        for (const QString& why : refusals)
            QVERIFY(!why.trimmed().isEmpty());
        QVERIFY(player.currentUrl() == url(whole) && player.isPlaying());
        player.seek(1.0);
        QTRY_COMPARE_WITH_TIMEOUT(playingAtEnds.size(), 1, 1000);
        QVERIFY(!player.play(url(whole)));
        player.pause();
        player.seek(1.5);
        QTest::qWait(500);
        QVERIFY(playingAtEnds.size() == 1 && !player.isPlaying() && player.progress() == 1.0);
        QCOMPARE(output.lines(), QStringList());

        // Played to its end, stopped and played again, the file cut short is told once.
        QVERIFY(!player.play(url(cut)));
        QTRY_COMPARE_WITH_TIMEOUT(playingAtEnds.size(), 2, 4000);
        player.stop();
        QVERIFY(!player.play(url(cut)));
        QTRY_COMPARE_WITH_TIMEOUT(playingAtEnds.size(), 3, 4000);
        const QString cutShort = "Error: Could not play " + cut + " to its end. Error: The file ends after ";
        QVERIFY2(output.lines().size() == 1 && output.text().startsWith(cutShort), qPrintable(output.text()));
    }

    // A file cut in place while it plays (a tagger rewriting it): one line, and the end comes where its audio ends.
    void aFileCutWhileItPlays()
    {
        const QString path = tone("cut while playing.wav", Tone(8.0));
        AudioPlayer player;
        int ends = 0;
        player.onTrackFinished = [&] { ++ends; };
        StdoutCapture output;
        QVERIFY(!player.play(url(path)));
        QTest::qWait(300);
        QVERIFY(QFile::resize(path, 4000));
        QTRY_COMPARE_WITH_TIMEOUT(ends, 1, 5000);
        QVERIFY2(output.lines().size() == 1 && output.text().startsWith("Error: Could not play " + path + " to its end."),
                 qPrintable(output.text()));
    }

    // No server: play fails, and works once it is back. A server lost while playing is one line, no end of track,
    // and the next play goes on from where it was.
    void soundServerGoesAndComesBack()
    {
        OwnServer server;
        const QString path = tone("long.ogg", Tone(16.0));
        AudioPlayer player;
        int finished = 0;
        player.onTrackFinished = [&] { ++finished; };
        QSignalSpy failures(&player, &AudioPlayer::playFailed);
        StdoutCapture output;
        const std::optional<PlayError> refused = player.play(url(path));
        QVERIFY(refused && refused->description.startsWith("No sound server: ") && !player.player());

        QVERIFY(server.start(true));
        QVERIFY(!player.play(url(path)));
        QTRY_VERIFY_WITH_TIMEOUT(player.progress() > 0.25, 8000); // further than a restart goes in 3.2 s
        server.stop();
        QTRY_VERIFY_WITH_TIMEOUT(!player.isPlaying(), 3000);
        QTest::qWait(200);
        const QString stopped = "Error: Could not play " + path + ". Error: The connection to the sound server was lost";
        QVERIFY2(failures.count() == 1 && output.lines().size() == 1 && output.text().startsWith(stopped),
                 qPrintable(output.text()));
        const double where = player.progress();

        QVERIFY(server.start(true));
        QVERIFY(!player.play(url(path)));
        // On from where it was: from the start it would not be back there within the wait.
        QTRY_VERIFY_WITH_TIMEOUT(player.progress() > where, 3000);
        QTest::qWait(200);
        QVERIFY(player.progress() > where && player.isPlaying() && finished == 0);
    }

    // Where our stream is alone and no recorder runs while it starts, a track started afresh plays whole and on time:
    // its silent mark heard when due, the next joining at its end, the place shown the place heard. Each way of
    // starting once lost seconds there: play, another track chosen while one plays (stop, then play), a seek.
    void aTrackPlaysWholeWhereItPlaysAlone_data()
    {
        QTest::addColumn<double>("length");
        QTest::addColumn<double>("markAt"); // a third of a second of silence there
        QTest::addColumn<QString>("start");
        for (int round = 0; round < 2; ++round) {
            QTest::addRow("play %d", round) << 2.0 << 1.0 << "play";
            QTest::addRow("long %d", round) << 60.0 << 1.0 << "play";
            QTest::addRow("chosen while playing %d", round) << 2.0 << 1.0 << "choose";
            QTest::addRow("seek %d", round) << 4.0 << 3.0 << "seek";
        }
    }
    void aTrackPlaysWholeWhereItPlaysAlone()
    {
        QFETCH(double, length);
        QFETCH(double, markAt);
        QFETCH(QString, start);
        const QString path = tone("marked.mp3", Tone(length, markAt, markAt + 0.3)), next = tone("next.mp3", Tone(1.0, 0, 1.0));
        const QString other = tone("other.mp3", Tone(2.0));
        OwnServer server;
        QVERIFY(!path.isEmpty() && !next.isEmpty() && !other.isEmpty() && server.start(false));
        QTest::qWait(1000); // idle, as a desktop is before music starts
        AudioPlayer player;
        QElapsedTimer clock;
        double joinedAt = -1;
        player.nextTrackUrl = [&]() -> std::optional<QUrl> { return url(next); };
        player.onTrackJoined = [&] { joinedAt = clock.elapsed() / 1000.0; };
        // From the moment the marked track should be heard at `from` seconds into it.
        double from = 0;
        if (start == "choose") {
            QVERIFY(!player.play(url(other)));
            QTest::qWait(300);
            player.stop();
        }
        clock.start();
        QVERIFY(!player.play(url(path)));
        if (start == "seek") {
            QTest::qWait(300);
            from = 2.0;
            clock.start();
            player.seek(from / length);
        }
        QTest::qWait(400);
        MonitorRecorder recorder(8000);
        QVERIFY(recorder.start());
        const double mark = recorder.seconds(), markWall = clock.elapsed() / 1000.0;
        QTest::qWait(int((markAt - from + 0.5) * 1000) - clock.elapsed());
        player.tick();
        const double shown = player.progress() * player.duration() - from, wall = clock.elapsed() / 1000.0;
        QVERIFY2(joinedAt < 0 && qAbs(shown - wall) < 0.1, qPrintable(QStringLiteral("%1 s shown at %2 s").arg(shown).arg(wall)));
        const QList<double> windows = recorder.levels(0.01, mark);
        const qsizetype quiet = std::find_if(windows.begin(), windows.end(), [](double level) { return level < 0.002; }) - windows.begin();
        const double heardMark = markWall + quiet * 0.01;
        QVERIFY2(qAbs(heardMark - (markAt - from)) < 0.1, qPrintable(QStringLiteral("mark heard at %1 s").arg(heardMark)));
        if (length > 10)
            return;
        QTRY_VERIFY_WITH_TIMEOUT(joinedAt >= 0, 4000);
        const double end = markWall + lastHeard(recorder, mark) ;
        QVERIFY2(qAbs(joinedAt - (length - from)) < 0.1 && qAbs(end - (length - from)) < 0.1,
                 qPrintable(QStringLiteral("joined at %1 s, heard until %2 s").arg(joinedAt).arg(end)));
    }

    // A picture read late, of a file no longer open, is dropped.
    void latePictureOfAnotherFileIsDropped()
    {
        const QString red = tone("red.mp3", Tone(3.0), 0xff0000), blue = tone("blue.mp3", Tone(3.0), 0x0000ff);
        const QString bare = tone("bare.mp3", Tone(3.0));
        AudioPlayer player;
        // No event loop runs between the two calls: red's picture is still being read.
        QVERIFY(!player.play(url(red)) && !player.play(url(blue)));
        QTRY_VERIFY(!player.albumArt().isNull());
        QTest::qWait(300);
        QCOMPARE(QColor(player.albumArt().pixel(0, 0)), QColor(Qt::blue));
        // A file without a picture clears the last one, and a late red stays out.
        QVERIFY(!player.play(url(red)) && !player.play(url(bare)));
        QTest::qWait(500);
        QVERIFY(player.albumArt().isNull());
    }

    // Besides the shipped sounds this binary has :/sounds/broken.m4a, which is text: told at every press.
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

    // Every press is heard in full, as loud as the file holds it (above 1 %), within 30 ms; a new sound cuts the last short.
    void everyPressIsHeardAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"click", "min", "pop", "drag"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void everyPressIsHeardAtOnce()
    {
        QFETCH(QString, name);
        QString error;
        const std::vector<float> samples = AudioDecoder::decodeAll(TestFiles::readFile(":/sounds/" + name + ".m4a"), 48000, &error);
        const auto isLoud = [](float sample) { return std::abs(sample) > 0.01f; };
        const auto first = std::find_if(samples.begin(), samples.end(), isLoud);
        const auto last = std::find_if(samples.rbegin(), samples.rend(), isLoud);
        const double loud = double(std::distance(first, last.base())) / 2 / 48000; // stereo frames
        SoundPlayer sounds;
        sounds.preload().waitForFinished(); // before the recording, which a wait here would hold up
        MonitorRecorder recorder(48000);
        QVERIFY2(loud > 0 && recorder.start(), qPrintable(error));
        StdoutCapture output;
        for (int press = 0; press < 6; ++press) {
            const double mark = recorder.seconds();
            sounds.playSound(name);
            QTest::qWait(200);
            const double from = recorder.firstSoundAfter(mark, 0.01);
            const double until = lastHeard(recorder, mark, 0.01);
            QVERIFY2(from >= 0 && from < 0.03 && qAbs(until - from - loud) < 0.003,
                     qPrintable(QStringLiteral("press %1: from %2 s until %3 s").arg(press).arg(from).arg(until)));
        }
        // Cut by a click 20 ms in: nothing sounds after the click.
        const double mark = recorder.seconds();
        sounds.playSound(name);
        QTest::qWait(20);
        sounds.playSound("click");
        QTest::qWait(300);
        const double until = lastHeard(recorder, mark, 0.01);
        QVERIFY2(until < 0.06, qPrintable(QString::number(until)));
        QCOMPARE(output.lines(), QStringList());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestAudioPlayer)
#include "test_audioplayer.moc"
