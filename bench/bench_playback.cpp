// The playback engine alone: CPU of the process while AudioPlayer plays a
// long MP3, pauses and stands stopped (getrusage), and the latencies heard at
// the test sink, medians of 20 tries each:
//   play   play() of a file not yet open, to its first sound
//   resume play() of the paused file, to sound
//   pause  pause(), to the last sound
//   seek   seek() from a silent place into the tone, to sound
//   sound  playSound("pop"), to sound
// Then the memory of the FFmpeg module loaded and unloaded: RSS after 1, 100
// and 1,000 alternations of opening an M4A file (FFmpeg's) and an MP3 file
// (not), as playback moving between them does.
// The recorder's own lag (about 10 ms of parec's buffer) is included: the
// figures are upper bounds. Run it under scripts/testenv.
#include "playback/audiodecoder.h"
#include "playback/audioplayer.h"
#include "playback/soundplayer.h"
#include "support/audiofixtures.h"

#include "resident.h"

#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <functional>

namespace {

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Percent of one core used while a plain event loop runs (QTest::qWait would
// wake every 10 ms and be measured too).
double cpuPercentOver(int milliseconds)
{
    const double before = cpuSeconds();
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    return 100 * (cpuSeconds() - before) * 1000 / milliseconds;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? -1 : values.at(values.size() / 2);
}


} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream out(stdout);
    QTemporaryDir folder;
    const QString music = folder.filePath(QStringLiteral("music.mp3"));
    const QString other = folder.filePath(QStringLiteral("other.mp3"));
    const QString gaps = folder.filePath(QStringLiteral("gaps.mp3"));
    AudioFixtures::Tone silentStart(40);
    silentStart.silentFrom = 0;
    silentStart.silentTo = 20;
    if (!AudioFixtures::makeTone(music, AudioFixtures::Tone(90)) || !AudioFixtures::makeTone(other, AudioFixtures::Tone(60)) ||
        !AudioFixtures::makeTone(gaps, silentStart))
        return 1;

    constexpr int span = 20000;
    AudioPlayer player;
    if (player.play(QUrl::fromLocalFile(music)))
        return 1;
    QTest::qWait(2000); // past the start
    out << "CPU playing a 90-s MP3: " << QString::number(cpuPercentOver(span), 'f', 2) << " % of one core\n";
    out << "RSS playing it:         " << QString::number(residentMiB(), 'f', 1) << " MiB\n";
    player.pause();
    QTest::qWait(500);
    out << "CPU paused:             " << QString::number(cpuPercentOver(span), 'f', 2) << " %\n";
    player.stop();
    QTest::qWait(500);
    out << "CPU stopped:            " << QString::number(cpuPercentOver(span), 'f', 2) << " %\n";
    out.flush();

    AudioFixtures::MonitorRecorder recorder(48000);
    if (!recorder.start())
        return 1;
    SoundPlayer sounds;
    sounds.playSound(QStringLiteral("pop")); // decoded once, before the tries
    QTest::qWait(500);
    // One figure: 20 tries of prepare(), a mark, act(), then what was heard.
    const auto tries = [&](const std::function<void()>& prepare, const std::function<void()>& act, bool toSilence) {
        QList<double> figures;
        for (int i = 0; i < 20; ++i) {
            prepare();
            QTest::qWait(300);
            const double mark = recorder.seconds();
            act();
            QTest::qWait(300);
            const double now = recorder.seconds();
            const double heard = toSilence ? now - recorder.lastSoundBefore(now) - mark
                                           : recorder.firstSoundAfter(mark, 0.01);
            if (heard >= 0)
                figures.append(heard * 1000);
        }
        return QStringLiteral("%1 ms (of %2)").arg(median(figures), 0, 'f', 1).arg(figures.size());
    };
    bool odd = false;
    out << "play (opens the file): " << tries([&] { player.stop(); }, [&] {
        player.play(QUrl::fromLocalFile((odd = !odd) ? music : other));
    }, false) << "\n";
    out << "resume:                " << tries([&] { player.pause(); }, [&] { player.play(QUrl::fromLocalFile(other)); }, false) << "\n";
    out << "pause:                 " << tries([&] { player.play(QUrl::fromLocalFile(other)); }, [&] { player.pause(); }, true) << "\n";
    player.play(QUrl::fromLocalFile(gaps));
    out << "seek:                  " << tries([&] { player.seek(2.0 / 40); }, [&] { player.seek(30.0 / 40); }, false) << "\n";
    player.stop();
    out << "interface sound:       " << tries([] {}, [&] { sounds.playSound(QStringLiteral("pop")); }, false) << "\n";
    out.flush();

    const QString m4a = folder.filePath(QStringLiteral("short.m4a")), mp3 = folder.filePath(QStringLiteral("short.mp3"));
    if (!AudioFixtures::makeTone(m4a, AudioFixtures::Tone(1)) || !AudioFixtures::makeTone(mp3, AudioFixtures::Tone(1)))
        return 1;
    float chunk[1024 * AudioDecoder::channels];
    for (int cycle = 1; cycle <= 1000; ++cycle) {
        for (const QString& path : {m4a, mp3}) {
            QString error;
            if (const auto decoder = AudioDecoder::openFile(path, 48000, &error))
                decoder->read(chunk, 1024);
        }
        if (cycle == 1 || cycle == 100 || cycle == 1000)
            out << "RSS after " << cycle << " M4A/MP3 alternations: " << QString::number(residentMiB(), 'f', 1) << " MiB\n";
    }
    return 0;
}
