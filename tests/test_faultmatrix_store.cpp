// Something else where the store's files and folders belong, or a full disk: one
// clear line per failure, no crash, and no file lost or cut short.
#include "store/config.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QGuiApplication>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace TestFiles;

namespace {

enum class Action { start, createPlaylist, deletePlaylist, writeDefaultTheme, fillDisk };

// What stands where (in Documents; "playlist": a playlist's file), what is done
// then, and how each printed line begins; a "text" holds content.
struct Fault {
    QString thing, where;
    Action action;
    QStringList printed;
    QByteArray content = {};
};

} // namespace

class FaultMatrixStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void faultsAreReportedAndFilesKept_data()
    {
        QTest::addColumn<Fault>("fault");
        const QString saveFailed = "Failed to save JSON data: ", writeFailed = "Failed to write theme.json: ";
        const QString created = "New playlist written successfully.", settings = "plinkBox-1/plinkBox-settings.json";
        QTest::newRow("file for the application folder")
            << Fault{"file", "plinkBox-1", Action::createPlaylist, {"Could not write", saveFailed}};
        QTest::newRow("file for the Themes folder") << Fault{"file", "plinkBox/Themes", Action::writeDefaultTheme, {writeFailed}};
        // A first start that cannot make the Themes folder goes on.
        QTest::newRow("file for plinkBox") << Fault{"file", "plinkBox", Action::start, {"Could not create the folder", created}};
        QTest::newRow("folder for a playlist") << Fault{"folder", "playlist", Action::deletePlaylist, {created, "Failed to delete playlist file: "}};
        // Opening a named pipe would wait for the other end.
        QTest::newRow("pipe for the settings") << Fault{"pipe", settings, Action::start, {"Could not read", saveFailed, created, saveFailed}};
        // A settings file that cannot be used is replaced, but kept beside the copy kept before.
        QTest::newRow("not JSON") << Fault{"text", settings, Action::start, {"The data is not valid JSON", created}, "{ not json"};
        QTest::newRow("empty theme name") << Fault{"text", settings, Action::start, {created}, toJson(SettingsData{})};
        // A file-size limit makes writes fail part way (EFBIG, for root too), as on a full disk.
        QTest::newRow("full disk") << Fault{"limit", "playlist", Action::fillDisk, {writeFailed, saveFailed}};
    }
    void faultsAreReportedAndFilesKept()
    {
        QFETCH(Fault, fault);
        Config config;
        const QUuid mine = config.playlists().first().id;
        config.writePlaylistTracks(mine, {Track::make("file:///a.mp3", "A", "B")});
        const QString path = fault.where == "playlist" ? config.playlistFileURL(mine) : TestEnvironment::documents() + '/' + fault.where;
        if (fault.action == Action::start) // a first start
            TestEnvironment::wipeHome();
        if (fault.thing != "limit")
            QVERIFY(QDir(path).removeRecursively() && (!QFile::exists(path) || QFile::remove(path)) && QDir().mkpath(QFileInfo(path).path()));
        if (fault.thing == "file" || fault.thing == "folder")
            QVERIFY(writeFile(fault.thing == "file" ? path : path + "/keep.txt", "mine"));
        else if (fault.thing == "text")
            QVERIFY(writeFile(path, fault.content) && writeFile(path + ".broken", "kept before"));
        else if (fault.thing == "pipe")
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        const QByteArray before = fault.thing == "limit" ? readFile(path) + readFile(settingsPath()) : QByteArray();
        const QStringList folder = QDir(QFileInfo(path).path()).entryList(QDir::AllEntries | QDir::Hidden);
        rlimit saved{};
        getrlimit(RLIMIT_FSIZE, &saved);
        const rlimit limited{12 * 1024, saved.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        StdoutCapture out;
        alarm(60); // a read or write that waits for ever ends the test as a failure
        switch (fault.action) {
        case Action::start: Config(); break;
        case Action::createPlaylist: config.createPlaylist(); break;
        case Action::deletePlaylist: config.deletePlaylist(mine); break;
        case Action::writeDefaultTheme: config.writeDefaultTheme("two\nlines"); break; // a message stays one line
        case Action::fillDisk: // both new files several times larger than the room left
            config.setPlaylists({{mine, QString(64 * 1024, 'x')}});
            setrlimit(RLIMIT_FSIZE, &limited);
            config.writePlaylistTracks(mine, QList<Track>(400, Track::make("file:///music/album/track.mp3", "A song", "Somebody")));
            config.saveSettings();
            setrlimit(RLIMIT_FSIZE, &saved);
        }
        alarm(0);
        const QStringList lines = out.lines();
        bool same = lines.size() == fault.printed.size();
        for (qsizetype i = 0; same && i < lines.size(); ++i)
            same = lines.at(i).startsWith(fault.printed.at(i));
        QVERIFY2(same, qPrintable(lines.join('\n')));
        if (fault.thing == "file" || fault.thing == "folder")
            QCOMPARE(readFile(fault.thing == "file" ? path : path + "/keep.txt"), "mine");
        if (fault.thing == "text")
            QVERIFY(readFile(path + ".broken") == "kept before" && readFile(path + ".broken-2") == fault.content
                    && storedSettings().currentTheme == "mini-blueberry");
        if (fault.action == Action::deletePlaylist)
            QVERIFY(config.playlists().size() == 1 && config.playlists().first().id != mine && storedSettings().playlists == config.playlists());
        // The atomic write leaves no temporary file, the plain one puts back what it cut short.
        if (fault.thing == "limit")
            QVERIFY(readFile(path) + readFile(settingsPath()) == before && QDir(QFileInfo(path).path()).entryList(QDir::AllEntries | QDir::Hidden) == folder);
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, FaultMatrixStoreTest)
#include "test_faultmatrix_store.moc"
