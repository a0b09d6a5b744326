// Faults met while playing and editing: indexes left pointing past the lists,
// and dropped names that are no files. The player must go on, never crash
// or hang.
#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "player/contentview.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

class FaultMatrixPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    // Neither wait for a writer that never comes nor read for ever.
    void tagsOfNamesThatAreNoFiles()
    {
        const QString pipe = TestEnvironment::home() + QStringLiteral("/pipe.mp3");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString& path : {pipe, QStringLiteral("/dev/zero")}) {
            alarm(30); // a read that never returns ends the test as a failure
            const TrackTags tags = readTrackTags(path);
            QVERIFY(readAlbumArt(path).isNull());
            alarm(0);
            QCOMPARE(tags.title + tags.artist, QStringLiteral("TrackUnknown artist"));
        }
    }

    // The current playlist cut short on disk, then a settings file edited by
    // hand to hold no playlists and a selection past them: the skin's
    // drawing, buttons and menus and the end of a track are tried on each.
    void shortListsAreSurvivedEverywhere()
    {
        QTemporaryDir folder;
        PlayerFixture::Rig rig(PlayerFixture::makeTones(folder.path(), 3, 2));
        Config& config = rig.config;
        config.setPlaysSounds(false); // the sounds are not linked in: each would print
        ContentView view(config, rig.player, rig.transport);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const auto tryEverything = [&] {
            for (const Element element :
                 {Element::playPause, Element::fastForward, Element::rewind, Element::playlistMenu, Element::trackMenu}) {
                view.repaint();
                QTest::mouseClick(&view, Qt::LeftButton, {},
                                  elementRect(config.geometry(), element, view.scale()).center().toPoint());
                while (QWidget* popup = QApplication::activePopupWidget())
                    popup->close();
            }
            rig.player.onTrackFinished();
            view.repaint();
        };

        config.setCurrentTrackIndex(2);
        const auto three = config.readPlaylistTracks(rig.three);
        QVERIFY(three && TestFiles::writeFile(config.playlistFileURL(rig.three), toJson(PlaylistData{three->mid(0, 1)})));
        tryEverything();
        const auto tracks = config.currentPlaylistTracks();
        QVERIFY(tracks && (tracks->isEmpty() || config.currentTrackIndex() < tracks->size()));

        SettingsData settings = TestFiles::storedSettings();
        settings.playlists.clear();
        settings.lastSelectedPlaylistID = 99;
        settings.playsSounds = false;
        QVERIFY(TestFiles::writeFile(TestFiles::settingsPath(), toJson(settings)));
        config.loadSettings();
        QVERIFY(config.playlists().isEmpty());
        tryEverything();
        QVERIFY(!rig.player.isPlaying());
    }
};

PLINK_TEST_MAIN_WITH(QApplication, FaultMatrixPlayerTest)
#include "test_faultmatrix_player.moc"
