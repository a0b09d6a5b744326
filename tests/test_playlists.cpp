#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>

namespace {

QString playlistsFolder()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/Playlists");
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<QUuid> storedIds()
{
    const auto decoded = settingsDataFromJson(
        readFile(TestEnvironment::documents() + QStringLiteral("/plinkBox-1/plinkBox-settings.json")));
    QList<QUuid> ids;
    for (const Playlist& playlist : decoded.value.value_or(SettingsData{}).playlists)
        ids.append(playlist.id);
    return ids;
}

QList<Track> someTracks(int count)
{
    QList<Track> tracks;
    for (int i = 0; i < count; ++i)
        tracks.append(Track::make(QStringLiteral("file:///music/%1.mp3").arg(i), QStringLiteral("T%1").arg(i),
                                  QStringLiteral("A")));
    return tracks;
}

} // namespace

class PlaylistsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void createdPlaylistsAreAppendedWrittenAndSaved();
    void deletingTheOnlyPlaylistLeavesAFreshOne();
    void deletingRemovesFileAndEntryByIdOnly();
    void deletingAnUnknownIdOnlyRemovesItsFile();
    void anExistingEmptyFolderIsLeftAlone();
    void trackWritesAreAtomicAndReportedWithTheirWording();
    void currentTracksAreReadAfreshAndFailuresReported();
    void indexesFromFilesAreBroughtIntoRange();
};

void PlaylistsTest::createdPlaylistsAreAppendedWrittenAndSaved()
{
    Config config;
    config.setLastSelectedPlaylistID(5);
    config.setCurrentPlaylistIndex(3);
    StdoutCapture out;
    config.createPlaylist();
    config.createPlaylist();
    QCOMPARE(out.lines(), QStringList(2, QStringLiteral("New playlist written successfully.")));
    QCOMPARE(config.lastSelectedPlaylistID(), 0);
    QCOMPARE(config.currentPlaylistIndex(), 3); // not touched
    const QList<Playlist> playlists = config.playlists();
    QCOMPARE(playlists.size(), 3);
    QCOMPARE(playlists.at(1).name, QStringLiteral("Untitled"));
    QCOMPARE(playlists.at(2).name, QStringLiteral("Untitled"));
    QVERIFY(playlists.at(1).id != playlists.at(2).id);
    QCOMPARE(QDir(playlistsFolder()).entryList(QDir::Files).size(), 3);
    QCOMPARE(storedIds().size(), 3);
    QCOMPARE(config.playlistFileURL(playlists.at(2).id),
             playlistsFolder() + QLatin1Char('/') + uuidText(playlists.at(2).id) + QStringLiteral(".json"));
}

void PlaylistsTest::deletingTheOnlyPlaylistLeavesAFreshOne()
{
    Config config;
    const Playlist only = config.playlists().first();
    const QString oldFile = config.playlistFileURL(only.id);
    config.deletePlaylist(only.id);
    QCOMPARE(config.playlists().size(), 1);
    const Playlist fresh = config.playlists().first();
    QVERIFY(fresh.id != only.id);
    QCOMPARE(fresh.name, QStringLiteral("Untitled"));
    QVERIFY(!QFile::exists(oldFile));
    QCOMPARE(readFile(config.playlistFileURL(fresh.id)), QByteArray("{\n  \"tracks\" : []\n}"));
    QCOMPARE(storedIds(), QList<QUuid>{fresh.id});
}

void PlaylistsTest::deletingRemovesFileAndEntryByIdOnly()
{
    Config config;
    config.createPlaylist();
    config.createPlaylist();
    QList<Playlist> renamed = config.playlists();
    for (Playlist& playlist : renamed)
        playlist.name = QStringLiteral("Same");
    config.setPlaylists(renamed);
    config.setLastSelectedPlaylistID(2);
    config.deletePlaylist(renamed.at(1).id);
    QCOMPARE(config.playlists(), (QList<Playlist>{renamed.at(0), renamed.at(2)}));
    QCOMPARE(config.lastSelectedPlaylistID(), 0);
    QVERIFY(!QFile::exists(config.playlistFileURL(renamed.at(1).id)));
    QCOMPARE(storedIds().size(), 2);

    // A file that cannot be removed is reported; the entry still goes.
    QFile::remove(config.playlistFileURL(renamed.at(2).id));
    QDir().mkpath(config.playlistFileURL(renamed.at(2).id));
    StdoutCapture out;
    config.deletePlaylist(renamed.at(2).id);
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(out.lines().first().startsWith(QStringLiteral("Failed to delete playlist file: ")));
    QCOMPARE(config.playlists(), QList<Playlist>{renamed.at(0)});
}

void PlaylistsTest::deletingAnUnknownIdOnlyRemovesItsFile()
{
    Config config;
    config.createPlaylist(); // with a single entry, deleting first makes a fresh playlist
    const QList<Playlist> before = config.playlists();
    const QUuid stray = QUuid::createUuid();
    QFile file(config.playlistFileURL(stray));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const QString settingsFile = TestEnvironment::documents() + QStringLiteral("/plinkBox-1/plinkBox-settings.json");
    QFile::remove(settingsFile); // a save would bring it back
    QSignalSpy spy(&config, &Config::changed);
    config.deletePlaylist(stray);
    QVERIFY(!QFile::exists(config.playlistFileURL(stray)));
    QVERIFY(!QFile::exists(settingsFile));
    QCOMPARE(spy.count(), 0);
    QCOMPARE(config.playlists(), before);
}

void PlaylistsTest::anExistingEmptyFolderIsLeftAlone()
{
    QDir().mkpath(playlistsFolder());
    Config config;
    QVERIFY(config.playlists().isEmpty());
    QVERIFY(QDir(playlistsFolder()).entryList(QDir::Files).isEmpty());
    // The same when something that is not a folder stands there.
    TestEnvironment::wipeHome();
    QDir().mkpath(TestEnvironment::documents() + QStringLiteral("/plinkBox-1"));
    QFile blocker(playlistsFolder());
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    Config blocked;
    QVERIFY(blocked.playlists().isEmpty());
}

void PlaylistsTest::trackWritesAreAtomicAndReportedWithTheirWording()
{
    Config config;
    const QUuid id = config.playlists().first().id;
    const QList<Track> tracks = someTracks(3);
    config.writePlaylistTracks(id, tracks);
    QCOMPARE(config.readPlaylistTracks(id), std::optional<QList<Track>>(tracks));
    QCOMPARE(QDir(playlistsFolder()).entryList(QDir::Files).size(), 1); // no temporary left behind

    // A failed write leaves the old file whole.
    const QByteArray before = readFile(config.playlistFileURL(id));
    QDir(playlistsFolder()).rename(playlistsFolder(), playlistsFolder() + QStringLiteral("-moved"));
    QFile blocker(playlistsFolder());
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    StdoutCapture out;
    config.writePlaylistTracks(id, someTracks(1));
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(out.lines().first().startsWith(QStringLiteral("Failed to write theme.json: ")));
    QCOMPARE(readFile(playlistsFolder() + QStringLiteral("-moved/") + uuidText(id) + QStringLiteral(".json")), before);
}

void PlaylistsTest::currentTracksAreReadAfreshAndFailuresReported()
{
    Config config;
    const QUuid id = config.playlists().first().id;
    QCOMPARE(config.currentPlaylistTracks(), std::optional<QList<Track>>(QList<Track>{}));
    config.writePlaylistTracks(id, someTracks(2));
    QCOMPARE(config.currentPlaylistTracks()->size(), 2);

    QFile file(config.playlistFileURL(id));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("{\"tracks\" : [{}]}");
    file.close();
    StdoutCapture out;
    QVERIFY(!config.currentPlaylistTracks());
    QFile::remove(config.playlistFileURL(id));
    QVERIFY(!config.currentPlaylistTracks());
    QCOMPARE(out.lines().size(), 2);
}

void PlaylistsTest::indexesFromFilesAreBroughtIntoRange()
{
    Config config;
    config.setCurrentPlaylistIndex(7);
    QVERIFY(config.bringCurrentPlaylistIntoRange());
    QCOMPARE(config.currentPlaylistIndex(), 0);
    config.setCurrentPlaylistIndex(-1);
    QVERIFY(config.bringCurrentPlaylistIntoRange());
    QCOMPARE(config.currentPlaylistIndex(), 0);
    config.setPlaylists({});
    QVERIFY(!config.bringCurrentPlaylistIntoRange());
}

PLINK_TEST_MAIN_WITH(QGuiApplication, PlaylistsTest)
#include "test_playlists.moc"
