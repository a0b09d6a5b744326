// Faults of the file system under the store and the themes: folders that
// cannot be written, things that are not what they should be, a disk that
// fills up while writing, a Documents folder that cannot be made. Each must
// end in one clear line per failure, no crash, and no file lost or cut short.
#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>

#include <csignal>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

QString documents(const QString& relative = {})
{
    return relative.isEmpty() ? TestEnvironment::documents()
                              : TestEnvironment::documents() + QLatin1Char('/') + relative;
}

QString settingsPath()
{
    return documents(QStringLiteral("plinkBox-1/plinkBox-settings.json"));
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// Every file and folder under folder with the bytes of each file: two
// snapshots are equal only if nothing was added, removed or changed.
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

// Checks each printed line against its expected beginning, in order.
bool linesStartWith(const QStringList& lines, const QStringList& prefixes)
{
    if (lines.size() != prefixes.size())
        return false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!lines.at(i).startsWith(prefixes.at(i)))
            return false;
    }
    return true;
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

// Root writes through permission bits, so as root the faults need a mount
// of their own. The test process moves into a private mount namespace once;
// every mount made there disappears with the process, even if it crashes.
bool privateMounts()
{
    static const bool made = unshare(CLONE_NEWNS) == 0
        && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return made;
}

// Makes folder and everything in it read-only for this process, as long as
// it lives: through a read-only bind mount as root, by permission bits
// otherwise. skipReason() says why it could not be done.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(const QString& folder)
        : m_folder(folder)
    {
        const QByteArray path = QFile::encodeName(folder);
        if (geteuid() != 0) {
            setWritable(false);
            m_done = true;
        } else if (!privateMounts()) {
            m_reason = QStringLiteral("running as root without permission to mount: chmod does not stop root");
        } else if (mount(path.constData(), path.constData(), nullptr, MS_BIND, nullptr) == 0) {
            m_mounted = true;
            m_done = mount(nullptr, path.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
            if (!m_done)
                m_reason = QStringLiteral("a read-only bind mount was refused");
        } else {
            m_reason = QStringLiteral("a bind mount was refused");
        }
    }
    ~ReadOnlyFolder()
    {
        if (m_mounted)
            umount2(QFile::encodeName(m_folder).constData(), MNT_DETACH);
        else if (m_done)
            setWritable(true);
    }
    QString skipReason() const { return m_done ? QString() : m_reason; }

private:
    void setWritable(bool writable)
    {
        const auto apply = [writable](const QString& path) {
            struct stat info {};
            const QByteArray name = QFile::encodeName(path);
            if (lstat(name.constData(), &info) != 0 || S_ISLNK(info.st_mode))
                return;
            chmod(name.constData(), writable ? (info.st_mode | S_IWUSR) : (info.st_mode & ~mode_t(0222)));
        };
        apply(m_folder);
        QDirIterator it(m_folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            apply(it.next());
    }

    QString m_folder;
    QString m_reason;
    bool m_done = false;
    bool m_mounted = false;
};

// How a disk runs out of room in the middle of a write.
enum class FullDisk { fileSizeLimit, smallFilesystem };

// A file-size limit lets a write get as far as the limit and then fails it
// (EFBIG), for root as well; the process keeps running because SIGXFSZ is
// ignored. The limit is lifted again when this goes.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_saved);
        m_savedHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limited = m_saved;
        limited.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_saved);
        std::signal(SIGXFSZ, m_savedHandler);
    }

private:
    rlimit m_saved {};
    void (*m_savedHandler)(int) = SIG_DFL;
};

// A tmpfs of its own as the Documents folder (root, private mounts only).
class SmallDocuments
{
public:
    SmallDocuments()
    {
        const QByteArray path = QFile::encodeName(documents());
        m_mounted = privateMounts()
            && mount("tmpfs", path.constData(), "tmpfs", 0, "size=256k,mode=0755") == 0;
    }
    ~SmallDocuments()
    {
        if (m_mounted)
            umount2(QFile::encodeName(documents()).constData(), MNT_DETACH);
    }
    bool mounted() const { return m_mounted; }

    // Fills the filesystem until only about `room` bytes are left.
    static bool leaveRoom(qint64 room)
    {
        struct statvfs info {};
        if (statvfs(QFile::encodeName(documents()).constData(), &info) != 0)
            return false;
        const qint64 free = qint64(info.f_bavail) * qint64(info.f_bsize);
        return free <= room || writeFile(documents(QStringLiteral("filler")), QByteArray(free - room, 'x'));
    }

private:
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

    void readOnlyFolderFailsEachWriteAndKeepsItsFiles_data();
    void readOnlyFolderFailsEachWriteAndKeepsItsFiles();
    void misplacedFilesAreReportedAndLeftAsTheyAre_data();
    void misplacedFilesAreReportedAndLeftAsTheyAre();
    void fullDiskFailsWritesAndKeepsTheOldFiles_data();
    void fullDiskFailsWritesAndKeepsTheOldFiles();
    void documentsThatCannotBeMadeAreFatal_data();
    void documentsThatCannotBeMadeAreFatal();
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

void perform(FaultMatrixStoreTest::Action action, Config& config, const QUuid& mine)
{
    using Action = FaultMatrixStoreTest::Action;
    switch (action) {
    case Action::saveSettings:
        config.setPlaysSounds(!config.playsSounds());
        config.saveSettings();
        break;
    case Action::createPlaylist: config.createPlaylist(); break;
    case Action::readTracks:
        config.setCurrentPlaylistIndex(config.playlists().size() - 1);
        config.nextTrack();
        break;
    case Action::writeTracks: config.writePlaylistTracks(mine, manyTracks(3)); break;
    case Action::deletePlaylist: config.deletePlaylist(mine); break;
    case Action::writeDefaultTheme: config.writeDefaultTheme(config.currentTheme()); break;
    case Action::start: Config again; break;
    }
}

} // namespace

void FaultMatrixStoreTest::readOnlyFolderFailsEachWriteAndKeepsItsFiles_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("remove"); // made missing before the folder turns read-only
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("printed");

    const QString app = QStringLiteral("plinkBox-1");
    const QString playlists = QStringLiteral("plinkBox-1/Playlists");
    const QString themes = QStringLiteral("plinkBox/Themes");
    const QString save = QStringLiteral("Failed to save JSON data: ");
    const QString trackWrite = QStringLiteral("Failed to write theme.json: ");
    QTest::newRow("application folder: save") << app << QStringList() << Action::saveSettings << QStringList{save};
    QTest::newRow("application folder: new playlist")
        << app << QStringList() << Action::createPlaylist << QStringList{QStringLiteral("Could not write"), save};
    QTest::newRow("application folder: first start")
        << app << QStringList{QStringLiteral("plinkBox-1/plinkBox-settings.json")} << Action::start
        << QStringList{save};
    QTest::newRow("playlists folder: tracks") << playlists << QStringList() << Action::writeTracks
                                              << QStringList{trackWrite};
    QTest::newRow("playlists folder: delete")
        << playlists << QStringList() << Action::deletePlaylist
        << QStringList{QStringLiteral("Failed to delete playlist file: ")};
    QTest::newRow("themes folder: default layout")
        << themes << QStringList() << Action::writeDefaultTheme << QStringList{trackWrite};
    // The Themes folder itself cannot be made: reported, and the start goes on.
    QTest::newRow("themes parent: first start")
        << QStringLiteral("plinkBox") << QStringList{themes, QStringLiteral("plinkBox-1")} << Action::start
        << QStringList{QStringLiteral("Could not create the folder"), QStringLiteral("New playlist written successfully.")};
}

void FaultMatrixStoreTest::readOnlyFolderFailsEachWriteAndKeepsItsFiles()
{
    QFETCH(QString, folder);
    QFETCH(QStringList, remove);
    QFETCH(Action, action);
    QFETCH(QStringList, printed);

    auto config = std::make_unique<Config>();
    const QUuid mine = setUpLibrary(*config);
    for (const QString& path : std::as_const(remove)) {
        QFile::remove(documents(path));
        QDir(documents(path)).removeRecursively();
    }
    if (action == Action::start)
        config.reset();
    const QMap<QString, QByteArray> before = snapshot(documents(folder));

    QStringList lines;
    {
        const ReadOnlyFolder readOnly(documents(folder));
        if (!readOnly.skipReason().isEmpty())
            QSKIP(qPrintable(readOnly.skipReason()));
        StdoutCapture out;
        perform(action, *config, mine);
        lines = out.lines();
    }
    QVERIFY2(linesStartWith(lines, printed), qPrintable(lines.join(QLatin1Char('\n'))));
    QCOMPARE(snapshot(documents(folder)), before);
}

void FaultMatrixStoreTest::misplacedFilesAreReportedAndLeftAsTheyAre_data()
{
    QTest::addColumn<QString>("thing");      // what takes the file's place
    QTest::addColumn<bool>("ofPlaylist");    // else of the settings file
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("printed");

    const QString save = QStringLiteral("Failed to save JSON data: ");
    QTest::newRow("playlist is a folder: read") << "folder" << true << Action::readTracks
                                                << QStringList{QStringLiteral("Could not read")};
    QTest::newRow("playlist is a folder: write") << "folder" << true << Action::writeTracks
                                                 << QStringList{QStringLiteral("Failed to write theme.json: ")};
    QTest::newRow("playlist is a folder: delete")
        << "folder" << true << Action::deletePlaylist << QStringList{QStringLiteral("Failed to delete playlist file: ")};
    // Opening a named pipe waits for the other end: nothing may open one.
    QTest::newRow("playlist is a named pipe: read") << "pipe" << true << Action::readTracks
                                                    << QStringList{QStringLiteral("Could not read")};
    // The atomic write puts a whole new file in the pipe's place.
    QTest::newRow("playlist is a named pipe: write") << "pipe" << true << Action::writeTracks << QStringList();
    QTest::newRow("settings is a named pipe: start")
        << "pipe" << false << Action::start << QStringList{QStringLiteral("Could not read"), save};
    // A link to nowhere is followed: the defaults land where it points if
    // that folder exists; if not, the save says so. The link stays a link.
    QTest::newRow("settings link to nowhere: start") << "dangling link" << false << Action::start
                                                     << QStringList{save};
    QTest::newRow("settings link to a missing file: start")
        << "link to missing file" << false << Action::start << QStringList();
    QTest::newRow("settings link to a folder: start")
        << "link to folder" << false << Action::start << QStringList{QStringLiteral("Could not read"), save};
    QTest::newRow("settings link to a folder: save") << "link to folder" << false << Action::saveSettings
                                                     << QStringList{save};
}

void FaultMatrixStoreTest::misplacedFilesAreReportedAndLeftAsTheyAre()
{
    QFETCH(QString, thing);
    QFETCH(bool, ofPlaylist);
    QFETCH(Action, action);
    QFETCH(QStringList, printed);

    auto config = std::make_unique<Config>();
    const QUuid mine = setUpLibrary(*config);
    const QString path = ofPlaylist ? config->playlistFileURL(mine) : settingsPath();
    const QString elsewhere = TestEnvironment::home() + QStringLiteral("/elsewhere");
    QVERIFY(QFile::remove(path));
    if (thing == QLatin1String("folder")) {
        // A folder with something of the user's in it: nothing may remove it.
        QVERIFY(writeFile(path + QStringLiteral("/keep.txt"), "mine"));
    } else if (thing == QLatin1String("pipe")) {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (thing == QLatin1String("dangling link")) {
        QVERIFY(QFile::link(elsewhere + QStringLiteral("/missing/settings.json"), path));
    } else if (thing == QLatin1String("link to missing file")) {
        QVERIFY(QDir().mkpath(elsewhere));
        QVERIFY(QFile::link(elsewhere + QStringLiteral("/settings.json"), path));
    } else {
        QVERIFY(writeFile(elsewhere + QStringLiteral("/keep.txt"), "mine"));
        QVERIFY(QFile::link(elsewhere, path));
    }
    if (action == Action::start)
        config.reset();
    const QString linkTarget = QFileInfo(path).symLinkTarget();

    QStringList lines;
    {
        StdoutCapture out;
        alarm(60); // a read or write that waits for ever ends the test as a failure
        perform(action, *config, mine);
        alarm(0);
        lines = out.lines();
    }
    QVERIFY2(linesStartWith(lines, printed), qPrintable(lines.join(QLatin1Char('\n'))));
    if (thing == QLatin1String("folder") || thing == QLatin1String("link to folder"))
        QCOMPARE(readFile((thing == QLatin1String("folder") ? path : elsewhere) + QStringLiteral("/keep.txt")),
                 QByteArray("mine"));
    QCOMPARE(QFileInfo(path).symLinkTarget(), linkTarget);
    if (thing == QLatin1String("pipe"))
        QCOMPARE(QFileInfo(path).isFile(), action == Action::writeTracks);
    if (thing == QLatin1String("link to missing file"))
        QVERIFY(settingsDataFromJson(readFile(path)));
}

void FaultMatrixStoreTest::fullDiskFailsWritesAndKeepsTheOldFiles_data()
{
    QTest::addColumn<FullDisk>("disk");
    QTest::newRow("file size limit") << FullDisk::fileSizeLimit;
    QTest::newRow("small filesystem") << FullDisk::smallFilesystem;
}

void FaultMatrixStoreTest::fullDiskFailsWritesAndKeepsTheOldFiles()
{
    QFETCH(FullDisk, disk);
    std::optional<SmallDocuments> smallDocuments;
    if (disk == FullDisk::smallFilesystem) {
        smallDocuments.emplace();
        if (!smallDocuments->mounted())
            QSKIP("no permission to mount a small filesystem here; the file size limit row covers the fault");
    }
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

    QStringList lines;
    {
        constexpr qint64 room = 12 * 1024;
        std::optional<FileSizeLimit> limit;
        if (disk == FullDisk::fileSizeLimit)
            limit.emplace(room);
        else
            QVERIFY(SmallDocuments::leaveRoom(room));
        StdoutCapture out;
        config.writePlaylistTracks(mine, manyTracks(400));
        config.saveSettings();
        lines = out.lines();
    }
    QVERIFY2(linesStartWith(lines, {QStringLiteral("Failed to write theme.json: "),
                                    QStringLiteral("Failed to save JSON data: ")}),
             qPrintable(lines.join(QLatin1Char('\n'))));
    // The atomic write left the old playlist whole and no temporary file behind.
    QCOMPARE(readFile(playlist), playlistBefore);
    QCOMPARE(QFileInfo(playlist).dir().entryList(QDir::AllEntries | QDir::Hidden), playlistFolderBefore);
    // The plain write could not finish, but what was saved before is still there.
    QCOMPARE(readFile(settingsPath()), settingsBefore);
    QCOMPARE(config.playlists(), catalogue);
}

void FaultMatrixStoreTest::documentsThatCannotBeMadeAreFatal_data()
{
    // A plain file in its place is covered with the store's own start-up tests.
    QTest::addColumn<QString>("blocker");
    QTest::newRow("a link to nowhere in its place") << "dangling link";
    QTest::newRow("a file where a parent folder should be") << "file parent";
}

void FaultMatrixStoreTest::documentsThatCannotBeMadeAreFatal()
{
    QFETCH(QString, blocker);
    const QString home = TestEnvironment::home() + QStringLiteral("/blocked");
    QVERIFY(QDir().mkpath(home));
    QString target = home + QStringLiteral("/Documents");
    if (blocker == QLatin1String("dangling link")) {
        QVERIFY(QFile::link(home + QStringLiteral("/gone/Documents"), target));
    } else {
        // The user's folder list names a folder below a file.
        QVERIFY(writeFile(home + QStringLiteral("/notes"), "not a folder"));
        QVERIFY(writeFile(home + QStringLiteral("/.config/user-dirs.dirs"),
                          "XDG_DOCUMENTS_DIR=\"$HOME/notes/Documents\"\n"));
        target = home + QStringLiteral("/notes/Documents");
    }
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PLINKBOX_EXECUTABLE), {});
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QVERIFY(process.exitCode() != 0);
    const QString output = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(output.startsWith(QStringLiteral("Unable to locate document directory: ")), qPrintable(output));
    QCOMPARE(output.count(QLatin1Char('\n')), 1);
    QVERIFY(!QFileInfo(target).isDir());
}

PLINK_TEST_MAIN_WITH(QGuiApplication, FaultMatrixStoreTest)
#include "test_faultmatrix_store.moc"
