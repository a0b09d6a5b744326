#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QGuiApplication>
#include <QTemporaryDir>

using PlayerFixture::printedBy;

// Interface sounds are not linked into this test: each one played shows up
// as its "not found" line.
static QStringList sound(const char* name)
{
    return {QStringLiteral("Error: Sound file %1.m4a not found.").arg(QLatin1String(name))};
}

class TransportTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<PlayerFixture::Rig> m_rig;

    // Playlists "Untitled" (empty) at 0, "Three" (current) at 1, "Two" at 2.
    Config& config() { return m_rig->config; }
    AudioPlayer& player() { return m_rig->player; }
    Transport& transport() { return m_rig->transport; }
    void checkPlaying(bool playing, int track)
    {
        QCOMPARE(player().isPlaying(), playing);
        if (playing)
            QCOMPARE(player().currentUrl(), QUrl::fromLocalFile(m_tones.at(track)));
    }

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

    void pressesPlayPauseOrSound_data()
    {
        QTest::addColumn<bool>("minimise"); // else play/pause
        QTest::addColumn<int>("playlist");
        QTest::addColumn<bool>("playsSounds");
        QTest::addColumn<bool>("playingBefore");
        QTest::addColumn<QStringList>("printed");
        QTest::newRow("play") << false << 1 << true << false << QStringList();
        QTest::newRow("pause is silent") << false << 1 << true << true << QStringList();
        QTest::newRow("play, empty playlist: click") << false << 0 << true << false << sound("click");
        QTest::newRow("play, empty playlist, sounds off") << false << 0 << false << false << QStringList();
        QTest::newRow("minimise while stopped: min") << true << 1 << true << false << sound("min");
        QTest::newRow("minimise while playing is silent") << true << 1 << true << true << QStringList();
    }
    void pressesPlayPauseOrSound()
    {
        QFETCH(bool, minimise);
        QFETCH(int, playlist);
        QFETCH(bool, playsSounds);
        QFETCH(bool, playingBefore);
        QFETCH(QStringList, printed);
        config().setPlaysSounds(playsSounds);
        config().setCurrentTrackIndex(1);
        if (playingBefore)
            transport().playPausePressed();
        config().setCurrentPlaylistIndex(playlist);
        QCOMPARE(printedBy([&] { minimise ? transport().minimiseToggled() : transport().playPausePressed(); }), printed);
        checkPlaying(minimise ? playingBefore : playlist != 0 && !playingBefore, 1);
    }

    // Skips play only if music was playing, else click; the end of a track
    // advances silently and stops at the end of a list that does not loop.
    void sequencing_data()
    {
        QTest::addColumn<QString>("press");
        QTest::addColumn<bool>("playing");
        QTest::addColumn<bool>("loop");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<bool>("playingAfter");
        QTest::newRow("next while stopped") << "next" << false << true << 0 << 1 << false;
        QTest::newRow("next while playing") << "next" << true << true << 0 << 1 << true;
        QTest::newRow("next past the end, looping") << "next" << true << true << 2 << 0 << true;
        QTest::newRow("next past the end, no loop") << "next" << false << false << 2 << 2 << false;
        QTest::newRow("previous while playing") << "previous" << true << false << 2 << 1 << true;
        QTest::newRow("previous from the first wraps") << "previous" << false << false << 0 << 2 << false;
        QTest::newRow("end, middle") << "end" << true << false << 0 << 1 << true;
        QTest::newRow("end of the last, no loop") << "end" << true << false << 2 << 0 << false;
        QTest::newRow("end of the last, looping") << "end" << true << true << 2 << 0 << true;
        QTest::newRow("end beyond a shrunk list") << "end" << true << false << 7 << 0 << false;
    }
    void sequencing()
    {
        QFETCH(QString, press);
        QFETCH(bool, playing);
        QFETCH(bool, loop);
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(bool, playingAfter);
        config().setLoopTracks(loop);
        config().setCurrentTrackIndex(std::min(from, 2));
        if (playing)
            transport().playPausePressed();
        config().setCurrentTrackIndex(from);
        const QStringList printed = printedBy([&] {
            if (press == "end")
                player().onTrackFinished();
            else
                transport().skip(press == "next" ? Transport::Direction::next : Transport::Direction::previous);
        });
        QCOMPARE(config().currentTrackIndex(), to);
        checkPlaying(playingAfter, to);
        QCOMPARE(printed, press != "end" && !playing ? sound("click") : QStringList());
        if (press == "end" && !playingAfter)
            QCOMPARE(player().progress(), 0.0);
    }

    void choosingAPlaylistStopsAndSaves_data()
    {
        QTest::addColumn<bool>("fromSkin");
        QTest::addColumn<int>("chosen");
        QTest::addColumn<QStringList>("printed");
        QTest::newRow("skin, another") << true << 2 << sound("pop");
        QTest::newRow("skin, the current one") << true << 1 << QStringList();
        QTest::newRow("command, another") << false << 2 << QStringList();
    }
    void choosingAPlaylistStopsAndSaves()
    {
        QFETCH(bool, fromSkin);
        QFETCH(int, chosen);
        QFETCH(QStringList, printed);
        const bool changes = chosen != 1;
        config().setCurrentTrackIndex(1);
        transport().playPausePressed();
        QFile::remove(config().settingsFileURL());
        const auto choose = [&] { fromSkin ? transport().selectPlaylistFromSkin(chosen) : transport().selectPlaylistCommand(chosen); };
        QCOMPARE(printedBy(choose), printed);
        QCOMPARE(config().currentPlaylistIndex(), chosen);
        QCOMPARE(config().lastSelectedPlaylistID(), changes ? chosen : 0);
        QCOMPARE(config().currentTrackIndex(), changes ? 0 : 1);
        QCOMPARE(player().isPlaying(), !changes); // the new playlist is not started
        QCOMPARE(QFile::exists(config().settingsFileURL()), changes);
    }

    void failuresArePrintedAndPlayNothing()
    {
        config().writePlaylistTracks(m_rig->two, {PlayerFixture::trackOf(m_toneFolder.path() + "/gone.wav", 1)});
        config().setCurrentPlaylistIndex(2);
        QCOMPARE(printedBy([&] { transport().playPausePressed(); }), QStringList{"File does not exist"});
        QVERIFY(!player().isPlaying());
        // A playlist file that does not decode: its reason, no click.
        QFile broken(config().playlistFileURL(m_rig->two));
        QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate) && broken.write("{ not json") > 0);
        broken.close();
        const QStringList undecodable = printedBy([&] { transport().playPausePressed(); });
        QVERIFY2(undecodable.size() == 1 && undecodable != sound("click"), qPrintable(undecodable.join('|')));
        QVERIFY(!player().isPlaying());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TransportTest)
#include "test_transport.moc"
