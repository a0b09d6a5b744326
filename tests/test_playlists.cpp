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

} // namespace

class PlaylistsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void createdPlaylistsAreAppendedWrittenAndSaved();
    void deletingGoesByIdAndNeverEmptiesTheCatalogue();
    void tracksAreReadAfreshAndTheIndexKeptInRange();
};

void PlaylistsTest::createdPlaylistsAreAppendedWrittenAndSaved()
{
    QDir().mkpath(playlistsFolder()); // there but empty: a start makes no playlist
    Config config;
    QVERIFY(config.playlists().isEmpty());
    QVERIFY(QDir(playlistsFolder()).entryList(QDir::Files).isEmpty());
    config.createPlaylist();
    config.setLastSelectedPlaylistID(5);
    config.setCurrentPlaylistIndex(3);
    StdoutCapture out;
    config.createPlaylist();
    QCOMPARE(out.lines(), QStringList{QStringLiteral("New playlist written successfully.")});
    QCOMPARE(config.lastSelectedPlaylistID(), 0);
    QCOMPARE(config.currentPlaylistIndex(), 3); // not touched
    const Playlist added = config.playlists().value(1);
    QCOMPARE(added.name, QStringLiteral("Untitled"));
    QCOMPARE(config.playlistFileURL(added.id), playlistsFolder() + QLatin1Char('/') + uuidText(added.id) + QStringLiteral(".json"));
    QCOMPARE(readFile(config.playlistFileURL(added.id)), QByteArray("{\n  \"tracks\" : []\n}"));
    QCOMPARE(storedSettings().playlists, config.playlists());
}

void PlaylistsTest::deletingGoesByIdAndNeverEmptiesTheCatalogue()
{
    Config config;
    const Playlist only = config.playlists().first();
    config.deletePlaylist(only.id);
    const Playlist fresh = config.playlists().value(0);
    QCOMPARE(config.playlists().size(), 1);
    QVERIFY(fresh.id != only.id);
    QVERIFY(!QFile::exists(config.playlistFileURL(only.id)));
    QVERIFY(QFile::exists(config.playlistFileURL(fresh.id)));
    QCOMPARE(storedSettings().playlists, QList<Playlist>{fresh});

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
    QVERIFY(writeFile(config.playlistFileURL(stray), {}));
    QFile::remove(settingsPath());
    QSignalSpy spy(&config, &Config::changed);
    config.deletePlaylist(stray);
    QVERIFY(!QFile::exists(config.playlistFileURL(stray)));
    QVERIFY(!QFile::exists(settingsPath()));
    QCOMPARE(spy.count(), 0);

    // A file that cannot be removed (its message is checked with the other faults): the entry still goes.
    QFile::remove(config.playlistFileURL(three.at(2).id));
    QDir().mkpath(config.playlistFileURL(three.at(2).id));
    config.deletePlaylist(three.at(2).id);
    QCOMPARE(storedSettings().playlists, QList<Playlist>{three.at(0)});
}

void PlaylistsTest::tracksAreReadAfreshAndTheIndexKeptInRange()
{
    Config config;
    const QUuid id = config.playlists().first().id;
    QCOMPARE(config.currentPlaylistTracks(), std::optional(QList<Track>{}));
    const QList<Track> tracks{Track::make("file:///a.mp3", "A", "X"), Track::make("file:///b.mp3", "B", "Y")};
    config.writePlaylistTracks(id, tracks);
    QCOMPARE(config.currentPlaylistTracks(), std::optional(tracks));
    QCOMPARE(QDir(playlistsFolder()).entryList(QDir::Files).size(), 1); // no temporary left behind
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
