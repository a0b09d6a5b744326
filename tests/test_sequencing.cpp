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

private:
    void useTracks(Config& config, int count);
};

// count tracks in the first playlist's file; a negative count removes the file.
void SequencingTest::useTracks(Config& config, int count)
{
    QList<Track> tracks;
    for (int i = 0; i < count; ++i)
        tracks.append(Track::make(QStringLiteral("file:///%1.mp3").arg(i), QString::number(i), QString()));
    config.writePlaylistTracks(config.playlists().first().id, tracks);
    if (count < 0)
        QFile::remove(config.playlistFileURL(config.playlists().first().id));
}

void SequencingTest::movesFollowLoopAndShuffleRules_data()
{
    QTest::addColumn<bool>("next");
    QTest::addColumn<int>("count"); // -1: no playlist file
    QTest::addColumn<int>("from");
    QTest::addColumn<bool>("loop");
    QTest::addColumn<bool>("shuffle");
    QTest::addColumn<int>("to");
    QTest::newRow("next in the middle") << true << 3 << 0 << false << false << 1;
    QTest::newRow("next from the last, no loop: stays") << true << 3 << 2 << false << false << 2;
    QTest::newRow("next from the last, loop: wraps") << true << 3 << 2 << true << false << 0;
    QTest::newRow("next beyond a shrunk list, no loop: stays") << true << 3 << 9 << false << false << 9;
    QTest::newRow("next beyond a shrunk list, loop: first") << true << 3 << 9 << true << false << 0;
    QTest::newRow("shuffle with one track, shrunk") << true << 1 << 4 << false << true << 0;
    QTest::newRow("shuffle with two tracks") << true << 2 << 0 << false << true << 1;
    QTest::newRow("previous from the first, no loop") << false << 3 << 0 << false << false << 2;
    QTest::newRow("previous from the first, loop") << false << 3 << 0 << true << false << 2;
    QTest::newRow("previous ignores shuffle") << false << 3 << 2 << false << true << 1;
    QTest::newRow("previous far beyond a shrunk list") << false << 3 << 11 << false << false << 1;
    QTest::newRow("next in an empty playlist") << true << 0 << 2 << true << true << 2;
    QTest::newRow("next without a playlist file") << true << -1 << 2 << true << false << 2;
    QTest::newRow("previous without a playlist file") << false << -1 << 2 << false << false << 2;
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
    const int rounds = shuffle ? 20 : 1;
    StdoutCapture out;
    for (int round = 0; round < rounds; ++round) {
        config.setCurrentTrackIndex(from);
        next ? config.nextTrack() : config.previousTrack();
        QCOMPARE(config.currentTrackIndex(), to);
    }
    QCOMPARE(out.lines().size(), count < 0 ? rounds : 0); // an unreadable file is reported
    if (from == to)
        QCOMPARE(spy.count(), 0); // no notice without a change
}

void SequencingTest::shuffleNeverRepeatsAndIsFair()
{
    Config config;
    useTracks(config, 4);
    config.setShuffleTracks(true);
    int seen[4] = {};
    for (int i = 0; i < 3000; ++i) {
        config.setCurrentTrackIndex(1);
        config.nextTrack();
        const qint64 index = config.currentTrackIndex();
        QVERIFY(index >= 0 && index < 4 && index != 1);
        ++seen[index];
    }
    // Each other index expected 1000 times; a chi-square over two degrees of
    // freedom above 20 happens by chance less than once in 20,000.
    const double chiSquare = (std::pow(seen[0] - 1000, 2) + std::pow(seen[2] - 1000, 2) + std::pow(seen[3] - 1000, 2)) / 1000;
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

PLINK_TEST_MAIN_WITH(QGuiApplication, SequencingTest)
#include "test_sequencing.moc"
