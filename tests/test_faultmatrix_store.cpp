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
#include <sys/statvfs.h>
#include <unistd.h>

using TestFiles::readFile;
using TestFiles::settingsPath;
using TestFiles::writeFile;

namespace {

QString documents(const QString& relative = {})
{
    return TestEnvironment::documents() + QLatin1Char('/') + relative;
}

// Every entry under folder with each file's bytes: equal only if nothing changed.
QMap<QString, QByteArray> snapshot(const QString& folder)
{
    QMap<QString, QByteArray> entries;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        entries.insert(path, it.fileInfo().isDir() ? QByteArray("<folder>") : readFile(path));
    }
    return entries;
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

// Root writes through permission bits, so as root the faults need mounts of
// their own, in a private namespace that goes with the process.
bool privateMounts()
{
    static const bool made = unshare(CLONE_NEWNS) == 0
        && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return made;
}

// Makes folder and everything in it read-only while it lives: a read-only
// bind mount as root, permission bits otherwise.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(const QString& folder)
        : m_path(QFile::encodeName(folder))
    {
        if (geteuid() != 0) {
            setWritable(false);
            m_done = true;
        } else if (!privateMounts()) {
            m_reason = "running as root without permission to mount: chmod does not stop root";
        } else if (mount(m_path.constData(), m_path.constData(), nullptr, MS_BIND, nullptr) == 0) {
            m_mounted = true;
            m_done = mount(nullptr, m_path.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
            if (!m_done)
                m_reason = "a read-only bind mount was refused";
        } else {
            m_reason = "a bind mount was refused";
        }
    }
    ~ReadOnlyFolder()
    {
        if (m_mounted)
            umount2(m_path.constData(), MNT_DETACH);
        else if (m_done)
            setWritable(true);
    }
    const char* skipReason() const { return m_done ? nullptr : m_reason; }

private:
    void setWritable(bool writable)
    {
        QStringList paths{QFile::decodeName(m_path)};
        QDirIterator it(paths.first(), QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            paths.append(it.next());
        for (const QString& path : std::as_const(paths)) {
            struct stat info {};
            const QByteArray name = QFile::encodeName(path);
            if (lstat(name.constData(), &info) == 0 && !S_ISLNK(info.st_mode))
                chmod(name.constData(), writable ? (info.st_mode | S_IWUSR) : (info.st_mode & ~mode_t(0222)));
        }
    }

    QByteArray m_path;
    const char* m_reason = nullptr;
    bool m_done = false;
    bool m_mounted = false;
};

} // namespace

class FaultMatrixStoreTest : public QObject
{
    Q_OBJECT

public:
    enum class Action { saveSettings, createPlaylist, readTracks, writeTracks, deletePlaylist, writeDefaultTheme, start };
    Q_ENUM(Action)

private slots:
    void init() { TestEnvironment::wipeHome(); }
    void faultsAreReportedAndFilesKept_data();
    void faultsAreReportedAndFilesKept();
    void fullDiskFailsWritesAndKeepsTheOldFiles_data();
    void fullDiskFailsWritesAndKeepsTheOldFiles();
};

namespace {

// A first start, then a second playlist "Mine" holding one track; returns its id.
QUuid setUpLibrary(Config& config)
{
    config.createPlaylist();
    QList<Playlist> catalogue = config.playlists();
    catalogue.last().name = QStringLiteral("Mine");
    config.setPlaylists(catalogue);
    config.saveSettings();
    config.writePlaylistTracks(catalogue.last().id, manyTracks(1));
    return catalogue.last().id;
}

// config is none for a start.
QStringList perform(FaultMatrixStoreTest::Action action, Config* config, const QUuid& mine)
{
    using Action = FaultMatrixStoreTest::Action;
    StdoutCapture out;
    switch (action) {
    case Action::saveSettings:
        config->setPlaysSounds(!config->playsSounds());
        config->saveSettings();
        break;
    case Action::createPlaylist: config->createPlaylist(); break;
    case Action::readTracks:
        config->setCurrentPlaylistIndex(config->playlists().size() - 1);
        config->nextTrack();
        break;
    case Action::writeTracks: config->writePlaylistTracks(mine, manyTracks(3)); break;
    case Action::deletePlaylist: config->deletePlaylist(mine); break;
    case Action::writeDefaultTheme: config->writeDefaultTheme(config->currentTheme()); break;
    case Action::start: Config again; break;
    }
    return out.lines();
}

const QString saveFailed = QStringLiteral("Failed to save JSON data: ");
const QString writeFailed = QStringLiteral("Failed to write theme.json: ");
const QString deleteFailed = QStringLiteral("Failed to delete playlist file: ");

} // namespace

void FaultMatrixStoreTest::faultsAreReportedAndFilesKept_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("where"); // a folder made read-only, else "playlist" or "settings"
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("printed");

    const QString app = QStringLiteral("plinkBox-1");
    const QString playlists = QStringLiteral("plinkBox-1/Playlists");
    const QString couldNotRead = QStringLiteral("Could not read");
    const auto row = [](const char* fault, const QString& where, Action action, const QStringList& printed) {
        QTest::addRow("%s: %s, %s", fault, qPrintable(where), QMetaEnum::fromType<Action>().valueToKey(int(action)))
            << QString::fromLatin1(fault) << where << action << printed;
    };
    row("read-only", app, Action::saveSettings, {saveFailed});
    row("read-only", app, Action::createPlaylist, {QStringLiteral("Could not write"), saveFailed});
    row("read-only", playlists, Action::writeTracks, {writeFailed});
    row("read-only", playlists, Action::deletePlaylist, {deleteFailed});
    row("read-only", QStringLiteral("plinkBox/Themes"), Action::writeDefaultTheme, {writeFailed});
    // The Themes folder cannot be made at a first start: reported, and the start goes on.
    row("read-only, empty", QStringLiteral("plinkBox"), Action::start,
        {QStringLiteral("Could not create the folder"), QStringLiteral("New playlist written successfully.")});
    row("folder", QStringLiteral("playlist"), Action::deletePlaylist, {deleteFailed});
    // Opening a named pipe waits for the other end: nothing may open one.
    row("pipe", QStringLiteral("playlist"), Action::readTracks, {couldNotRead});
    row("pipe", QStringLiteral("settings"), Action::start, {couldNotRead, saveFailed});
    // A link is followed and stays a link.
    row("dangling link", QStringLiteral("settings"), Action::start, {saveFailed});
    row("link to folder", QStringLiteral("settings"), Action::start, {couldNotRead, saveFailed});
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
    QStringList lines;
    if (fault.startsWith(QLatin1String("read-only"))) {
        if (fault.endsWith(QLatin1String("empty"))) {
            QDir(documents(QStringLiteral("plinkBox/Themes"))).removeRecursively();
            QDir(documents(QStringLiteral("plinkBox-1"))).removeRecursively();
        }
        const QMap<QString, QByteArray> before = snapshot(documents(where));
        {
            const ReadOnlyFolder readOnly(documents(where));
            if (readOnly.skipReason())
                QSKIP(readOnly.skipReason());
            lines = perform(action, config.get(), mine);
        }
        QCOMPARE(snapshot(documents(where)), before);
    } else {
        const QString elsewhere = TestEnvironment::home() + QStringLiteral("/elsewhere");
        QVERIFY(QFile::remove(path));
        // A folder holds something of the user's: nothing may remove it.
        const QString keep = (fault == QLatin1String("folder") ? path : elsewhere) + QStringLiteral("/keep.txt");
        if (fault == QLatin1String("pipe"))
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (fault == QLatin1String("dangling link"))
            QVERIFY(QFile::link(elsewhere + QStringLiteral("/missing/settings.json"), path));
        else
            QVERIFY(writeFile(keep, "mine"));
        if (fault == QLatin1String("link to folder"))
            QVERIFY(QFile::link(elsewhere, path));
        const QString linkTarget = QFileInfo(path).symLinkTarget();
        alarm(60); // a read or write that waits for ever ends the test as a failure
        lines = perform(action, config.get(), mine);
        alarm(0);
        if (fault.contains(QLatin1String("folder")))
            QCOMPARE(readFile(keep), QByteArray("mine"));
        QCOMPARE(QFileInfo(path).symLinkTarget(), linkTarget);
    }
    checkLines(lines, printed);
}

void FaultMatrixStoreTest::fullDiskFailsWritesAndKeepsTheOldFiles_data()
{
    QTest::addColumn<bool>("smallFilesystem"); // else a file-size limit
    QTest::newRow("file size limit") << false;
    QTest::newRow("small filesystem") << true;
}

void FaultMatrixStoreTest::fullDiskFailsWritesAndKeepsTheOldFiles()
{
    QFETCH(bool, smallFilesystem);
    // A small tmpfs as the Documents folder (root, private mounts only).
    const QByteArray documentsPath = QFile::encodeName(documents());
    if (smallFilesystem
        && !(privateMounts() && mount("tmpfs", documentsPath.constData(), "tmpfs", 0, "size=256k,mode=0755") == 0))
        QSKIP("no permission to mount a small filesystem here; the file size limit row covers the fault");
    const auto unmount = qScopeGuard([&] {
        if (smallFilesystem)
            umount2(documentsPath.constData(), MNT_DETACH);
    });
    Config config;
    const QUuid mine = setUpLibrary(config);
    const QString playlist = config.playlistFileURL(mine);
    const QByteArray playlistBefore = readFile(playlist);
    const QByteArray settingsBefore = readFile(settingsPath());
    const QStringList playlistFolderBefore = QFileInfo(playlist).dir().entryList(QDir::AllEntries | QDir::Hidden);
    // Both new files are several times larger than the room that is left.
    QList<Playlist> catalogue = config.playlists();
    for (int i = 0; i < 400; ++i)
        catalogue.append({QUuid::createUuid(), QStringLiteral("Playlist number %1").arg(i)});
    config.setPlaylists(catalogue);

    constexpr qint64 room = 12 * 1024;
    rlimit saved {};
    getrlimit(RLIMIT_FSIZE, &saved);
    if (smallFilesystem) {
        // Fill it until only room bytes are left.
        struct statvfs info {};
        QCOMPARE(statvfs(documentsPath.constData(), &info), 0);
        const qint64 free = qint64(info.f_bavail) * qint64(info.f_bsize);
        QVERIFY(free <= room || writeFile(documents(QStringLiteral("filler")), QByteArray(free - room, 'x')));
    } else {
        // A write gets as far as the limit and then fails (EFBIG), for root
        // too; the process goes on with SIGXFSZ ignored.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limited{room, saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    StdoutCapture out;
    config.writePlaylistTracks(mine, manyTracks(400));
    config.saveSettings();
    const QStringList lines = out.lines();
    setrlimit(RLIMIT_FSIZE, &saved);
    checkLines(lines, {writeFailed, saveFailed});
    // The atomic write left the old playlist whole and no temporary file behind.
    QCOMPARE(readFile(playlist), playlistBefore);
    QCOMPARE(QFileInfo(playlist).dir().entryList(QDir::AllEntries | QDir::Hidden), playlistFolderBefore);
    // The plain write could not finish, but what was saved before is still there.
    QCOMPARE(readFile(settingsPath()), settingsBefore);
    QCOMPARE(config.playlists(), catalogue);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, FaultMatrixStoreTest)
#include "test_faultmatrix_store.moc"
