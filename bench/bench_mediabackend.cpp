// Measures the media backend chosen for this process (chooseMediaBackend(),
// or QT_MEDIA_BACKEND=gstreamer|ffmpeg to compare) at the test desktop's null
// sink: time from play() to sound, resuming after a pause, the silent gap of
// a seek, how late the end of media is reported after the sound stopped, and
// resident memory. Run it under scripts/testenv.
#include "playback/mediabackend.h"
#include "support/audiofixtures.h"

#include <QAudioOutput>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMediaPlayer>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QUrl>

#include <algorithm>
#include <QtNumeric>

namespace {

using AudioFixtures::MonitorRecorder;

long residentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

// The longest stretch of 10-ms windows below the threshold in [from, to).
double longestGap(MonitorRecorder& recorder, double from, double to)
{
    double longest = 0;
    double current = 0;
    for (double t = from; t + 0.01 <= to; t += 0.01) {
        current = recorder.level(t, t + 0.01) < 0.01 ? current + 0.01 : 0;
        longest = std::max(longest, current);
    }
    return longest;
}

double median(QList<double> values)
{
    if (values.isEmpty())
        return qQNaN();
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

QString milliseconds(double seconds)
{
    return qIsNaN(seconds) ? QStringLiteral("none") : QString::number(seconds * 1000, 'f', 0) + QStringLiteral(" ms");
}

} // namespace

int main(int argc, char* argv[])
{
    chooseMediaBackend();
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);

    QTemporaryDir folder;
    const QString tone = folder.filePath(QStringLiteral("tone.mp3"));
    const QString shortTone = folder.filePath(QStringLiteral("short.mp3"));
    const AudioFixtures::Tone longTone(8);
    if (!AudioFixtures::makeTone(tone, longTone) || !AudioFixtures::makeTone(shortTone))
        return 1;
    MonitorRecorder recorder;
    if (!recorder.start())
        return 1;
    QTest::qWait(1500); // the monitor needs a moment before data flows

    QMediaPlayer player;
    QAudioOutput output;
    player.setAudioOutput(&output);
    const long before = residentKiB();

    // Opening and starting a file, five times.
    QList<double> starts;
    for (int i = 0; i < 5; ++i) {
        player.setSource(QUrl());
        QTest::qWait(1000);
        const double mark = recorder.seconds();
        player.setSource(QUrl::fromLocalFile(tone));
        player.play();
        QTest::qWait(1500);
        if (const double latency = recorder.firstSoundAfter(mark); latency >= 0)
            starts.append(latency);
        player.stop();
    }

    // Resuming after a pause of two seconds, five times.
    QList<double> resumes;
    player.play();
    QTest::qWait(500);
    for (int i = 0; i < 5; ++i) {
        player.pause();
        QTest::qWait(2000);
        const double mark = recorder.seconds();
        player.play();
        QTest::qWait(800);
        if (const double latency = recorder.firstSoundAfter(mark); latency >= 0)
            resumes.append(latency);
    }

    // Seeking while playing: the longest silence in the second after.
    QList<double> gaps;
    for (int i = 0; i < 5; ++i) {
        player.setPosition(i % 2 ? 1000 : 5000);
        const double mark = recorder.seconds();
        QTest::qWait(1200);
        gaps.append(longestGap(recorder, mark, mark + 1.0));
    }
    const long playing = residentKiB();
    player.stop();

    // End of media: how long after the sound stopped the player said so.
    QList<double> lateness;
    for (int i = 0; i < 3; ++i) {
        player.setSource(QUrl::fromLocalFile(shortTone));
        double endedAt = -1;
        QObject::connect(&player, &QMediaPlayer::mediaStatusChanged, &app,
                         [&](QMediaPlayer::MediaStatus status) {
                             if (status == QMediaPlayer::EndOfMedia)
                                 endedAt = recorder.seconds();
                         });
        const double mark = recorder.seconds();
        player.play();
        QTest::qWait(3500);
        QObject::disconnect(&player, &QMediaPlayer::mediaStatusChanged, &app, nullptr);
        // The last loud sample: scan back from the end in 5-ms steps.
        double lastSound = -1;
        for (double t = recorder.seconds() - 0.005; t > mark; t -= 0.005) {
            if (recorder.level(t, t + 0.005) > 0.02) {
                lastSound = t + 0.005;
                break;
            }
        }
        if (endedAt > 0 && lastSound > 0)
            lateness.append(endedAt - lastSound);
    }

    out << "backend: " << (qEnvironmentVariable("QT_MEDIA_BACKEND").isEmpty()
                               ? QStringLiteral("(Qt default)")
                               : qEnvironmentVariable("QT_MEDIA_BACKEND"))
        << "\n";
    out << "play() to sound, new file (median of 5): " << milliseconds(median(starts)) << "\n";
    out << "play() to sound, resume after 2 s pause (median of 5): " << milliseconds(median(resumes)) << "\n";
    out << "longest silence after a seek (median of 5): " << milliseconds(median(gaps)) << "\n";
    out << "end of media after the sound stopped, negative when before (median of 3): " << milliseconds(median(lateness)) << "\n";
    out << "resident memory: " << before / 1024 << " MiB before playing, " << playing / 1024
        << " MiB playing\n";
    return 0;
}
