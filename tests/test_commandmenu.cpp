#include "app/commandmenu.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWidget>

using PlayerFixture::printedBy;

// The visible entries, checked ones marked.
static QStringList titles(QMenu* menu)
{
    QStringList texts;
    for (QAction* action : menu->actions()) {
        if (action->isVisible())
            texts.append(action->text() + (action->isChecked() ? QStringLiteral(" ✓") : QString()));
    }
    return texts;
}

class CommandMenuTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<PlayerFixture::Rig> m_rig; // "Untitled" (empty), "Three" (current), "Two"
    std::unique_ptr<CommandMenu> m_commands;

private slots:
    void initTestCase()
    {
        m_tones = PlayerFixture::makeTones(m_toneFolder.path(), 3, 20);
        QCOMPARE(m_tones.size(), 3);
    }
    void init()
    {
        TestEnvironment::wipeHome();
        m_rig = std::make_unique<PlayerFixture::Rig>(m_tones);
        m_commands = std::make_unique<CommandMenu>(m_rig->config, m_rig->player, m_rig->transport);
    }
    void cleanup()
    {
        m_commands.reset();
        m_rig.reset();
    }

    void itemsFollowTheStateAndThePlaylist()
    {
        QMenu* menu = m_commands->menu();
        QCOMPARE(menu->title(), QStringLiteral("Player"));
        QCOMPARE(titles(menu), (QStringList{"Play", "Loop tracks ✓", "Shuffle tracks", "", "Volume Up",
                                            "Volume Down", "", "Playlists", "Tracks", "", "Settings…", "Quit"}));
        m_rig->transport.playPausePressed();
        m_rig->config.setLoopTracks(false);
        m_rig->config.setShuffleTracks(true);
        QCOMPARE(titles(menu).mid(0, 3), (QStringList{"Pause", "Loop tracks", "Shuffle tracks ✓"}));
        m_rig->player.pause();
        QCOMPARE(titles(menu).first(), QStringLiteral("Play"));
        // "Tracks" only while the current playlist reads; the reason it cannot is printed.
        QFile broken(m_rig->config.playlistFileURL(m_rig->three));
        QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate) && broken.write("{\"tracks\" : 3}") > 0);
        broken.close();
        QCOMPARE(printedBy([&] { emit menu->aboutToShow(); }).size(), 1);
        QCOMPARE(titles(menu).mid(7, 2), (QStringList{"Playlists", ""}));
        m_rig->config.writePlaylistTracks(m_rig->three, {});
        emit menu->aboutToShow();
        QCOMPARE(titles(menu).mid(7, 2), (QStringList{"Playlists", "Tracks"}));
    }

    void shortcutsWorkInAnyOfOurWindows_data()
    {
        QTest::addColumn<bool>("secondWindow");
        QTest::newRow("player window") << false;
        QTest::newRow("another window of ours") << true;
    }
    void shortcutsWorkInAnyOfOurWindows()
    {
        QFETCH(bool, secondWindow);
        QWidget player, other;
        m_commands->addShortcutsTo(&player);
        player.show();
        QWidget* target = secondWindow ? &other : &player;
        target->show();
        QApplication::setActiveWindow(target);
        QVERIFY(QTest::qWaitForWindowActive(target));

        const auto press = [&](Qt::Key key) { QTest::keyClick(target, key, key == Qt::Key_Space ? Qt::NoModifier : Qt::ControlModifier); };
        press(Qt::Key_Equal);
        QVERIFY(!m_rig->player.player()); // no open file: no volume to step
        press(Qt::Key_Space);
        QCOMPARE(m_rig->player.currentUrl(), QUrl::fromLocalFile(m_tones.at(0)));
        // Steps of a tenth, held within 0 … 1.
        m_rig->player.setVolume(0.85f);
        press(Qt::Key_Equal);
        press(Qt::Key_Plus);
        QCOMPARE(m_rig->player.volume(), 1.0f);
        press(Qt::Key_Minus);
        QVERIFY(qAbs(m_rig->player.volume() - 0.9f) < 1e-4f);
        m_rig->player.setVolume(0.05f);
        press(Qt::Key_Minus);
        QCOMPARE(m_rig->player.volume(), 0.0f);
        // The volume belongs to the open file: the next track is heard at full volume.
        m_rig->transport.selectTrackCommand(1);
        QCOMPARE(m_rig->player.currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
        QCOMPARE(m_rig->player.volume(), 1.0f);
        QCOMPARE(m_rig->player.player()->volume(), 1.0f);
        // Loop and shuffle toggle and are saved at once.
        press(Qt::Key_L);
        press(Qt::Key_S);
        QFile settings(m_rig->config.settingsFileURL());
        QVERIFY(settings.open(QIODevice::ReadOnly));
        const QByteArray saved = settings.readAll();
        QVERIFY(saved.contains("\"shuffleTracks\" : true") && saved.contains("\"loopTracks\" : false"));
        QSignalSpy settingsRequested(m_commands.get(), &CommandMenu::settingsRequested);
        press(Qt::Key_Comma);
        QCOMPARE(settingsRequested.count(), 1);
        press(Qt::Key_Space);
        QVERIFY(!m_rig->player.isPlaying());
    }

    void submenusChooseWithoutSounds()
    {
        QMenu* menu = m_commands->menu();
        QMenu* playlists = menu->actions().at(7)->menu();
        QMenu* tracks = menu->actions().at(8)->menu();
        QCOMPARE(titles(playlists), (QStringList{"Untitled", "Three ✓", "Two"}));
        emit menu->aboutToShow();
        QCOMPARE(titles(tracks), (QStringList{"Tone 1 ✓", "Tone 2", "Tone 3"}));
        // A track while stopped only moves the index; while playing it plays.
        QStringList printed = printedBy([&] { tracks->actions().at(2)->trigger(); });
        QVERIFY(!m_rig->player.isPlaying());
        QTRY_COMPARE(titles(tracks), (QStringList{"Tone 1", "Tone 2", "Tone 3 ✓"}));
        m_rig->transport.playPauseCommand();
        printed += printedBy([&] { tracks->actions().at(1)->trigger(); });
        QCOMPARE(m_rig->player.currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
        // Another playlist stops the music and starts at its first track.
        printed += printedBy([&] { playlists->actions().at(0)->trigger(); });
        QCOMPARE(m_rig->config.currentTrackIndex(), 0);
        QVERIFY(!m_rig->player.isPlaying());
        QTRY_COMPARE(titles(playlists), (QStringList{"Untitled ✓", "Three", "Two"}));
        QCOMPARE(printed, QStringList());
    }
};

PLINK_TEST_MAIN_WITH(QApplication, CommandMenuTest)
#include "test_commandmenu.moc"
