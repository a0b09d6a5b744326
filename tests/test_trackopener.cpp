#include "app/appdelegate.h"
#include "app/trackopener.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "store/config.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QDir>
#include <QSignalSpy>

class TrackOpenerTest : public QObject
{
    Q_OBJECT

private slots:
    void argumentsBecomeFileUrls_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QUrl>("expected");
        QTest::newRow("relative path") << "Déjà vu #1 %.mp3"
                                       << QUrl::fromLocalFile(QDir::currentPath() + "/Déjà vu #1 %.mp3");
        QTest::newRow("absolute path") << "/music/a b.flac" << QUrl::fromLocalFile("/music/a b.flac");
        QTest::newRow("file URL") << "file:///music/a%20b.flac" << QUrl::fromLocalFile("/music/a b.flac");
        QTest::newRow("other URL") << "https://example.org/a.mp3" << QUrl("https://example.org/a.mp3");
    }
    void argumentsBecomeFileUrls()
    {
        QFETCH(QString, argument);
        QFETCH(QUrl, expected);
        QCOMPARE(TrackOpener::fromArgument(argument), expected);
    }

    // A Wayland session goes through XWayland, unless a platform was chosen.
    void platformOfTheSession()
    {
        const QByteArray chosen = qgetenv("QT_QPA_PLATFORM");
        const auto platformWith = [](const char* waylandDisplay, const char* platform) {
            qputenv("WAYLAND_DISPLAY", waylandDisplay);
            if (!*waylandDisplay)
                qunsetenv("WAYLAND_DISPLAY");
            qputenv("QT_QPA_PLATFORM", platform);
            if (!*platform)
                qunsetenv("QT_QPA_PLATFORM");
            AppDelegate::choosePlatform();
            return qgetenv("QT_QPA_PLATFORM");
        };
        QCOMPARE(platformWith("wayland-0", ""), "xcb;wayland");
        QCOMPARE(platformWith("wayland-0", "wayland"), "wayland");
        QCOMPARE(platformWith("", ""), "");
        qputenv("QT_QPA_PLATFORM", chosen);
    }

    // Files join the current playlist in one write, and the first of them plays.
    void openedFilesJoinThePlaylistAndPlay()
    {
        const QString folder = TestEnvironment::home() + QStringLiteral("/Music");
        QDir().mkpath(folder);
        QList<QUrl> files;
        for (const char* name : {"one.mp3", "Grüße #2.wav", "three.wav"}) {
            files.append(QUrl::fromLocalFile(folder + QLatin1Char('/') + QString::fromUtf8(name)));
            QVERIFY(AudioFixtures::makeTone(files.last().toLocalFile(), AudioFixtures::Tone(3)));
        }
        Config config;
        AudioPlayer player;
        Transport transport(config, player);
        TrackOpener opener(config, player, transport);
        const QUuid id = config.playlists().first().id;
        config.writePlaylistTracks(id, {Track::make(files.first().toString(QUrl::FullyEncoded), "One", "Me")});
        transport.playCurrentTrack();
        QSignalSpy writes(&config, &Config::playlistTracksWritten);
        QSignalSpy opened(&opener, &TrackOpener::opened);
        StdoutCapture output;
        opener.open({files.at(1), QUrl::fromLocalFile(folder + "/gone.mp3"), QUrl::fromLocalFile(folder),
                     QUrl("https://example.org/a.mp3"), files.at(2)});
        QVERIFY(opened.wait());
        QCOMPARE(opened.first().first().toInt(), 2);
        QCOMPARE(writes.count(), 1);
        const QList<Track> tracks = *config.readPlaylistTracks(id);
        QCOMPARE(tracks.size(), 3);
        QCOMPARE(QUrl(tracks.at(1).urlString), files.at(1));
        QCOMPARE(tracks.at(2).trackName, QStringLiteral("Track")); // no tag: as the editor names it
        QCOMPARE(config.currentTrackIndex(), 1);
        QCOMPARE(player.currentUrl(), files.at(1));
        QVERIFY(player.isPlaying());
        const QStringList lines = output.lines();
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), "Cannot open " + folder + "/gone.mp3: File does not exist");
        QCOMPARE(lines.at(1), "Cannot open " + folder + ": It is a folder, not a file");
        QVERIFY(lines.at(2).startsWith("Cannot open https://example.org/a.mp3: "));
    }
};

PLINK_TEST_MAIN_WITH(QApplication, TrackOpenerTest)
#include "test_trackopener.moc"
