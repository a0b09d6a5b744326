// Prints how the playlist editor copes with 1,000 files added at once: how
// long until the table shows them, the longest the user-interface thread was
// kept from its events meanwhile, and how many times the playlist file was
// written (once is right). Runs on the offscreen platform in a private HOME.
//   build/bench/bench_playlistadd
#include "filewrites.h"
#include "settings/playlistsettingsview.h"
#include "store/config.h"
#include "store/jsonreader.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTableView>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int fileCount = 1000;
constexpr int runs = 3;

struct Run {
    double returnedMs = 0;  // addFiles() handing the work off
    double shownMs = 0;     // until the table has painted the new rows
    double longestStallMs = 0;
    int writes = 0;
    bool complete = false;
};

Run addOnce(Config& config, PlaylistSettingsView& view, const QList<QUrl>& urls, const QString& playlistsFolder)
{
    Run run;
    config.createPlaylist();
    view.selectPlaylist(config.playlists().last().id);
    const QUuid id = *view.selectedPlaylistID();
    auto* table = view.findChild<QTableView*>(QStringLiteral("trackTable"));
    SettingsFixtures::FileWrites writes(playlistsFolder);

    // A fast timer measures how long the event loop goes without turning.
    QElapsedTimer sinceTick;
    QTimer ticker;
    ticker.setInterval(2);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        run.longestStallMs = std::max(run.longestStallMs, sinceTick.nsecsElapsed() / 1e6);
        sinceTick.restart();
    });

    QEventLoop loop;
    QElapsedTimer clock;
    QObject::connect(&view, &PlaylistSettingsView::tracksAdded, &loop, [&] {
        table->viewport()->repaint();
        run.shownMs = clock.nsecsElapsed() / 1e6;
        // One more turn of the ticker counts applying the rows as a stall too.
        QTimer::singleShot(10, &loop, &QEventLoop::quit);
    });
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    ticker.start();
    sinceTick.start();
    clock.start();
    view.addFiles(urls);
    run.returnedMs = clock.nsecsElapsed() / 1e6;
    loop.exec();
    ticker.stop();

    run.writes = writes.count(uuidText(id) + QStringLiteral(".json"));
    run.complete = table->model()->rowCount() == fileCount && view.tracks().size() == fileCount
        && config.readPlaylistTracks(id).value_or(QList<Track>()) == view.tracks();
    return run;
}

} // namespace

int main(int argc, char* argv[])
{
    TestEnvironment environment;
    QApplication app(argc, argv);

    // One tagged MP3, copied under a thousand names with spaces in them.
    const QString folder = TestEnvironment::home() + QStringLiteral("/Music Library");
    QDir().mkpath(folder);
    const QString original = folder + QStringLiteral("/original.mp3");
    if (!SettingsFixtures::makeMp3(original, QStringLiteral("Song"), QStringLiteral("Band")))
        return 1;
    QList<QUrl> urls;
    for (int i = 0; i < fileCount; ++i) {
        const QString path = folder + QStringLiteral("/track %1.mp3").arg(i, 4, 10, QLatin1Char('0'));
        QFile::copy(original, path);
        urls.append(QUrl::fromLocalFile(path));
    }

    Config config;
    PlaylistSettingsView view(config);
    view.resize(640, 600);
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        return 1;
    const QString playlistsFolder = TestEnvironment::documents() + QStringLiteral("/plinkBox-1/Playlists");

    std::printf("adding %d files to an empty playlist, %d runs\n", fileCount, runs);
    std::printf("%-5s %14s %14s %18s %8s %s\n", "run", "call (ms)", "shown (ms)", "longest stall (ms)",
                "writes", "complete");
    QList<double> shown;
    for (int i = 0; i < runs; ++i) {
        const Run run = addOnce(config, view, urls, playlistsFolder);
        shown.append(run.shownMs);
        std::printf("%-5d %14.2f %14.1f %18.1f %8d %s\n", i + 1, run.returnedMs, run.shownMs,
                    run.longestStallMs, run.writes, run.complete ? "yes" : "NO");
    }
    std::sort(shown.begin(), shown.end());
    std::printf("median time until the table shows %d files: %.1f ms\n", fileCount, shown.at(runs / 2));
    return 0;
}
