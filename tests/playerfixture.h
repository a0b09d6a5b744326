#pragma once

// What the player's tests share: tones, playlists of them, the player's parts, printed lines, other programs run.

#include "playback/audioplayer.h"
#include "player/transport.h"
#include "store/config.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QUrl>

namespace PlayerFixture {

// count tones in folder, named tone0.wav, tone1.wav, …, the first of seconds, each next one step longer
inline QStringList makeTones(const QString& folder, int count, double seconds, double step = 0)
{
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        AudioFixtures::Tone tone(seconds + step * i);
        tone.frequency = 330 + 110 * i;
        paths.append(folder + QStringLiteral("/tone%1.wav").arg(i));
        if (!QFile::exists(paths.last()) && !AudioFixtures::makeTone(paths.last(), tone))
            return {};
    }
    return paths;
}

// Appends a playlist of the files, as tracks "Tone 1", "Tone 2", …, and returns its id.
inline QUuid addPlaylist(Config& config, const QString& name, const QStringList& paths)
{
    config.createPlaylist();
    QList<Playlist> catalogue = config.playlists();
    catalogue.last().name = name;
    config.setPlaylists(catalogue);
    QList<Track> tracks;
    for (const QString& path : paths)
        tracks.append(Track::make(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded),
                                  QStringLiteral("Tone %1").arg(tracks.size() + 1), QStringLiteral("Sine")));
    config.writePlaylistTracks(catalogue.last().id, tracks);
    return catalogue.last().id;
}

// The store, player and transport over "Untitled" (empty), "Three" (all three tones, current) and "Two" (the first two).
struct Rig {
    explicit Rig(const QStringList& tones)
        : three(addPlaylist(config, QStringLiteral("Three"), tones))
        , two(addPlaylist(config, QStringLiteral("Two"), tones.mid(0, 2)))
    {
        config.setCurrentPlaylistIndex(1);
    }
    Config config;
    QUuid three, two;
    AudioPlayer player;
    Transport transport{config, player};
};

// The lines an action printed, without the test framework's own messages;
// captured apart from the checks, so that a failing check's report shows.
template <class Action>
QStringList printedBy(Action action)
{
    StdoutCapture capture;
    action();
    QStringList lines = capture.lines();
    static const QRegularExpression framework(QStringLiteral("^Q(WARN|DEBUG|INFO|SYSTEM|CRITICAL) "));
    lines.removeIf([](const QString& line) { return framework.match(line).hasMatch(); });
    return lines;
}

// Runs a program to its end, the event loop turning: its exit status (-1 if still running after 20 s) and output.
inline std::pair<int, QString> run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool ended = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 20000);
    return {ended ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput())};
}

} // namespace PlayerFixture
