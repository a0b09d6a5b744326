// Faults of the file system under the store and the themes: folders that
// cannot be written, things that are not what they should be, a disk that
// fills up while writing. Each must end in one clear line per failure, no
// crash, and no file lost or cut short.
#include "store/config.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QDirIterator>
#include <QGuiApplication>

#include <csignal>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using TestFiles::readFile;
using TestFiles::settingsPath;
using TestFiles::writeFile;

namespace {

QString documents(const QString& relative = {})
{
    return TestEnvironment::documents() + QLatin1Char('/') + relative;
}

// Each printed line begins with its expected beginning, in order.
void checkLines(const QStringList& lines, const QStringList& prefixes)
{
    bool same = lines.size() == prefixes.size();
    for (qsizetype i = 0; same && i < lines.size(); ++i)
        same = lines.at(i).startsWith(prefixes.at(i));
    QVERIFY2(same, qPrintable(lines.join(QLatin1Char('\n'))));
}

QList<Track> manyTracks(int count)
{
    QList<Track> tracks;
    for (int i = 0; i < count; ++i)
        tracks.append(Track::make(QStringLiteral("file:///music/album/track%1.mp3").arg(i),
                                  QStringLiteral("A song with a long enough title %1").arg(i),
                                  QStringLiteral("Somebody")));
    return tracks;
}

// Makes folder and everything in it read-only while it lives. Root writes
// through permission bits, so as root it is a read-only bind mount, in a
// private mount namespace that goes with the process.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(const QString& folder)
        : m_folder(folder)
        , m_path(QFile::encodeName(folder))
    {
        if (geteuid() != 0) {
            setWritable(false);
            m_done = true;
            return;
        }
        static const bool privateMounts = unshare(CLONE_NEWNS) == 0
            && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        m_bound = privateMounts && mount(m_path.constData(), m_path.constData(), nullptr, MS_BIND, nullptr) == 0;
        m_done = m_bound
            && mount(nullptr, m_path.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
    }
    ~ReadOnlyFolder()
    {
        if (m_bound)
            umount2(m_path.constData(), MNT_DETACH);
        else if (m_done)
            setWritable(true);
    }
    bool done() const { return m_done; }

private:
    void setWritable(bool writable)
    {
        QStringList paths{m_folder};
        for (QDirIterator it(m_folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                             QDirIterator::Subdirectories);
             it.hasNext();)
            paths.append(it.next());
        for (const QString& path : std::as_const(paths)) {
            const QFileDevice::Permissions now = QFile::permissions(path);
            QFile::setPermissions(path, writable ? now | QFileDevice::WriteOwner : now & ~(QFileDevice::WriteOwner | QFileDevice::WriteUser
                                                                         | QFileDevice::WriteGroup | QFileDevice::WriteOther));
        }
    }

    QString m_folder;
    QByteArray m_path;
    bool m_bound = false;
    bool m_done = false;
};

} // namespace

class FaultMatrixStoreTest : public QObject
{
    Q_OBJECT

public:
    enum class Action { createPlaylist, deletePlaylist, writeDefaultTheme, start };
    Q_ENUM(Action)

private slots:
    void init() { TestEnvironment::wipeHome(); }
    void faultsAreReportedAndFilesKept_data();
    void faultsAreReportedAndFilesKept();
    void fullDiskFailsWritesAndKeepsTheOldFiles();
};

namespace {

// A first start, then a second playlist holding one track; returns its id.
QUuid setUpLibrary(Config& config)
{
    config.createPlaylist();
    config.writePlaylistTracks(config.playlists().last().id, manyTracks(1));
    return config.playlists().last().id;
}

const QString saveFailed = QStringLiteral("Failed to save JSON data: ");
const QString writeFailed = QStringLiteral("Failed to write theme.json: ");

} // namespace

void FaultMatrixStoreTest::faultsAreReportedAndFilesKept_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("where"); // a folder made read-only, else "playlist" or "settings"
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("printed");

    const auto row = [](const char* fault, const char* where, Action action, const QStringList& printed) {
        QTest::addRow("%s: %s", fault, where) << QString::fromLatin1(fault) << QString::fromLatin1(where) << action
                                             << printed;
    };
    row("read-only", "plinkBox-1", Action::createPlaylist, {QStringLiteral("Could not write"), saveFailed});
    row("read-only", "plinkBox/Themes", Action::writeDefaultTheme, {writeFailed});
    // The Themes folder cannot be made at a first start: reported, and the start goes on.
    row("read-only, empty", "plinkBox", Action::start,
        {QStringLiteral("Could not create the folder"), QStringLiteral("New playlist written successfully.")});
    // The folder holds something of the user's: nothing may remove it.
    row("folder", "playlist", Action::deletePlaylist, {QStringLiteral("Failed to delete playlist file: ")});
    // Opening a named pipe waits for the other end: nothing may open one.
    row("pipe", "settings", Action::start, {QStringLiteral("Could not read"), saveFailed});
    // A link is followed and stays a link.
    row("dangling link", "settings", Action::start, {saveFailed});
}

void FaultMatrixStoreTest::faultsAreReportedAndFilesKept()
{
    QFETCH(QString, fault);
    QFETCH(QString, where);
    QFETCH(Action, action);
    QFETCH(QStringList, printed);

    auto config = std::make_unique<Config>();
    const QUuid mine = setUpLibrary(*config);
    const QString path = where == QLatin1String("playlist") ? config->playlistFileURL(mine) : settingsPath();
    if (action == Action::start)
        config.reset();
    const auto perform = [&] {
        StdoutCapture out;
        switch (action) {
        case Action::createPlaylist: config->createPlaylist(); break;
        case Action::deletePlaylist: config->deletePlaylist(mine); break;
        case Action::writeDefaultTheme: config->writeDefaultTheme(config->currentTheme()); break;
        case Action::start: Config again; break;
        }
        return out.lines();
    };
    QStringList lines;
    if (fault.startsWith(QLatin1String("read-only"))) {
        if (fault.endsWith(QLatin1String("empty"))) {
            QDir(documents(QStringLiteral("plinkBox/Themes"))).removeRecursively();
            QDir(documents(QStringLiteral("plinkBox-1"))).removeRecursively();
        }
        const ReadOnlyFolder readOnly(documents(where));
        if (!readOnly.done())
            QSKIP("running as root without a read-only mount: chmod does not stop root");
        lines = perform();
    } else {
        QVERIFY(QFile::remove(path));
        if (fault == QLatin1String("folder"))
            QVERIFY(writeFile(path + QStringLiteral("/keep.txt"), "mine"));
        else if (fault == QLatin1String("pipe"))
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else
            QVERIFY(QFile::link(TestEnvironment::home() + QStringLiteral("/missing/settings.json"), path));
        const QString linkTarget = QFileInfo(path).symLinkTarget();
        alarm(60); // a read or write that waits for ever ends the test as a failure
        lines = perform();
        alarm(0);
        if (fault == QLatin1String("folder"))
            QCOMPARE(readFile(path + QStringLiteral("/keep.txt")), QByteArray("mine"));
        QCOMPARE(QFileInfo(path).symLinkTarget(), linkTarget);
    }
    checkLines(lines, printed);
}

// A write gets as far as a file-size limit and then fails (EFBIG, for root
// too), as it would on a full disk; the process goes on with SIGXFSZ ignored.
void FaultMatrixStoreTest::fullDiskFailsWritesAndKeepsTheOldFiles()
{
    Config config;
    const QUuid mine = setUpLibrary(config);
    const QString playlist = config.playlistFileURL(mine);
    const QByteArray playlistBefore = readFile(playlist);
    const QByteArray settingsBefore = readFile(settingsPath());
    const QStringList playlistFolderBefore = QFileInfo(playlist).dir().entryList(QDir::AllEntries | QDir::Hidden);
    // Both new files are several times larger than the room that is left.
    QList<Playlist> catalogue = config.playlists();
    catalogue.last().name = QString(64 * 1024, u'x');
    config.setPlaylists(catalogue);

    rlimit saved {};
    getrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limited{12 * 1024, saved.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limited);
    StdoutCapture out;
    config.writePlaylistTracks(mine, manyTracks(400));
    config.saveSettings();
    const QStringList lines = out.lines();
    setrlimit(RLIMIT_FSIZE, &saved);
    checkLines(lines, {writeFailed, saveFailed});
    // The atomic write left the old playlist whole and no temporary file behind.
    QCOMPARE(readFile(playlist), playlistBefore);
    QCOMPARE(QFileInfo(playlist).dir().entryList(QDir::AllEntries | QDir::Hidden), playlistFolderBefore);
    // The plain write could not finish, but what was saved before is put back.
    QCOMPARE(readFile(settingsPath()), settingsBefore);
    QCOMPARE(config.playlists(), catalogue);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, FaultMatrixStoreTest)
#include "test_faultmatrix_store.moc"
