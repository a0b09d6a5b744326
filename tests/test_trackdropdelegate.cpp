#include "settings/trackdropdelegate.h"
#include "store/config.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QGuiApplication>

namespace {

using Move = TrackDropDelegate::Move;

Track track(const QString& name)
{
    return Track::make(QStringLiteral("file:///music/") + name + QStringLiteral(".mp3"), name,
                       QStringLiteral("Band"));
}

QStringList names(const QList<Track>& tracks)
{
    QStringList result;
    for (const Track& entry : tracks)
        result.append(entry.trackName);
    return result;
}

} // namespace

class TrackDropDelegateTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void moveLandsOnTheTargetRow_data();
    void moveLandsOnTheTargetRow();
    void dragOverRowsReordersAndDropCommitsOnce();
    void noMoveWithoutADragOrAMissingRow_data();
    void noMoveWithoutADragOrAMissingRow();
    void equalTracksMoveTheFirst();
    void dropEndsTheDragWithOrWithoutSounds_data();
    void dropEndsTheDragWithOrWithoutSounds();
};

void TrackDropDelegateTest::moveLandsOnTheTargetRow_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("result"); // of "ABCDE"
    QTest::newRow("down by one") << 2 << 3 << 4 << "ABDCE";
    QTest::newRow("up by two") << 3 << 1 << 1 << "ADBCE";
    QTest::newRow("first to last") << 0 << 4 << 5 << "BCDEA";
    QTest::newRow("last to first") << 4 << 0 << 0 << "EABCD";
    QTest::newRow("first onto second") << 0 << 1 << 2 << "BACDE";
}

void TrackDropDelegateTest::moveLandsOnTheTargetRow()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, offset);
    QFETCH(QString, result);
    const Move move = TrackDropDelegate::moveOnto(from, to);
    QCOMPARE(move, (Move{from, offset}));
    QList<QChar> letters{'A', 'B', 'C', 'D', 'E'};
    TrackDropDelegate::apply(letters, move);
    QCOMPARE(QString(letters.constData(), letters.size()), result);
    // The moved element always ends on the row it was dropped onto.
    QCOMPARE(letters.at(to), QChar('A' + from));
}

void TrackDropDelegateTest::dragOverRowsReordersAndDropCommitsOnce()
{
    Config config;
    QList<Track> tracks{track("T1"), track("T2"), track("T3")};
    const QList<Track> original = tracks;
    std::optional<Track> dragged = tracks.at(0);
    QList<QStringList> commits;
    TrackDropDelegate delegate(tracks, config, dragged, [&] { commits.append(names(tracks)); });

    delegate.dropEntered(original.at(1));
    QCOMPARE(names(tracks), (QStringList{"T2", "T1", "T3"}));
    delegate.dropEntered(original.at(0)); // the dragged row itself, now under the pointer
    QCOMPARE(names(tracks), (QStringList{"T2", "T1", "T3"}));
    delegate.dropEntered(original.at(2));
    QCOMPARE(names(tracks), (QStringList{"T2", "T3", "T1"}));
    QVERIFY2(commits.isEmpty(), "nothing is committed while dragging");

    QVERIFY(delegate.performDrop());
    QCOMPARE(commits, QList<QStringList>{(QStringList{"T2", "T3", "T1"})});
    QVERIFY(!dragged);

    // After the drop further passes do nothing until a new drag starts.
    delegate.dropEntered(original.at(1));
    QCOMPARE(names(tracks), (QStringList{"T2", "T3", "T1"}));
}

void TrackDropDelegateTest::noMoveWithoutADragOrAMissingRow_data()
{
    QTest::addColumn<int>("draggedRow"); // -1: no drag, 3: a track not in the list
    QTest::addColumn<int>("targetRow");
    QTest::newRow("no drag") << -1 << 1;
    QTest::newRow("over itself") << 1 << 1;
    QTest::newRow("dragged row gone") << 3 << 0;
    QTest::newRow("target row gone") << 0 << 3;
}

void TrackDropDelegateTest::noMoveWithoutADragOrAMissingRow()
{
    QFETCH(int, draggedRow);
    QFETCH(int, targetRow);
    Config config;
    const QList<Track> all{track("T1"), track("T2"), track("T3"), track("elsewhere")};
    QList<Track> tracks = all.mid(0, 3);
    std::optional<Track> dragged;
    if (draggedRow >= 0)
        dragged = all.at(draggedRow);
    TrackDropDelegate delegate(tracks, config, dragged, [] {});
    QVERIFY(!delegate.plannedMove(all.at(targetRow)));
    delegate.dropEntered(all.at(targetRow));
    QCOMPARE(tracks, all.mid(0, 3));
}

void TrackDropDelegateTest::equalTracksMoveTheFirst()
{
    Config config;
    const Track twin = track("twin");
    const Track other = track("other");
    QList<Track> tracks{other, twin, twin};
    tracks[2].trackName = QStringLiteral("twin"); // all fields equal: the same row to the delegate
    std::optional<Track> dragged = twin;
    TrackDropDelegate delegate(tracks, config, dragged, [] {});
    QCOMPARE(delegate.plannedMove(other), (Move{1, 0}));
    delegate.dropEntered(other);
    QCOMPARE(tracks, (QList<Track>{twin, other, twin}));
}

void TrackDropDelegateTest::dropEndsTheDragWithOrWithoutSounds_data()
{
    QTest::addColumn<bool>("playsSounds");
    QTest::newRow("sounds on") << true;
    QTest::newRow("sounds off") << false;
}

void TrackDropDelegateTest::dropEndsTheDragWithOrWithoutSounds()
{
    // This test binary carries no sound resources, so a requested sound
    // shows up as the sound player's "not found" line.
    QFETCH(bool, playsSounds);
    Config config;
    config.setPlaysSounds(playsSounds);
    QList<Track> tracks{track("T1"), track("T2"), track("T3")};
    std::optional<Track> dragged = tracks.at(2);
    int commits = 0;
    TrackDropDelegate delegate(tracks, config, dragged, [&] { ++commits; });
    delegate.dropEntered(tracks.at(0));
    QCOMPARE(names(tracks), (QStringList{"T3", "T1", "T2"}));
    StdoutCapture out;
    QVERIFY(delegate.performDrop());
    QCOMPARE(commits, 1);
    QVERIFY(!dragged);
    const QStringList expected = playsSounds ? QStringList{QStringLiteral("Error: Sound file drag.m4a not found.")}
                                             : QStringList();
    QCOMPARE(out.lines(), expected);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TrackDropDelegateTest)
#include "test_trackdropdelegate.moc"
