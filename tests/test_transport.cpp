#include "app/commandmenu.h"
#include "player/menuentry.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QMenu>
#include <QTemporaryDir>

#include <functional>
#include <map>

using PlayerFixture::printedBy;

// One press: what, on which playlist (0 "Untitled", empty; 1 "Three"; 2 "Two") and track, playing, looping; then the
// track left current, whether music plays, and the interface sound heard.
struct Press {
    QString action; int argument, playlist, track; bool playing, loop;
    int toTrack; bool playingAfter; QString sound;
};

class TransportTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<PlayerFixture::Rig> m_rig;

    Config& config() { return m_rig->config; }
    AudioPlayer& player() { return m_rig->player; }
    Transport& transport() { return m_rig->transport; }

private slots:
    void initTestCase()
    {
        m_tones = PlayerFixture::makeTones(m_toneFolder.path(), 3, 8);
        QCOMPARE(m_tones.size(), 3);
    }
    void init()
    {
        TestEnvironment::wipeHome();
        m_rig = std::make_unique<PlayerFixture::Rig>(m_tones);
    }
    void cleanup() { m_rig.reset(); }

    // Sounds only where a press neither starts nor keeps music; a skip plays only if music played; the last track's
    // end stops unless the list loops; a new playlist stops the music and is saved.
    void pressesFollowTheRules_data()
    {
        QTest::addColumn<Press>("press");
        QTest::newRow("play") << Press{"play", 0, 1, 1, false, true, 1, true, ""};
        QTest::newRow("pause is silent") << Press{"play", 0, 1, 1, true, true, 1, false, ""};
        QTest::newRow("play, empty playlist: click") << Press{"play", 0, 0, 0, false, true, 0, false, "click"};
        QTest::newRow("minimise while stopped") << Press{"minimise", 0, 1, 1, false, true, 1, false, "min"};
        QTest::newRow("minimise while playing") << Press{"minimise", 0, 1, 1, true, true, 1, true, ""};
        QTest::newRow("next while stopped") << Press{"next", 0, 1, 0, false, true, 1, false, "click"};
        QTest::newRow("next while playing") << Press{"next", 0, 1, 0, true, true, 1, true, ""};
        QTest::newRow("next past the end, no loop") << Press{"next", 0, 1, 2, false, false, 2, false, "click"};
        QTest::newRow("previous from the first wraps") << Press{"previous", 0, 1, 0, false, false, 2, false, "click"};
        QTest::newRow("end, middle") << Press{"end", 0, 1, 0, true, false, 1, true, ""};
        QTest::newRow("end of the last, no loop") << Press{"end", 0, 1, 2, true, false, 0, false, ""};
        QTest::newRow("end of the last, looping") << Press{"end", 0, 1, 2, true, true, 0, true, ""};
        QTest::newRow("end beyond a shrunk list") << Press{"end", 0, 1, 7, true, false, 0, false, ""};
        QTest::newRow("skin: another playlist") << Press{"skin playlist", 2, 1, 1, true, true, 0, false, "pop"};
        QTest::newRow("skin: the current playlist") << Press{"skin playlist", 1, 1, 1, true, true, 1, true, ""};
        QTest::newRow("command: another playlist") << Press{"command playlist", 2, 1, 1, true, true, 0, false, ""};
        QTest::newRow("skin: the current track again") << Press{"skin track", 1, 1, 1, true, true, 1, true, "pop"};
        QTest::newRow("skin: a track while stopped") << Press{"skin track", 2, 1, 0, false, true, 2, true, "pop"};
        QTest::newRow("command: a track while playing") << Press{"command track", 2, 1, 0, true, true, 2, true, ""};
        QTest::newRow("command: a track while stopped") << Press{"command track", 2, 1, 0, false, true, 2, false, ""};
    }
    void pressesFollowTheRules()
    {
        QFETCH(Press, press);
        config().setLoopTracks(press.loop);
        config().setCurrentPlaylistIndex(press.playlist);
        config().setCurrentTrackIndex(std::min(press.track, 2));
        if (press.playing) {
            transport().playPausePressed();
            player().seek(0.5);
        }
        config().setCurrentTrackIndex(press.track);
        QFile::remove(config().settingsFileURL());
        const QString& action = press.action;
        const std::map<QString, std::function<void()>> actions{
            {"play", [&] { transport().playPausePressed(); }},
            {"minimise", [&] { transport().minimiseToggled(); }},
            {"next", [&] { transport().skip(Transport::Direction::next); }},
            {"previous", [&] { transport().skip(Transport::Direction::previous); }},
            {"end", [&] { player().onTrackFinished(); }},
            {"skin playlist", [&] { transport().selectPlaylistFromSkin(press.argument); }},
            {"command playlist", [&] { transport().selectPlaylistCommand(press.argument); }},
            {"skin track", [&] { transport().selectTrackFromSkin(press.argument); }},
            {"command track", [&] { transport().selectTrackCommand(press.argument); }}};
        const QStringList printed = printedBy(actions.at(action));
        QCOMPARE(printed, press.sound.isEmpty() ? QStringList()
                                                : QStringList{"Error: Sound file " + press.sound + ".m4a not found."});
        QCOMPARE(config().currentTrackIndex(), press.toTrack);
        QCOMPARE(player().isPlaying(), press.playingAfter);
        if (press.playingAfter)
            QCOMPARE(player().currentUrl(), QUrl::fromLocalFile(m_tones.at(press.toTrack)));
        // Music that goes on keeps its place; a track started, even the same one, starts at the top.
        const bool goesOn = press.playing && press.toTrack == press.track && !action.endsWith("track");
        if (action == "end" && !press.playingAfter)
            QCOMPARE(player().progress(), 0.0);
        else if (press.playingAfter && action != "end")
            QCOMPARE(player().progress() >= 0.5, goesOn);
        const int playlist = action.endsWith("playlist") ? press.argument : press.playlist;
        QCOMPARE(config().currentPlaylistIndex(), playlist);
        QCOMPARE(config().lastSelectedPlaylistID(), playlist != press.playlist ? playlist : 0);
        QCOMPARE(QFile::exists(config().settingsFileURL()), playlist != press.playlist);
    }

    // The "Player" menu's titles and marks follow the player and the store; its keys work in any window of ours.
    void commandMenuFollowsTheStateAndItsKeysWorkEverywhere()
    {
        CommandMenu commands(config(), player(), transport());
        QMenu* menu = commands.menu();
        const auto titles = [](QMenu* shown) {
            QStringList texts;
            for (QAction* action : shown->actions()) {
                if (action->isVisible())
                    texts.append(action->text() + (action->isChecked() ? " ✓" : ""));
            }
            return texts;
        };
        QCOMPARE(titles(menu), (QStringList{"Play", "Loop tracks ✓", "Shuffle tracks", "", "Volume Up",
                                            "Volume Down", "", "Playlists", "Tracks", "", "Settings…", "Quit"}));
        QWidget window, other;
        commands.addShortcutsTo(&window);
        window.show();
        other.show();
        QApplication::setActiveWindow(&other);
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QTest::keyClick(&other, Qt::Key_Space);
        player().setVolume(0.5f);
        for (const Qt::Key key : {Qt::Key_L, Qt::Key_S, Qt::Key_Equal, Qt::Key_Plus, Qt::Key_Minus})
            QTest::keyClick(&other, key, Qt::ControlModifier);
        QCOMPARE(titles(menu).mid(0, 3), (QStringList{"Pause", "Loop tracks", "Shuffle tracks ✓"}));
        QVERIFY(TestFiles::storedSettings().shuffleTracks && !TestFiles::storedSettings().loopTracks);
        // A key toggles its own mark; a change made elsewhere must reach the marks too.
        config().setShuffleTracks(false);
        config().setLoopTracks(true);
        QCOMPARE(titles(menu).mid(1, 2), (QStringList{"Loop tracks ✓", "Shuffle tracks"}));
        // Volume steps of a tenth, held at 0.
        QVERIFY(qAbs(player().volume() - 0.6f) < 1e-4f);
        player().setVolume(0.05f);
        QTest::keyClick(&other, Qt::Key_Minus, Qt::ControlModifier);
        QCOMPARE(player().volume(), 0.0f);

        // Entries are made when the menu opens.
        emit menu->aboutToShow();
        QMenu* playlists = menu->actions().at(7)->menu();
        QMenu* tracks = menu->actions().at(9)->menu();
        tracks->actions().at(2)->trigger();
        emit menu->aboutToShow();
        QCOMPARE(titles(tracks), (QStringList{"Tone 1", "Tone 2", "Tone 3 ✓"}));
        playlists->actions().at(0)->trigger();
        emit menu->aboutToShow();
        QCOMPARE(titles(playlists), (QStringList{"Untitled ✓", "Three", "Two"}));
        // Beyond a screenful the tracks open as a filter list.
        const QList<Track> many(menuEntriesOnScreen(menu->screen()) + 1, Track::make("file:///a.mp3", "A", "B"));
        config().writePlaylistTracks(config().playlists().at(0).id, many);
        emit menu->aboutToShow();
        QCOMPARE(titles(menu).mid(7, 2), (QStringList{"Playlists", "Tracks…"}));
        // "Tracks" only while the current playlist reads; the reason it cannot is printed.
        QVERIFY(TestFiles::writeFile(config().playlistFileURL(m_rig->three), "{\"tracks\" : 3}"));
        config().setCurrentPlaylistIndex(1);
        QCOMPARE(printedBy([&] { emit menu->aboutToShow(); }).size(), 1);
        QCOMPARE(titles(menu).mid(7, 2), (QStringList{"Playlists", ""}));
    }

    void failuresArePrintedAndPlayNothing()
    {
        const QUuid gone = PlayerFixture::addPlaylist(config(), "Gone", {m_toneFolder.path() + "/gone.wav"});
        config().setCurrentPlaylistIndex(3);
        QCOMPARE(printedBy([&] { transport().playPausePressed(); }), QStringList{"File does not exist"});
        QVERIFY(!player().isPlaying());
        // A playlist file that does not decode: its reason, no click.
        QVERIFY(TestFiles::writeFile(config().playlistFileURL(gone), "{ not json"));
        const QStringList undecodable = printedBy([&] { transport().playPausePressed(); });
        QVERIFY2(undecodable.size() == 1 && !undecodable.first().startsWith("Error: Sound"), qPrintable(undecodable.join('|')));
    }
};

PLINK_TEST_MAIN_WITH(QApplication, TransportTest)
#include "test_transport.moc"
