// The player's running costs beside their floors, each measured in a process
// of its own in the same run:
//   start-up to a painted window     vs. an empty Qt Widgets window
//   resident memory idle             vs. the same empty window
//   CPU playing / paused / stopped   (whole process, and the user-interface
//                                     thread alone)
// The CPU figures are medians of three runs. The comparison with other
// players is bench/compare-players.
// Run under scripts/testenv: bench_player [seconds per phase, default 20]
#include "app/appdelegate.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "store/config.h"
#include "support/audiofixtures.h"

#include "childrun.h"
#include "resident.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <sys/resource.h>

namespace {

// Proportional set size: shared libraries counted by the share this process has of them.
double proportionalMiB()
{
    QFile rollup(QStringLiteral("/proc/self/smaps_rollup"));
    if (!rollup.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : rollup.readAll().split('\n')) {
        if (line.startsWith("Pss:"))
            return line.mid(4).trimmed().split(' ').first().toDouble() / 1024;
    }
    return -1;
}

void reportMemory(const char* prefix)
{
    QTextStream(stdout) << prefix << "rss " << residentMiB() << Qt::endl;
    QTextStream(stdout) << prefix << "pss " << proportionalMiB() << Qt::endl;
}

void runFor(double seconds)
{
    QEventLoop loop;
    QTimer::singleShot(int(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

void report(const QString& name, double value)
{
    QTextStream(stdout) << name << ' ' << value << Qt::endl;
}

// Reports the percent of one core used while the event loop runs for
// seconds, by the process (name) and by this, the user-interface, thread
// (name-ui).
void reportCpuOver(const QString& name, double seconds)
{
    const double process = cpuSeconds(), thread = cpuSeconds(RUSAGE_THREAD);
    runFor(seconds);
    report(name, (cpuSeconds() - process) / seconds * 100);
    report(name + QStringLiteral("-ui"), (cpuSeconds(RUSAGE_THREAD) - thread) / seconds * 100);
}

int plinkBox(int argc, char* argv[], const QString& file, double seconds)
{
    QApplication app(argc, argv);
    FirstPaint painted;
    app.installEventFilter(&painted);
    AppDelegate delegate;
    runFor(0.5);
    reportMemory("idle");
    Config& config = delegate.config();
    config.bringCurrentPlaylistIntoRange();
    config.writePlaylistTracks(config.playlists().at(config.currentPlaylistIndex()).id,
                               {Track::make(QUrl::fromLocalFile(file).toString(), QStringLiteral("Tone"),
                                            QStringLiteral("Bench"))});
    if (!delegate.transport().playCurrentTrack())
        return 1;
    runFor(1);
    reportCpuOver(QStringLiteral("playing"), seconds);
    reportMemory("");
    delegate.audioPlayer().pause();
    runFor(1);
    reportCpuOver(QStringLiteral("paused"), seconds);
    delegate.audioPlayer().stop();
    runFor(1);
    reportCpuOver(QStringLiteral("stopped"), seconds);
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QStringList arguments = [&] {
        QStringList list;
        for (int i = 1; i < argc; ++i)
            list.append(QString::fromLocal8Bit(argv[i]));
        return list;
    }();
    if (arguments.value(0) == QLatin1String("--empty-window"))
        return emptyWindow(argc, argv, [] { reportMemory("idle"); });
    if (arguments.value(0) == QLatin1String("--plinkbox"))
        return plinkBox(argc, argv, arguments.value(1), arguments.value(2).toDouble());

    QCoreApplication app(argc, argv);
    const double seconds = arguments.isEmpty() ? 20 : arguments.first().toDouble();
    QTemporaryDir folder;
    const QString home = folder.path() + QStringLiteral("/home");
    QDir().mkpath(home + QStringLiteral("/Documents"));
    const QString file = folder.path() + QStringLiteral("/tone.mp3");
    AudioFixtures::Tone tone(seconds + 20);
    if (!AudioFixtures::makeTone(file, tone))
        return 1;

    // Start-up: five of each, after one warm-up run (the first start also
    // writes the first-start files).
    runChild({QStringLiteral("--plinkbox"), file, QStringLiteral("0.1")}, home);
    QList<double> plinkStarts, emptyStarts;
    Child empty;
    for (int i = 0; i < 5; ++i) {
        empty = runChild({QStringLiteral("--empty-window")}, home);
        emptyStarts.append(empty.startupMs);
        plinkStarts.append(runChild({QStringLiteral("--plinkbox"), file, QStringLiteral("0.1")}, home).startupMs);
    }
    const QString phase = QString::number(seconds);
    QList<Child> players;
    for (int i = 0; i < 3; ++i)
        players.append(runChild({QStringLiteral("--plinkbox"), file, phase}, home));
    const auto figure = [](const QList<Child>& runs, const QString& name) {
        QList<double> values;
        for (const Child& run : runs)
            values.append(run.figures.value(name, -1));
        return median(values);
    };
    const auto percent = [](double value) { return QString::number(value, 'f', 2); };

    QTextStream out(stdout);
    out << "plinkBox player, " << seconds << " s per phase, MP3 tone" << Qt::endl;
    out << QStringLiteral("start-up to painted window: %1 ms  (empty Qt Widgets window: %2 ms, ratio %3)")
               .arg(median(plinkStarts), 0, 'f', 1).arg(median(emptyStarts), 0, 'f', 1)
               .arg(median(plinkStarts) / median(emptyStarts), 0, 'f', 2)
        << Qt::endl;
    out << "CPU, % of one core, median of 3 runs each (user-interface thread alone in brackets)" << Qt::endl;
    for (const char* phaseName : {"playing", "paused", "stopped"})
        out << QStringLiteral("CPU %1: %2 (%3)")
                   .arg(QLatin1String(phaseName), percent(figure(players, QLatin1String(phaseName))),
                        percent(figure(players, QLatin1String(phaseName) + QStringLiteral("-ui"))))
            << Qt::endl;
    const Child& player = players.first();
    for (const char* kind : {"rss", "pss"}) {
        const QString idle = QStringLiteral("idle") + QLatin1String(kind);
        out << QStringLiteral("%1 idle: %2 MiB  (empty Qt Widgets window: %3 MiB, ratio %4)")
                   .arg(QString::fromLatin1(kind).toUpper())
                   .arg(player.figures.value(idle), 0, 'f', 1).arg(empty.figures.value(idle), 0, 'f', 1)
                   .arg(player.figures.value(idle) / empty.figures.value(idle), 0, 'f', 2)
            << Qt::endl;
        out << QStringLiteral("%1 while playing: %2 MiB")
                   .arg(QString::fromLatin1(kind).toUpper())
                   .arg(player.figures.value(QLatin1String(kind)), 0, 'f', 1)
            << Qt::endl;
    }
    return 0;
}
