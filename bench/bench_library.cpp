// A library as large as people keep: 10,000 tracks in artist/album folders,
// the current playlist holding them all, and a catalogue of 200 playlists;
// beside it a small one (10 tracks, 40 playlists). Each action is timed on
// both in the same run, each in fresh processes:
//   start-up to the painted player window (wall and CPU), and the CPU of an
//   empty Qt Widgets window and of a start with a file to play
//   the skin's track menu and playlist menu, press to shown, and their size
//   choosing the last track by keyboard, Return to playing
//   the editor's first and second opening; resident memory with it closed and open
// Run under scripts/testenv: bench_library [runs, default 5]
#include "app/appdelegate.h"
#include "app/launch.h"
#include "playback/audioplayer.h"
#include "player/contentview.h"
#include "settings/settingsview.h"
#include "store/config.h"
#include "support/audiofixtures.h"

#include "childrun.h"
#include "resident.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <unistd.h>

namespace {

constexpr int otherPlaylistSize = 50;

void print(const char* name, double value)
{
    QTextStream(stdout) << name << ' ' << value << Qt::endl;
}

void runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// Track i of the library: a link to one MP3 under Artist/Album/.
QString trackPath(const QString& music, int i)
{
    return QStringLiteral("%1/Artist %2/Album %3/%4 Song number %5.mp3")
        .arg(music).arg(i / 100, 3, 10, QLatin1Char('0')).arg(i / 10 % 10).arg(i % 10 + 1).arg(i);
}

bool makeMusic(const QString& music, const QString& original, int count)
{
    for (int i = 0; i < count; ++i) {
        const QString path = trackPath(music, i);
        QDir().mkpath(QFileInfo(path).path());
        if (::link(QFile::encodeName(original).constData(), QFile::encodeName(path).constData()) != 0)
            return false;
    }
    return true;
}

QList<Track> tracks(const QString& music, int first, int count)
{
    QList<Track> list;
    list.reserve(count);
    for (int i = first; i < first + count; ++i)
        list.append(Track::make(QString::fromLatin1(QUrl::fromLocalFile(trackPath(music, i)).toEncoded()),
                                QStringLiteral("Song number %1").arg(i), QStringLiteral("Artist %1").arg(i / 100)));
    return list;
}

// Writes a library of size tracks in its current playlist and playlists in all.
int prepare(int argc, char* argv[], const QString& music, int size, int playlists)
{
    QApplication app(argc, argv);
    Config config;
    config.bringCurrentPlaylistIntoRange();
    while (config.playlists().size() < playlists)
        config.createPlaylist();
    const QList<Playlist> catalogue = config.playlists();
    for (int p = 0; p < catalogue.size(); ++p)
        config.writePlaylistTracks(catalogue.at(p).id, p == 0 ? tracks(music, 0, size) : tracks(music, 0, otherPlaylistSize));
    return 0;
}

// The real program's start, told of its first paint; it quits half a second later.
void reportStart()
{
    static FirstPaint painted;
    painted.whenPainted = [] {
        QTimer::singleShot(500, qApp, [] {
            print("rss", residentMiB());
            QCoreApplication::quit();
        });
    };
    qApp->installEventFilter(&painted);
}

// Waits for the first paint of a window other than the player's; returns
// it, or none after two seconds.
QWidget* awaitWindow(QWidget* player, QElapsedTimer& clock, double& ms)
{
    struct Watch : QObject {
        QWidget* player;
        QWidget* seen = nullptr;
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            auto* widget = qobject_cast<QWidget*>(watched);
            if (!seen && event->type() == QEvent::Paint && widget && widget->window() != player)
                seen = widget->window();
            return false;
        }
    } watch;
    watch.player = player;
    qApp->installEventFilter(&watch);
    while (!watch.seen && clock.elapsed() < 2000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    ms = double(clock.nsecsElapsed()) / 1e6;
    qApp->removeEventFilter(&watch);
    return watch.seen;
}

QWidget* pressElement(ContentView& view, Config& config, Element element, const char* name)
{
    const QPointF centre = elementRect(config.geometry(), element, view.scale()).center();
    QElapsedTimer clock;
    clock.start();
    QTest::mousePress(&view, Qt::LeftButton, {}, centre.toPoint());
    QTest::mouseRelease(&view, Qt::LeftButton, {}, centre.toPoint());
    double ms = -1;
    QWidget* shown = awaitWindow(&view, clock, ms);
    print(name, ms);
    if (shown) {
        print((QByteArray(name) + "-width").constData(), shown->width());
        print((QByteArray(name) + "-height").constData(), shown->height());
    }
    return shown;
}

// Every action on the library in HOME, in one process.
int actions(int argc, char* argv[])
{
    QApplication app(argc, argv);
    AppDelegate delegate;
    runFor(500);
    print("rss-start", residentMiB());
    Config& config = delegate.config();
    ContentView& view = delegate.contentView();

    if (QWidget* menu = pressElement(view, config, Element::trackMenu, "trackmenu")) {
        // To the last entry: the small menu's last track sits above "Edit playlists".
        if (qobject_cast<QMenu*>(menu)) {
            QTest::keyClick(menu, Qt::Key_Up);
            QTest::keyClick(menu, Qt::Key_Up);
        } else {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_End, Qt::ControlModifier);
        }
        QElapsedTimer clock;
        clock.start();
        QTest::keyClick(qobject_cast<QMenu*>(menu) ? menu : QApplication::focusWidget(), Qt::Key_Return);
        const qint64 last = config.currentPlaylistTracks().value_or(QList<Track>()).size() - 1;
        while (!(delegate.audioPlayer().isPlaying() && config.currentTrackIndex() == last) && clock.elapsed() < 3000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        print("choose-last", double(clock.nsecsElapsed()) / 1e6);
    }
    runFor(300);
    // Typing into the filter list, the slowest keystroke (the first folds every title).
    if (QWidget* list = pressElement(view, config, Element::trackMenu, "trackmenu-again"); list && !qobject_cast<QMenu*>(list)) {
        double slowest = 0;
        for (const QChar c : QStringLiteral("song 9999")) {
            QElapsedTimer clock;
            clock.start();
            QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
            QCoreApplication::processEvents();
            slowest = std::max(slowest, double(clock.nsecsElapsed()) / 1e6);
        }
        print("keystroke", slowest);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    }
    delegate.audioPlayer().pause();
    if (QWidget* menu = pressElement(view, config, Element::playlistMenu, "playlistmenu"))
        QTest::keyClick(menu, Qt::Key_Escape);
    runFor(300);
    print("rss-menus", residentMiB());

    for (const char* name : {"editor-first", "editor-again"}) {
        QElapsedTimer clock;
        clock.start();
        emit view.settingsRequested();
        double ms = -1;
        QWidget* editor = awaitWindow(&view, clock, ms);
        print(name, ms);
        runFor(500);
        print((QByteArray("rss-") + name).constData(), residentMiB());
        if (editor)
            editor->hide();
        runFor(200);
    }
    return 0;
}

// Every file under folder, to be put back after a run that changed them.
QHash<QString, QByteArray> snapshot(const QString& folder)
{
    QHash<QString, QByteArray> files;
    for (QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly))
            files.insert(file.fileName(), file.readAll());
    }
    return files;
}

void restore(const QString& folder, const QHash<QString, QByteArray>& files)
{
    for (QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next();
        if (!files.contains(path))
            QFile::remove(path);
    }
    for (auto it = files.begin(); it != files.end(); ++it) {
        QFile file(it.key());
        if (file.open(QIODevice::WriteOnly))
            file.write(it.value());
    }
}

struct Library {
    QString name;
    QString home;
    QList<Child> starts, actions;
};

QList<double> values(const QList<Child>& runs, const QString& name)
{
    QList<double> list;
    for (const Child& run : runs)
        list.append(name == QLatin1String("wall") ? run.startupMs : run.figures.value(name, -1));
    return list;
}

QString range(const QList<Child>& runs, const QString& name)
{
    QList<double> list = values(runs, name);
    std::sort(list.begin(), list.end());
    if (list.isEmpty() || list.last() < 0)
        return QStringLiteral("-"); // not measured: a menu, not a filter list
    return QStringLiteral("%1 (%2–%3)").arg(median(list), 0, 'f', 1).arg(list.first(), 0, 'f', 1).arg(list.last(), 0, 'f', 1);
}

} // namespace

int main(int argc, char* argv[])
{
    const QString mode = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (mode == QLatin1String("--launch")) {
        qAddPreRoutine(reportStart);
        argv[1] = argv[0];
        return runPlayer(argc - 1, argv + 1);
    }
    if (mode == QLatin1String("--actions"))
        return actions(argc, argv);
    if (mode == QLatin1String("--prepare"))
        return prepare(argc, argv, QString::fromLocal8Bit(argv[2]), atoi(argv[3]), atoi(argv[4]));

    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 5;
    QTemporaryDir folder;
    const QString music = folder.path() + QStringLiteral("/Music");
    const QString original = folder.path() + QStringLiteral("/song.mp3");
    AudioFixtures::Tone tone(90);
    if (!AudioFixtures::makeTone(original, tone) || !makeMusic(music, original, 10000))
        return 1;
    QList<Library> libraries{{QStringLiteral("10 tracks, 40 playlists"), folder.path() + QStringLiteral("/small"), {}, {}},
                             {QStringLiteral("10,000 tracks, 200 playlists"), folder.path() + QStringLiteral("/large"), {}, {}}};
    QProcessEnvironment offscreen;
    offscreen.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (int i = 0; i < 2; ++i) {
        QDir().mkpath(libraries[i].home + QStringLiteral("/Documents"));
        runChild({QStringLiteral("--prepare"), music, i ? QStringLiteral("10000") : QStringLiteral("10"),
                  i ? QStringLiteral("200") : QStringLiteral("40")},
                 libraries[i].home, offscreen);
    }
    const QString documents = libraries[0].home + QStringLiteral("/Documents");
    const QHash<QString, QByteArray> smallFiles = snapshot(documents);

    QList<Child> empty, withFile;
    for (int run = 0; run < runs + 1; ++run) {
        // The first round warms the disk cache and is not counted.
        const auto keep = [run](QList<Child>& list, const Child& child) {
            if (run > 0)
                list.append(child);
        };
        keep(empty, runChild({}, libraries[0].home, {}, QStringLiteral(PLINK_EMPTY_WINDOW)));
        for (Library& library : libraries)
            keep(library.starts, runChild({QStringLiteral("--launch")}, library.home));
        keep(withFile, runChild({QStringLiteral("--launch"), original}, libraries[0].home));
        restore(documents, smallFiles);
    }
    for (int run = 0; run < std::min(runs, 3); ++run) {
        for (Library& library : libraries)
            library.actions.append(runChild({QStringLiteral("--actions")}, library.home));
    }

    QTextStream out(stdout);
    out << "median (least–most) of " << runs << " starts and " << std::min(runs, 3) << " runs of the actions" << Qt::endl;
    const QList<std::pair<QString, QString>> startRows{
        {QStringLiteral("start-up to the painted window, ms"), QStringLiteral("wall")},
        {QStringLiteral("  its CPU time, ms"), QStringLiteral("painted")},
        {QStringLiteral("  resident memory half a second later, MiB"), QStringLiteral("rss")},
    };
    const QList<std::pair<QString, QString>> actionRows{
        {QStringLiteral("track menu, press to shown, ms"), QStringLiteral("trackmenu")},
        {QStringLiteral("  its width, px"), QStringLiteral("trackmenu-width")},
        {QStringLiteral("  its height, px"), QStringLiteral("trackmenu-height")},
        {QStringLiteral("choosing the last track by keyboard, Return to playing, ms"), QStringLiteral("choose-last")},
        {QStringLiteral("  again, and the slowest keystroke in its filter, ms"), QStringLiteral("keystroke")},
        {QStringLiteral("playlist menu, press to shown, ms"), QStringLiteral("playlistmenu")},
        {QStringLiteral("  its width, px"), QStringLiteral("playlistmenu-width")},
        {QStringLiteral("  its height, px"), QStringLiteral("playlistmenu-height")},
        {QStringLiteral("editor, first opening to painted, ms"), QStringLiteral("editor-first")},
        {QStringLiteral("editor, second opening to painted, ms"), QStringLiteral("editor-again")},
        {QStringLiteral("resident memory at start, MiB"), QStringLiteral("rss-start")},
        {QStringLiteral("  after the menus, editor closed, MiB"), QStringLiteral("rss-menus")},
        {QStringLiteral("  with the editor open, MiB"), QStringLiteral("rss-editor-first")},
    };
    const auto table = [&](const QList<std::pair<QString, QString>>& rows, QList<Child> Library::*runsOf) {
        for (const auto& [label, name] : rows) {
            out << label.leftJustified(62) << range(libraries[0].*runsOf, name).leftJustified(26)
                << range(libraries[1].*runsOf, name);
            const double ratio = median(values(libraries[1].*runsOf, name)) / median(values(libraries[0].*runsOf, name));
            out << (ratio > 0 ? QStringLiteral("   ×%1").arg(ratio, 0, 'f', 2) : QString()) << Qt::endl;
        }
    };
    out << QString().leftJustified(62) << libraries[0].name.leftJustified(26) << libraries[1].name << Qt::endl;
    table(startRows, &Library::starts);
    table(actionRows, &Library::actions);
    out << QStringLiteral("CPU to the painted window: empty Qt Widgets window %1 ms; plinkBox bare %2 ms; with a file to play %3 ms")
               .arg(range(empty, QStringLiteral("painted")), range(libraries[0].starts, QStringLiteral("painted")),
                    range(withFile, QStringLiteral("painted")))
        << Qt::endl;
    return 0;
}
