// Prints how the running player copes with a folder of 2,000 tagged MP3s
// handed to it on the command line of a later launch: how long until the first of them plays
// and the playlist holds them all, and the longest the player kept a D-Bus
// call waiting meanwhile. Its window and its D-Bus interface are served by
// the same thread, so that is also the longest the window stood still.
// Run it under scripts/testenv (it starts the real player).
//   build/bench/bench_openfolder
#include "store/config.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int folderCount = 40;
constexpr int filesPerFolder = 50;

// One property read from the player; empty when it did not answer.
QString playbackStatus(double& roundTripMs)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.mpris.MediaPlayer2.plinkbox"), QStringLiteral("/org/mpris/MediaPlayer2"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QStringLiteral("org.mpris.MediaPlayer2.Player") << QStringLiteral("PlaybackStatus");
    QElapsedTimer timer;
    timer.start();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    roundTripMs = double(timer.nsecsElapsed()) / 1e6;
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return qvariant_cast<QDBusVariant>(reply.arguments().first()).variant().toString();
}

} // namespace

int main(int argc, char* argv[])
{
    TestEnvironment environment;
    QCoreApplication app(argc, argv);
    if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) {
        std::printf("needs the test desktop: scripts/testenv build/bench/bench_openfolder\n");
        return 1;
    }
    // Folders of an artist's albums, each track a copy of one tagged MP3.
    const QString library = TestEnvironment::home() + QStringLiteral("/Music");
    AudioFixtures::Tone tone(1.0);
    tone.title = QStringLiteral("Song");
    tone.artist = QStringLiteral("Band");
    const QString original = TestEnvironment::home() + QStringLiteral("/original.mp3");
    if (!AudioFixtures::makeTone(original, tone))
        return 1;
    for (int folder = 1; folder <= folderCount; ++folder) {
        const QString album = library + QStringLiteral("/Album %1").arg(folder);
        QDir().mkpath(album);
        for (int track = 1; track <= filesPerFolder; ++track) {
            if (!QFile::copy(original, album + QStringLiteral("/%1 - Song.mp3").arg(track)))
                return 1;
        }
    }
    {
        Config config; // a first start's files, so that the player starts as on any later day
    }
    const QString playlist = [] {
        Config config;
        return config.playlistFileURL(config.playlists().first().id);
    }();

    // The player runs, as it does all day; a later launch hands it the folder.
    QProcess player, launch;
    player.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    player.start(QStringLiteral(PLINK_EXECUTABLE), {});
    double roundTrip = 0, longest = 0, playingMs = -1, writtenMs = -1;
    QElapsedTimer since;
    since.start();
    while (playbackStatus(roundTrip).isEmpty() && since.elapsed() < 10000)
        QThread::msleep(5);
    QThread::msleep(500); // its window set up
    int calls = 0;
    since.restart();
    launch.start(QStringLiteral(PLINK_EXECUTABLE), {library});
    while (since.elapsed() < 60000 && (playingMs < 0 || writtenMs < 0)) {
        const QString status = playbackStatus(roundTrip);
        longest = std::max(longest, roundTrip);
        ++calls;
        if (playingMs < 0 && status == QLatin1String("Playing"))
            playingMs = double(since.elapsed());
        if (writtenMs < 0 && QFile(playlist).size() > 2000 * 100)
            writtenMs = double(since.elapsed());
        QThread::msleep(2);
    }
    launch.waitForFinished(5000);
    player.terminate();
    player.waitForFinished(5000);
    const int tracks = int(QFile::exists(playlist) ? Config().readPlaylistTracks(Config().playlists().first().id)->size() : 0);
    std::printf("a folder of %d MP3s in %d folders, handed to the running player by a later launch\n",
                folderCount * filesPerFolder, folderCount);
    std::printf("first track playing after      %8.0f ms\n", playingMs);
    std::printf("playlist file written after    %8.0f ms (%d tracks)\n", writtenMs, tracks);
    std::printf("longest D-Bus round trip       %8.1f ms over %d calls\n", longest, calls);
    return tracks == folderCount * filesPerFolder && playingMs >= 0 ? 0 : 1;
}
