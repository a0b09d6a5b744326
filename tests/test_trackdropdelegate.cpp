#include "settings/trackdropdelegate.h"
#include "settingsfixtures.h"
#include "store/config.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QGuiApplication>

using SettingsFixtures::names;
using SettingsFixtures::track;

class TrackDropDelegateTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void draggedRowLandsOnTheEnteredRowAndDropCommitsOnce_data();
    void draggedRowLandsOnTheEnteredRowAndDropCommitsOnce();
};

void TrackDropDelegateTest::draggedRowLandsOnTheEnteredRowAndDropCommitsOnce_data()
{
    QTest::addColumn<QString>("dragged"); // empty: no drag
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("playsSounds");
    QTest::addColumn<QStringList>("result"); // of T1 twin T3 twin, the twins being equal tracks
    const QStringList unchanged{"T1", "twin", "T3", "twin"};
    QTest::newRow("no drag") << "" << "T1" << false << unchanged;
    QTest::newRow("over itself") << "T1" << "T1" << false << unchanged;
    QTest::newRow("dragged row gone") << "elsewhere" << "T1" << false << unchanged;
    QTest::newRow("target row gone") << "T1" << "elsewhere" << false << unchanged;
    // Coming from above it goes below the entered row, from below above it.
    QTest::newRow("down by one") << "T1" << "twin" << false << QStringList{"twin", "T1", "T3", "twin"};
    QTest::newRow("down by two") << "T1" << "T3" << true << QStringList{"twin", "T3", "T1", "twin"};
    QTest::newRow("up by two") << "T3" << "T1" << true << QStringList{"T3", "T1", "twin", "twin"};
    QTest::newRow("equal tracks move the first") << "twin" << "T1" << false << QStringList{"twin", "T1", "T3", "twin"};
}

void TrackDropDelegateTest::draggedRowLandsOnTheEnteredRowAndDropCommitsOnce()
{
    QFETCH(QString, dragged);
    QFETCH(QString, target);
    QFETCH(bool, playsSounds);
    QFETCH(QStringList, result);
    Config config;
    config.setPlaysSounds(playsSounds);
    const Track twin = track("twin");
    QList<Track> tracks{track("T1"), twin, track("T3"), twin};
    const auto find = [&](const QString& name) {
        return names(tracks).contains(name) ? tracks.at(names(tracks).indexOf(name)) : track(name);
    };
    std::optional<Track> draggedTrack;
    if (!dragged.isEmpty())
        draggedTrack = find(dragged);
    QList<QStringList> commits;
    TrackDropDelegate delegate(tracks, config, draggedTrack, [&] { commits.append(names(tracks)); });
    delegate.dropEntered(find(target));
    QCOMPARE(names(tracks), result);
    QVERIFY(commits.isEmpty());

    // This binary carries no sounds: a requested one prints "not found".
    StdoutCapture out;
    QVERIFY(delegate.performDrop());
    QCOMPARE(commits, QList<QStringList>{result});
    QVERIFY(!draggedTrack);
    QCOMPARE(out.lines(), playsSounds ? QStringList{"Error: Sound file drag.m4a not found."} : QStringList());
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TrackDropDelegateTest)
#include "test_trackdropdelegate.moc"
