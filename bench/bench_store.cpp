// Prints how long the store takes with large libraries: a 10,000-track
// playlist file decoded and encoded, and a 500-playlist catalogue saved; and
// what its small writes cost: a first start (settings, one playlist, four
// themes of sixteen pictures each), a setting saved, a new playlist.
//   build/bench/bench_store
#include "store/config.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace {

template <class F>
double bestOfMilliseconds(int runs, F&& work)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, timer.nsecsElapsed() / 1e6);
    }
    return best;
}

} // namespace

int main(int argc, char* argv[])
{
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/.config")).toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // The store's own messages are not figures: figures go to the real stdout.
    std::FILE* out = fdopen(dup(STDOUT_FILENO), "w");
    if (!out || !std::freopen("/dev/null", "w", stdout)) {
        std::perror("bench_store: cannot set the store's messages aside");
        return 1;
    }
    const QString documents = home.path() + QStringLiteral("/Documents");
    const double firstStart = bestOfMilliseconds(5, [&] {
        QDir(documents).removeRecursively();
        Config fresh;
    });
    Config config;
    const double saveSmall = bestOfMilliseconds(20, [&] {
        config.setLoopTracks(!config.loopTracks());
        config.saveSettings();
    });
    const double newPlaylist = bestOfMilliseconds(20, [&] { config.createPlaylist(); });
    config.setPlaylists(config.playlists().mid(0, 1));

    QList<Track> tracks;
    for (int i = 0; i < 10000; ++i)
        tracks.append(Track::make(QStringLiteral("file:///home/someone/Music/Artist%20%1/Album/%2%20Song.mp3").arg(i % 97).arg(i),
                                  QStringLiteral("Song number %1").arg(i), QStringLiteral("Artist %1").arg(i % 97)));
    const QUuid id = config.playlists().first().id;
    QByteArray bytes;
    const double encode = bestOfMilliseconds(5, [&] { bytes = toJson(PlaylistData{tracks}); });
    const double decode = bestOfMilliseconds(5, [&] { (void)playlistDataFromJson(bytes); });
    const double write = bestOfMilliseconds(5, [&] { config.writePlaylistTracks(id, tracks); });
    const double read = bestOfMilliseconds(5, [&] { (void)config.readPlaylistTracks(id); });

    QList<Playlist> catalogue;
    for (int i = 0; i < 500; ++i)
        catalogue.append({QUuid::createUuid(), QStringLiteral("Playlist %1").arg((i * 7919) % 500)});
    config.setPlaylists(catalogue);
    const double save = bestOfMilliseconds(5, [&] { config.saveSettings(); });

    std::fprintf(out, "10,000-track playlist (%.1f MiB): encode %.1f ms, decode %.1f ms, atomic write %.1f ms, read+decode %.1f ms\n",
                 bytes.size() / 1048576.0, encode, decode, write, read);
    std::fprintf(out, "500-playlist catalogue: saveSettings %.2f ms\n", save);
    std::fprintf(out, "small writes: first start %.1f ms, saveSettings %.2f ms, createPlaylist %.2f ms\n", firstStart,
                 saveSmall, newPlaylist);
    return 0;
}
