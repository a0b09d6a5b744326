// CPU used by the process while AudioPlayer plays, pauses and stands
// stopped (20 s each, getrusage), and what an interface sound costs: the
// playSound() call itself and, at the test sink, the time to sound. Run it
// under scripts/testenv.
#include "playback/audioplayer.h"
#include "playback/mediabackend.h"
#include "playback/soundplayer.h"
#include "support/audiofixtures.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMediaPlayer>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>

namespace {

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// CPU seconds used while the event loop runs for the given time. (A plain
// event loop: QTest::qWait wakes every 10 ms and would be measured too.)
double cpuOver(int milliseconds)
{
    const double before = cpuSeconds();
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    return cpuSeconds() - before;
}

QString figure(double cpu, int milliseconds)
{
    return QStringLiteral("%1 s CPU in %2 s (%3 % of one core)")
        .arg(cpu, 0, 'f', 3)
        .arg(milliseconds / 1000)
        .arg(100 * cpu * 1000 / milliseconds, 0, 'f', 2);
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? -1 : values.at(values.size() / 2);
}

} // namespace

int main(int argc, char* argv[])
{
    chooseMediaBackend();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream out(stdout);

    constexpr int span = 20000;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("long.mp3"));
    if (!AudioFixtures::makeTone(path, AudioFixtures::Tone(70)))
        return 1;

    out << "idle, no player: " << figure(cpuOver(span), span) << "\n";
    out.flush();
    QMediaPlayer warmUp; // the backend's one-time set-up is not counted
    QTest::qWait(500);
    AudioPlayer player;
    if (player.play(QUrl::fromLocalFile(path)))
        return 1;
    QTest::qWait(1000); // past the start
    out << "playing an MP3:  " << figure(cpuOver(span), span) << "\n";
    player.pause();
    QTest::qWait(500);
    out << "paused:          " << figure(cpuOver(span), span) << "\n";
    player.stop();
    QTest::qWait(500);
    out << "stopped:         " << figure(cpuOver(span), span) << "\n";
    out.flush();

    // Interface sounds: the first play loads the sound, later ones reuse it.
    SoundPlayer sounds;
    AudioFixtures::MonitorRecorder recorder;
    const bool listening = recorder.start();
    QTest::qWait(1500);
    QList<double> calls;
    QList<double> toSound;
    double firstCall = 0;
    for (int i = 0; i < 11; ++i) {
        const double mark = listening ? recorder.seconds() : 0;
        QElapsedTimer timer;
        timer.start();
        sounds.playSound(QStringLiteral("min"));
        const double call = double(timer.nsecsElapsed()) / 1e6;
        if (i == 0)
            firstCall = call;
        else
            calls.append(call);
        QTest::qWait(600);
        if (listening && recorder.firstSoundAfter(mark) >= 0)
            toSound.append(recorder.firstSoundAfter(mark) * 1000);
    }
    out << "playSound(\"min\"): first call " << QString::number(firstCall, 'f', 1) << " ms, later calls median "
        << QString::number(median(calls), 'f', 1) << " ms; sound at the sink after (median of "
        << toSound.size() << ") " << QString::number(median(toSound), 'f', 0) << " ms\n";
    return 0;
}
