#include "playback/audioplayer.h"
#include "player/transport.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QGuiApplication>
#include <QTemporaryDir>

using PlayerFixture::printedBy;

// Interface sounds are not linked into this test, so each one that is played
// shows up as its "not found" line.
const QString click = QStringLiteral("Error: Sound file click.m4a not found.");
const QString pop = QStringLiteral("Error: Sound file pop.m4a not found.");
const QString minSound = QStringLiteral("Error: Sound file min.m4a not found.");

class TransportTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void playPressStartsTheTrackOrClicksWhenThereIsNone_data();
    void playPressStartsTheTrackOrClicksWhenThereIsNone();
    void pauseIsSilent();
    void skipMovesTheIndexAndPlaysOnlyIfMusicWasPlaying_data();
    void skipMovesTheIndexAndPlaysOnlyIfMusicWasPlaying();
    void endOfTrackAdvancesOrStopsAtTheEnd_data();
    void endOfTrackAdvancesOrStopsAtTheEnd();
    void aFinishedToneMovesToTheNextOne();
    void minimiseSoundsOnlyWhenStopped();
    void choosingAPlaylist_data();
    void choosingAPlaylist();
    void choosingATrack_data();
    void choosingATrack();
    void volumeStepsAreClamped_data();
    void volumeStepsAreClamped();
    void indexesFromFilesAreBroughtIntoRange();
    void failuresArePrintedAndPlayNothing();

private:
    void makePlayer(bool playsSounds = true);
    QUrl urlOfTrack(int index) const { return QUrl::fromLocalFile(m_tones.at(index)); }

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_player;
    std::unique_ptr<Transport> m_transport;
    QUuid m_first, m_second;
};

void TransportTest::initTestCase()
{
    m_tones = PlayerFixture::makeTones(m_toneFolder.path(), 3, 8);
    QCOMPARE(m_tones.size(), 3);
}

void TransportTest::init()
{
    TestEnvironment::wipeHome();
}

void TransportTest::cleanup()
{
    m_transport.reset();
    m_player.reset();
    m_config.reset();
}

// The first-start playlist "Untitled" (empty) at 0, "Three" at 1, "Two" at 2.
void TransportTest::makePlayer(bool playsSounds)
{
    m_config = std::make_unique<Config>();
    m_config->setPlaysSounds(playsSounds);
    m_first = PlayerFixture::addPlaylist(*m_config, QStringLiteral("Three"), m_tones);
    m_second = PlayerFixture::addPlaylist(*m_config, QStringLiteral("Two"), m_tones.mid(0, 2));
    m_config->setCurrentPlaylistIndex(1);
    m_player = std::make_unique<AudioPlayer>();
    m_transport = std::make_unique<Transport>(*m_config, *m_player);
}

void TransportTest::playPressStartsTheTrackOrClicksWhenThereIsNone_data()
{
    QTest::addColumn<int>("playlist");
    QTest::addColumn<bool>("playsSounds");
    QTest::addColumn<bool>("playing");
    QTest::addColumn<QStringList>("printed");
    QTest::newRow("tracks") << 1 << true << true << QStringList();
    QTest::newRow("empty playlist") << 0 << true << false << QStringList{click};
    QTest::newRow("empty playlist, sounds off") << 0 << false << false << QStringList();
}

void TransportTest::playPressStartsTheTrackOrClicksWhenThereIsNone()
{
    QFETCH(int, playlist);
    QFETCH(bool, playsSounds);
    QFETCH(bool, playing);
    QFETCH(QStringList, printed);
    makePlayer(playsSounds);
    m_config->setCurrentPlaylistIndex(playlist);
    m_config->setCurrentTrackIndex(1);
    QCOMPARE(printedBy([&] { m_transport->playPausePressed(); }), printed);
    QCOMPARE(m_player->isPlaying(), playing);
    if (playing)
        QCOMPARE(m_player->currentUrl(), urlOfTrack(1));
}

void TransportTest::pauseIsSilent()
{
    makePlayer();
    m_transport->playPausePressed();
    QVERIFY(m_player->isPlaying());
    QCOMPARE(printedBy([&] { m_transport->playPausePressed(); }), QStringList());
    QVERIFY(!m_player->isPlaying());
    QVERIFY(m_player->player());
}

void TransportTest::skipMovesTheIndexAndPlaysOnlyIfMusicWasPlaying_data()
{
    QTest::addColumn<bool>("forward");
    QTest::addColumn<bool>("playing");
    QTest::addColumn<bool>("loop");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<bool>("clicked");
    QTest::newRow("next while stopped") << true << false << true << 0 << 1 << true;
    QTest::newRow("next while playing") << true << true << true << 0 << 1 << false;
    QTest::newRow("next past the end, looping") << true << true << true << 2 << 0 << false;
    QTest::newRow("next past the end, no loop") << true << false << false << 2 << 2 << true;
    QTest::newRow("previous while playing") << false << true << false << 2 << 1 << false;
    QTest::newRow("previous from the first wraps") << false << false << false << 0 << 2 << true;
}

void TransportTest::skipMovesTheIndexAndPlaysOnlyIfMusicWasPlaying()
{
    QFETCH(bool, forward);
    QFETCH(bool, playing);
    QFETCH(bool, loop);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(bool, clicked);
    makePlayer();
    m_config->setLoopTracks(loop);
    m_config->setCurrentTrackIndex(from);
    if (playing)
        m_transport->playPausePressed();
    const QStringList printed = printedBy(
        [&] { m_transport->skip(forward ? Transport::Direction::next : Transport::Direction::previous); });
    QCOMPARE(m_config->currentTrackIndex(), to);
    QCOMPARE(m_player->isPlaying(), playing);
    if (playing)
        QCOMPARE(m_player->currentUrl(), urlOfTrack(to));
    QCOMPARE(printed, clicked ? QStringList{click} : QStringList());
}

void TransportTest::endOfTrackAdvancesOrStopsAtTheEnd_data()
{
    QTest::addColumn<bool>("loop");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<bool>("playing");
    QTest::newRow("middle") << false << 0 << 1 << true;
    QTest::newRow("last, no loop") << false << 2 << 0 << false;
    QTest::newRow("last, looping") << true << 2 << 0 << true;
    QTest::newRow("beyond a shrunk list, no loop") << false << 7 << 0 << false;
}

void TransportTest::endOfTrackAdvancesOrStopsAtTheEnd()
{
    QFETCH(bool, loop);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(bool, playing);
    makePlayer();
    m_config->setLoopTracks(loop);
    m_config->setCurrentTrackIndex(std::min(from, 2));
    m_transport->playPausePressed();
    m_config->setCurrentTrackIndex(from);
    const QStringList printed = printedBy([&] { m_player->onTrackFinished(); });
    QCOMPARE(m_config->currentTrackIndex(), to);
    QCOMPARE(m_player->isPlaying(), playing);
    if (playing)
        QCOMPARE(m_player->currentUrl(), urlOfTrack(to));
    else
        QCOMPARE(m_player->progress(), 0.0);
    QCOMPARE(printed, QStringList());
}

void TransportTest::aFinishedToneMovesToTheNextOne()
{
    // A real file played to its end reaches the rule through the player.
    QTemporaryDir folder;
    const QStringList shortTones = PlayerFixture::makeTones(folder.path(), 2, 0.5);
    QCOMPARE(shortTones.size(), 2);
    makePlayer();
    PlayerFixture::addPlaylist(*m_config, QStringLiteral("Short"), shortTones);
    m_config->setCurrentPlaylistIndex(3);
    m_config->setLoopTracks(false);
    m_transport->playPausePressed();
    QTRY_COMPARE_WITH_TIMEOUT(m_config->currentTrackIndex(), 1, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!m_player->isPlaying(), 10000);
    QCOMPARE(m_config->currentTrackIndex(), 0);
}

void TransportTest::minimiseSoundsOnlyWhenStopped()
{
    makePlayer();
    QCOMPARE(printedBy([&] {
                 m_transport->minimiseToggled();
                 m_transport->playPausePressed();
                 m_transport->minimiseToggled();
             }),
             QStringList{minSound});
}

void TransportTest::choosingAPlaylist_data()
{
    QTest::addColumn<bool>("fromSkin");
    QTest::addColumn<int>("chosen");
    QTest::addColumn<bool>("changes");
    QTest::addColumn<QStringList>("printed");
    QTest::newRow("skin, another") << true << 2 << true << QStringList{pop};
    QTest::newRow("skin, the current one") << true << 1 << false << QStringList();
    QTest::newRow("command, another") << false << 2 << true << QStringList();
    QTest::newRow("command, the current one") << false << 1 << false << QStringList();
}

void TransportTest::choosingAPlaylist()
{
    QFETCH(bool, fromSkin);
    QFETCH(int, chosen);
    QFETCH(bool, changes);
    QFETCH(QStringList, printed);
    makePlayer();
    m_config->setCurrentTrackIndex(1);
    m_transport->playPausePressed();
    const QString settingsFile = m_config->settingsFileURL();
    QFile::remove(settingsFile);
    QCOMPARE(printedBy([&] {
                 if (fromSkin)
                     m_transport->selectPlaylistFromSkin(chosen);
                 else
                     m_transport->selectPlaylistCommand(chosen);
             }),
             printed);
    QCOMPARE(m_config->currentPlaylistIndex(), chosen);
    QCOMPARE(m_config->lastSelectedPlaylistID(), changes ? chosen : 0);
    QCOMPARE(m_config->currentTrackIndex(), changes ? 0 : 1);
    // A new playlist is not started; the old one stops.
    QCOMPARE(m_player->isPlaying(), !changes);
    QCOMPARE(QFile::exists(settingsFile), changes);
}

void TransportTest::choosingATrack_data()
{
    QTest::addColumn<bool>("fromSkin");
    QTest::addColumn<bool>("playing");
    QTest::addColumn<int>("chosen");
    QTest::addColumn<bool>("playsAfter");
    QTest::addColumn<QStringList>("printed");
    QTest::newRow("skin, stopped") << true << false << 2 << true << QStringList{pop};
    QTest::newRow("skin, playing") << true << true << 2 << true << QStringList{pop};
    QTest::newRow("skin, the current one restarts") << true << true << 0 << true << QStringList{pop};
    QTest::newRow("command, stopped") << false << false << 2 << false << QStringList();
    QTest::newRow("command, playing") << false << true << 2 << true << QStringList();
}

void TransportTest::choosingATrack()
{
    QFETCH(bool, fromSkin);
    QFETCH(bool, playing);
    QFETCH(int, chosen);
    QFETCH(bool, playsAfter);
    QFETCH(QStringList, printed);
    makePlayer();
    if (playing) {
        m_transport->playPausePressed();
        m_player->seek(0.5);
    }
    QCOMPARE(printedBy([&] {
                 if (fromSkin)
                     m_transport->selectTrackFromSkin(chosen);
                 else
                     m_transport->selectTrackCommand(chosen);
             }),
             printed);
    QCOMPARE(m_config->currentTrackIndex(), chosen);
    QCOMPARE(m_player->isPlaying(), playsAfter);
    if (playsAfter) {
        QCOMPARE(m_player->currentUrl(), urlOfTrack(chosen));
        QVERIFY(m_player->progress() < 0.5); // from the start
    }
}

void TransportTest::volumeStepsAreClamped_data()
{
    QTest::addColumn<float>("from");
    QTest::addColumn<bool>("up");
    QTest::addColumn<float>("to");
    QTest::newRow("up") << 0.5f << true << 0.6f;
    QTest::newRow("up to the top") << 0.95f << true << 1.0f;
    QTest::newRow("down to the bottom") << 0.05f << false << 0.0f;
    QTest::newRow("down at the bottom") << 0.0f << false << 0.0f;
}

void TransportTest::volumeStepsAreClamped()
{
    QFETCH(float, from);
    QFETCH(bool, up);
    QFETCH(float, to);
    makePlayer();
    // Without an open file there is no volume to step.
    m_transport->volumeUp();
    QVERIFY(!m_player->player());
    m_transport->playPausePressed();
    m_player->setVolume(from);
    if (up)
        m_transport->volumeUp();
    else
        m_transport->volumeDown();
    QVERIFY(qAbs(m_player->volume() - to) < 1e-4f);
}

void TransportTest::indexesFromFilesAreBroughtIntoRange()
{
    makePlayer();
    m_config->setCurrentPlaylistIndex(9);
    m_config->setCurrentTrackIndex(5);
    m_transport->playPausePressed();
    QCOMPARE(m_config->currentPlaylistIndex(), 0); // the empty "Untitled"
    m_config->setCurrentPlaylistIndex(1);
    m_config->setCurrentTrackIndex(-4);
    m_transport->playCurrentTrack();
    QCOMPARE(m_config->currentTrackIndex(), 0);
    QCOMPARE(m_player->currentUrl(), urlOfTrack(0));
}

void TransportTest::failuresArePrintedAndPlayNothing()
{
    makePlayer();
    // A track whose file is gone.
    m_config->writePlaylistTracks(m_second, {PlayerFixture::trackOf(m_toneFolder.path() + "/gone.wav", 1)});
    m_config->setCurrentPlaylistIndex(2);
    QCOMPARE(printedBy([&] { m_transport->playPausePressed(); }), QStringList{QStringLiteral("File does not exist")});
    QVERIFY(!m_player->isPlaying());
    // A playlist file that does not decode: its reason, no click.
    QFile broken(m_config->playlistFileURL(m_second));
    QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("{ not json");
    broken.close();
    const QStringList undecodable = printedBy([&] { m_transport->playPausePressed(); });
    QCOMPARE(undecodable.size(), 1);
    QVERIFY(!undecodable.contains(click));
    QVERIFY(!m_player->isPlaying());
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TransportTest)
#include "test_transport.moc"
