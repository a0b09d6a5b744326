#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>

using namespace TestFiles;

namespace {

QString playlistsFolder()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/Playlists");
}

void makeFile(const QString& path, const QByteArray& bytes = {})
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

QList<Playlist> storedCatalogue()
{
    return settingsDataFromJson(readFile(settingsPath())).value.value_or(SettingsData{}).playlists;
}

} // namespace

class PlaylistsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void createdPlaylistsAreAppendedWrittenAndSaved();
    void deletingGoesByIdAndNeverEmptiesTheCatalogue();
    void anExistingPlaylistsFolderIsLeftAlone();
    void trackWritesAreAtomicAndReportedWithTheirWording();
    void currentTracksAreReadAfreshAndKeptInRange();
};

void PlaylistsTest::createdPlaylistsAreAppendedWrittenAndSaved()
{
    Config config;
    config.setLastSelectedPlaylistID(5);
    config.setCurrentPlaylistIndex(3);
    StdoutCapture out;
    config.createPlaylist();
    QCOMPARE(out.lines(), QStringList{QStringLiteral("New playlist written successfully.")});
    QCOMPARE(config.lastSelectedPlaylistID(), 0);
    QCOMPARE(config.currentPlaylistIndex(), 3); // not touched
    const Playlist added = config.playlists().last();
    QCOMPARE(added.name, QStringLiteral("Untitled"));
    QVERIFY(added.id != config.playlists().first().id);
    QCOMPARE(config.playlistFileURL(added.id), playlistsFolder() + QLatin1Char('/') + uuidText(added.id) + QStringLiteral(".json"));
    QCOMPARE(readFile(config.playlistFileURL(added.id)), QByteArray("{\n  \"tracks\" : []\n}"));
    QCOMPARE(storedCatalogue(), config.playlists());
}

void PlaylistsTest::deletingGoesByIdAndNeverEmptiesTheCatalogue()
{
    Config config;
    const Playlist only = config.playlists().first();
    config.deletePlaylist(only.id);
    QCOMPARE(config.playlists().size(), 1);
    const Playlist fresh = config.playlists().first();
    QVERIFY(fresh.id != only.id);
    QVERIFY(!QFile::exists(config.playlistFileURL(only.id)));
    QVERIFY(QFile::exists(config.playlistFileURL(fresh.id)));
    QCOMPARE(storedCatalogue(), QList<Playlist>{fresh});

    // Same names, different ids: only the one asked for goes.
    config.createPlaylist();
    config.createPlaylist();
    const QList<Playlist> three = config.playlists();
    config.setLastSelectedPlaylistID(2);
    config.deletePlaylist(three.at(1).id);
    QCOMPARE(config.playlists(), (QList<Playlist>{three.at(0), three.at(2)}));
    QCOMPARE(config.lastSelectedPlaylistID(), 0);

    // An unknown id: its stray file goes, nothing else changes and nothing is saved.
    const QUuid stray = QUuid::createUuid();
    makeFile(config.playlistFileURL(stray));
    QFile::remove(settingsPath());
    QSignalSpy spy(&config, &Config::changed);
    config.deletePlaylist(stray);
    QVERIFY(!QFile::exists(config.playlistFileURL(stray)));
    QVERIFY(!QFile::exists(settingsPath()));
    QCOMPARE(spy.count(), 0);

    // A file that cannot be removed is reported; the entry still goes.
    QFile::remove(config.playlistFileURL(three.at(2).id));
    QDir().mkpath(config.playlistFileURL(three.at(2).id));
    StdoutCapture out;
    config.deletePlaylist(three.at(2).id);
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(out.lines().first().startsWith(QStringLiteral("Failed to delete playlist file: ")));
    QCOMPARE(config.playlists(), QList<Playlist>{three.at(0)});
}

void PlaylistsTest::anExistingPlaylistsFolderIsLeftAlone()
{
    QDir().mkpath(playlistsFolder());
    QVERIFY(Config().playlists().isEmpty());
    QVERIFY(QDir(playlistsFolder()).entryList(QDir::Files).isEmpty());
}

void PlaylistsTest::trackWritesAreAtomicAndReportedWithTheirWording()
{
    Config config;
    const QUuid id = config.playlists().first().id;
    const QList<Track> tracks{Track::make("file:///a.mp3", "A", "X"), Track::make("file:///b.mp3", "B", "Y")};
    config.writePlaylistTracks(id, tracks);
    QCOMPARE(config.readPlaylistTracks(id), std::optional<QList<Track>>(tracks));
    QCOMPARE(QDir(playlistsFolder()).entryList(QDir::Files).size(), 1); // no temporary left behind

    // A failed write leaves the old file whole: the folder is moved away and a file stands in its place.
    const QByteArray before = readFile(config.playlistFileURL(id));
    QDir().rename(playlistsFolder(), playlistsFolder() + QStringLiteral("-moved"));
    makeFile(playlistsFolder());
    StdoutCapture out;
    config.writePlaylistTracks(id, {});
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(out.lines().first().startsWith(QStringLiteral("Failed to write theme.json: ")));
    QCOMPARE(readFile(playlistsFolder() + QStringLiteral("-moved/") + uuidText(id) + QStringLiteral(".json")), before);
}

void PlaylistsTest::currentTracksAreReadAfreshAndKeptInRange()
{
    Config config;
    const QUuid id = config.playlists().first().id;
    QCOMPARE(config.currentPlaylistTracks()->size(), 0);
    config.writePlaylistTracks(id, {Track::make("file:///a.mp3", "A", "X")});
    QCOMPARE(config.currentPlaylistTracks()->size(), 1);
    makeFile(config.playlistFileURL(id), "{\"tracks\" : [{}]}");
    StdoutCapture out;
    QVERIFY(!config.currentPlaylistTracks());
    QCOMPARE(out.lines().size(), 1);

    for (qint64 index : {7, -1}) {
        config.setCurrentPlaylistIndex(index);
        QVERIFY(config.bringCurrentPlaylistIntoRange());
        QCOMPARE(config.currentPlaylistIndex(), 0);
    }
    config.setPlaylists({});
    QVERIFY(!config.bringCurrentPlaylistIntoRange());
}

PLINK_TEST_MAIN_WITH(QGuiApplication, PlaylistsTest)
#include "test_playlists.moc"
