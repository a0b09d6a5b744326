#include "app/commandmenu.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWidget>

using PlayerFixture::printedBy;

class CommandMenuTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void itemsFollowTheState();
    void shortcutsWorkInAnyOfOurWindows_data();
    void shortcutsWorkInAnyOfOurWindows();
    void submenusChooseWithoutSounds();
    void tracksSubmenuOnlyWhenThePlaylistReads();

private:
    QStringList titles(QMenu* menu);

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_player;
    std::unique_ptr<Transport> m_transport;
    std::unique_ptr<CommandMenu> m_commands;
    QUuid m_three;
};

void CommandMenuTest::initTestCase()
{
    m_tones = PlayerFixture::makeTones(m_toneFolder.path(), 3, 20);
    QCOMPARE(m_tones.size(), 3);
}

void CommandMenuTest::init()
{
    TestEnvironment::wipeHome();
    m_config = std::make_unique<Config>();
    m_three = PlayerFixture::addPlaylist(*m_config, QStringLiteral("Three"), m_tones);
    m_config->setCurrentPlaylistIndex(1);
    m_player = std::make_unique<AudioPlayer>();
    m_transport = std::make_unique<Transport>(*m_config, *m_player);
    m_commands = std::make_unique<CommandMenu>(*m_config, *m_player, *m_transport);
}

void CommandMenuTest::cleanup()
{
    m_commands.reset();
    m_transport.reset();
    m_player.reset();
    m_config.reset();
}

QStringList CommandMenuTest::titles(QMenu* menu)
{
    QStringList texts;
    for (QAction* action : menu->actions()) {
        if (action->isVisible())
            texts.append(action->text() + (action->isChecked() ? QStringLiteral(" ✓") : QString()));
    }
    return texts;
}

void CommandMenuTest::itemsFollowTheState()
{
    QMenu* menu = m_commands->menu();
    QCOMPARE(menu->title(), QStringLiteral("Player"));
    QCOMPARE(titles(menu), (QStringList{"Play", "Loop tracks ✓", "Shuffle tracks", "", "Volume Up",
                                        "Volume Down", "", "Playlists", "Tracks", "", "Settings…", "Quit"}));
    m_transport->playPausePressed();
    m_config->setLoopTracks(false);
    m_config->setShuffleTracks(true);
    QCOMPARE(titles(menu).mid(0, 3), (QStringList{"Pause", "Loop tracks", "Shuffle tracks ✓"}));
    m_player->pause();
    QCOMPARE(titles(menu).first(), QStringLiteral("Play"));
}

void CommandMenuTest::shortcutsWorkInAnyOfOurWindows_data()
{
    QTest::addColumn<bool>("secondWindow");
    QTest::newRow("player window") << false;
    QTest::newRow("another window of ours") << true;
}

void CommandMenuTest::shortcutsWorkInAnyOfOurWindows()
{
    QFETCH(bool, secondWindow);
    QWidget player;
    m_commands->addShortcutsTo(&player);
    player.show();
    QWidget other;
    if (secondWindow)
        other.show();
    QWidget* target = secondWindow ? &other : &player;
    QApplication::setActiveWindow(target);
    QVERIFY(QTest::qWaitForWindowActive(target));

    QTest::keyClick(target, Qt::Key_Space);
    QVERIFY(m_player->isPlaying());
    QCOMPARE(m_player->currentUrl(), QUrl::fromLocalFile(m_tones.at(0)));
    m_player->setVolume(0.5f);
    QTest::keyClick(target, Qt::Key_Equal, Qt::ControlModifier);
    QTest::keyClick(target, Qt::Key_Plus, Qt::ControlModifier);
    QVERIFY(qAbs(m_player->volume() - 0.7f) < 1e-4f);
    QTest::keyClick(target, Qt::Key_Minus, Qt::ControlModifier);
    QVERIFY(qAbs(m_player->volume() - 0.6f) < 1e-4f);

    // Loop and shuffle toggle and are saved at once (Ctrl+S is no save command).
    QTest::keyClick(target, Qt::Key_L, Qt::ControlModifier);
    QTest::keyClick(target, Qt::Key_S, Qt::ControlModifier);
    QVERIFY(!m_config->loopTracks());
    QVERIFY(m_config->shuffleTracks());
    QFile settings(m_config->settingsFileURL());
    QVERIFY(settings.open(QIODevice::ReadOnly));
    const QByteArray saved = settings.readAll();
    QVERIFY(saved.contains("\"shuffleTracks\" : true"));
    QVERIFY(saved.contains("\"loopTracks\" : false"));

    QSignalSpy settingsRequested(m_commands.get(), &CommandMenu::settingsRequested);
    QTest::keyClick(target, Qt::Key_Comma, Qt::ControlModifier);
    QCOMPARE(settingsRequested.count(), 1);
    QTest::keyClick(target, Qt::Key_Space);
    QVERIFY(!m_player->isPlaying());
}

void CommandMenuTest::submenusChooseWithoutSounds()
{
    QMenu* menu = m_commands->menu();
    QMenu* playlists = menu->actions().at(7)->menu();
    QMenu* tracks = menu->actions().at(8)->menu();
    QCOMPARE(titles(playlists), (QStringList{"Untitled", "Three ✓"}));
    emit menu->aboutToShow();
    QCOMPARE(titles(tracks), (QStringList{"Tone 1 ✓", "Tone 2", "Tone 3"}));

    // A track while stopped only moves the index; while playing it plays.
    QStringList printed = printedBy([&] { tracks->actions().at(2)->trigger(); });
    QCOMPARE(m_config->currentTrackIndex(), 2);
    QVERIFY(!m_player->isPlaying());
    QTRY_COMPARE(titles(tracks), (QStringList{"Tone 1", "Tone 2", "Tone 3 ✓"}));
    m_transport->playPauseCommand();
    printed += printedBy([&] { tracks->actions().at(1)->trigger(); });
    QCOMPARE(m_player->currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
    QVERIFY(m_player->isPlaying());

    // Another playlist stops the music and starts at its first track.
    printed += printedBy([&] { playlists->actions().at(0)->trigger(); });
    QCOMPARE(m_config->currentPlaylistIndex(), 0);
    QCOMPARE(m_config->currentTrackIndex(), 0);
    QVERIFY(!m_player->isPlaying());
    QTRY_COMPARE(titles(playlists), (QStringList{"Untitled ✓", "Three"}));
    QCOMPARE(printed, QStringList());
}

void CommandMenuTest::tracksSubmenuOnlyWhenThePlaylistReads()
{
    QMenu* menu = m_commands->menu();
    QFile broken(m_config->playlistFileURL(m_three));
    QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("{\"tracks\" : 3}");
    broken.close();
    const QStringList printed = printedBy([&] { emit menu->aboutToShow(); });
    QCOMPARE(printed.size(), 1); // the reason it cannot be read
    QVERIFY(!titles(menu).contains(QStringLiteral("Tracks")));
    QVERIFY(titles(menu).contains(QStringLiteral("Playlists")));
    m_config->writePlaylistTracks(m_three, {});
    emit menu->aboutToShow();
    QVERIFY(titles(menu).contains(QStringLiteral("Tracks")));
}

PLINK_TEST_MAIN_WITH(QApplication, CommandMenuTest)
#include "test_commandmenu.moc"
