#include "app/appdelegate.h"
#include "app/trackopener.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QDir>
#include <QSignalSpy>

class DesktopTest : public QObject
{
    Q_OBJECT

private slots:
    // Names on the command line become file URLs; a Wayland session goes through XWayland unless a platform was chosen.
    void argumentsAndThePlatformOfTheSession()
    {
        QCOMPARE(TrackOpener::fromArgument("Déjà vu #1 %.mp3"), QUrl::fromLocalFile(QDir::currentPath() + "/Déjà vu #1 %.mp3"));
        QCOMPARE(TrackOpener::fromArgument("https://example.org/a.mp3"), QUrl("https://example.org/a.mp3"));
        const auto platformWith = [](const char* waylandDisplay, const char* platform) {
            for (const auto& [name, value] : {std::pair{"WAYLAND_DISPLAY", waylandDisplay}, {"QT_QPA_PLATFORM", platform}})
                *value ? qputenv(name, value) : qunsetenv(name);
            AppDelegate::choosePlatform();
            return qgetenv("QT_QPA_PLATFORM");
        };
        QCOMPARE((QByteArrayList{platformWith("wayland-0", ""), platformWith("wayland-0", "wayland"), platformWith("", "")}),
                 (QByteArrayList{"xcb;wayland", "wayland", ""}));
    }

    // Files and folders join the current playlist in one write, and the first of them plays.
    void openedFilesJoinThePlaylistAndPlay()
    {
        const QString folder = TestEnvironment::documents();
        QList<QUrl> files;
        for (const char* name : {"one.mp3", "Grüße #2.wav", "three.wav"}) {
            files.append(QUrl::fromLocalFile(folder + QLatin1Char('/') + QString::fromUtf8(name)));
            QVERIFY(AudioFixtures::makeTone(files.last().toLocalFile(), AudioFixtures::Tone(3)));
        }
        PlayerFixture::Rig rig({files.first().toLocalFile()}); // the current playlist holds the first file
        TrackOpener opener(rig.config, rig.player, rig.transport);
        rig.transport.playCurrentTrack();
        QSignalSpy writes(&rig.config, &Config::playlistTracksWritten);
        QSignalSpy opened(&opener, &TrackOpener::opened);
        StdoutCapture output;
        opener.open({files.at(1), QUrl::fromLocalFile(folder + "/gone.mp3"), QUrl::fromLocalFile(folder),
                     QUrl("https://example.org/a.mp3"), files.at(2)});
        QVERIFY(opened.wait());
        QCOMPARE(std::pair(opened.first().first().toInt(), writes.count()), std::pair(5, qsizetype(1)));
        // The folder gives its audio files in name order, and nothing of the store's folders.
        const QList<Track> tracks = *rig.config.readPlaylistTracks(rig.three);
        QStringList names;
        for (const Track& track : tracks)
            names.append(QUrl(track.urlString).fileName());
        QCOMPARE(names, (QStringList{"one.mp3", "Grüße #2.wav", "Grüße #2.wav", "one.mp3", "three.wav", "three.wav"}));
        QCOMPARE(tracks.at(2).trackName, QStringLiteral("Track")); // no tag: as the editor names it
        QVERIFY(rig.config.currentTrackIndex() == 1 && rig.player.currentUrl() == files.at(1) && rig.player.isPlaying());
        QStringList lines = output.lines();
        QVERIFY(lines.size() == 2 && lines.takeLast().startsWith("Cannot open https://example.org/a.mp3: "));
        QCOMPARE(lines, QStringList{"Cannot open " + folder + "/gone.mp3: File does not exist"});
    }
};

PLINK_TEST_MAIN_WITH(QApplication, DesktopTest)
#include "test_desktop.moc"
