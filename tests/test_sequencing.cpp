#include "store/config.h"
#include "store/sequencing.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>

#include <cmath>

class SequencingTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void movesFollowLoopAndShuffleRules_data();
    void movesFollowLoopAndShuffleRules();
    void shuffleNeverRepeatsAndIsFair();
    void unbiasedDrawRejectsTheBiasedZone();
    void unreadableOrEmptyPlaylistLeavesTheIndex();

private:
    void useTracks(Config& config, int count);
};

void SequencingTest::useTracks(Config& config, int count)
{
    QList<Track> tracks;
    for (int i = 0; i < count; ++i)
        tracks.append(Track::make(QStringLiteral("file:///%1.mp3").arg(i), QString::number(i), QString()));
    config.writePlaylistTracks(config.playlists().first().id, tracks);
}

void SequencingTest::movesFollowLoopAndShuffleRules_data()
{
    QTest::addColumn<bool>("next");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("from");
    QTest::addColumn<bool>("loop");
    QTest::addColumn<bool>("shuffle");
    QTest::addColumn<int>("to");
    QTest::newRow("next in the middle") << true << 3 << 0 << false << false << 1;
    QTest::newRow("next from the last, no loop: stays") << true << 3 << 2 << false << false << 2;
    QTest::newRow("next from the last, loop: wraps") << true << 3 << 2 << true << false << 0;
    QTest::newRow("next beyond a shrunk list, no loop: stays") << true << 3 << 9 << false << false << 9;
    QTest::newRow("next beyond a shrunk list, loop: first") << true << 3 << 9 << true << false << 0;
    QTest::newRow("shuffle with one track") << true << 1 << 0 << false << true << 0;
    QTest::newRow("shuffle with one track, shrunk") << true << 1 << 4 << false << true << 0;
    QTest::newRow("shuffle with two tracks") << true << 2 << 0 << false << true << 1;
    QTest::newRow("previous from the first, no loop") << false << 3 << 0 << false << false << 2;
    QTest::newRow("previous from the first, loop") << false << 3 << 0 << true << false << 2;
    QTest::newRow("previous ignores shuffle") << false << 3 << 2 << false << true << 1;
    QTest::newRow("previous beyond a shrunk list") << false << 3 << 10 << false << false << 0;
    QTest::newRow("previous far beyond") << false << 3 << 11 << false << false << 1;
}

void SequencingTest::movesFollowLoopAndShuffleRules()
{
    QFETCH(bool, next);
    QFETCH(int, count);
    QFETCH(int, from);
    QFETCH(bool, loop);
    QFETCH(bool, shuffle);
    QFETCH(int, to);
    Config config;
    useTracks(config, count);
    config.setLoopTracks(loop);
    config.setShuffleTracks(shuffle);
    config.setCurrentTrackIndex(from);
    QSignalSpy spy(&config, &Config::changed);
    for (int round = 0; round < (shuffle ? 20 : 1); ++round) {
        config.setCurrentTrackIndex(from);
        next ? config.nextTrack() : config.previousTrack();
        QCOMPARE(config.currentTrackIndex(), to);
    }
    if (from == to)
        QCOMPARE(spy.count(), 0); // no notice without a change
}

void SequencingTest::shuffleNeverRepeatsAndIsFair()
{
    Config config;
    useTracks(config, 4);
    config.setShuffleTracks(true);
    const int draws = 3000;
    int seen[4] = {};
    for (int i = 0; i < draws; ++i) {
        config.setCurrentTrackIndex(1);
        config.nextTrack();
        const qint64 index = config.currentTrackIndex();
        QVERIFY(index != 1);
        QVERIFY(index >= 0 && index < 4);
        ++seen[index];
    }
    // Each of the three others expected draws/3 times; a chi-square over two
    // degrees of freedom above 20 happens by chance less than once in 20,000.
    double chiSquare = 0;
    for (int index : {0, 2, 3}) {
        const double expected = draws / 3.0;
        chiSquare += std::pow(seen[index] - expected, 2) / expected;
    }
    QVERIFY2(chiSquare < 20, qPrintable(QString::number(chiSquare)));
}

void SequencingTest::unbiasedDrawRejectsTheBiasedZone()
{
    // For n = 3 the biased zone is 2^64 mod 3 = 1 low value: a word whose
    // product with 3 leaves a low half of 0 must be drawn again.
    QList<quint64> words{0, 0x5555555555555556ULL, 0xFFFFFFFFFFFFFFFFULL};
    int calls = 0;
    const auto next = [&] { return words.at(calls++); };
    QCOMPARE(uniformBelow(3, next), quint64(1)); // 0 rejected; (2^64+2)/3 * 3 = 2^64 + 2 → high 1
    QCOMPARE(calls, 2);
    QCOMPARE(uniformBelow(3, next), quint64(2));
    QCOMPARE(uniformBelow(1, [] { return quint64(12345); }), quint64(0));
    // A power of two has no biased zone.
    QCOMPARE(uniformBelow(4, [] { return quint64(0); }), quint64(0));
}

void SequencingTest::unreadableOrEmptyPlaylistLeavesTheIndex()
{
    Config config;
    config.setCurrentTrackIndex(2);
    config.nextTrack();
    config.previousTrack();
    QCOMPARE(config.currentTrackIndex(), 2);

    QFile::remove(config.playlistFileURL(config.playlists().first().id));
    StdoutCapture out;
    config.nextTrack();
    config.previousTrack();
    QCOMPARE(config.currentTrackIndex(), 2);
    QCOMPARE(out.lines().size(), 2);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, SequencingTest)
#include "test_sequencing.moc"
