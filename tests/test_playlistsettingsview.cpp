#include "settings/playlistsettingsview.h"
#include "settings/tracktable.h"
#include "settingsfixtures.h"
#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>

using namespace SettingsFixtures;
using TestFiles::settingsPath;
using TestFiles::storedSettings;

namespace {

// Playlists with these names (the first is the one a first start makes) and tracks.
QList<Playlist> makeCatalogue(Config& config, const QStringList& playlistNames, const QList<QList<Track>>& tracks)
{
    while (config.playlists().size() < playlistNames.size())
        config.createPlaylist();
    QList<Playlist> catalogue = config.playlists();
    for (qsizetype i = 0; i < catalogue.size(); ++i) {
        catalogue[i].name = playlistNames.at(i);
        config.writePlaylistTracks(catalogue.at(i).id, tracks.value(i));
    }
    config.setPlaylists(catalogue);
    config.saveSettings();
    return catalogue;
}

QPoint rowCentre(TrackTable* table, int row)
{
    return table->visualRect(table->model()->index(row, 0)).center();
}

template <class Event>
bool sendDragEvent(QWidget* target, const QPoint& at, const QMimeData& mime)
{
    Event event(at, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(target, &event);
    return event.isAccepted();
}

} // namespace

class PlaylistSettingsViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void playlistsArePickedCreatedRenamedAndDeletedInTwoSteps();
    void filesAreAddedInOrderAndUnreadableFilesKept();
    void rowsDraggedOverTheTableReorderAndSaveOnceThenTrash();
};

void PlaylistSettingsViewTest::playlistsArePickedCreatedRenamedAndDeletedInTwoSteps()
{
    Config config;
    const QList<Playlist> catalogue
        = makeCatalogue(config, {"Road", "Home", "Work"}, {{track("r1")}, {track("h1"), track("h2")}, {track("w1")}});
    config.setCurrentPlaylistIndex(1);
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* picker = view.findChild<QComboBox*>("playlistPicker");
    auto* nameField = view.findChild<QLineEdit*>("playlistNameField");
    QCOMPARE(names(view.tracks()), (QStringList{"h1", "h2"}));

    // Picking here leaves the player's playlist alone and saves nothing; the
    // player choosing one brings the editor along.
    QFile::remove(settingsPath());
    picker->setCurrentIndex(2);
    QCOMPARE(nameField->text(), QStringLiteral("Work"));
    QCOMPARE(names(view.tracks()), QStringList{"w1"});
    QCOMPARE(config.currentPlaylistIndex(), 1);
    QVERIFY(!QFile::exists(settingsPath()));
    config.setCurrentPlaylistIndex(0);
    QCOMPARE(names(view.tracks()), QStringList{"r1"});

    // A new playlist is selected with its name ready to be typed over; Return saves the name.
    QTest::mouseClick(view.findChild<QAbstractButton*>("newPlaylistButton"), Qt::LeftButton);
    const Playlist created = config.playlists().value(3);
    QCOMPARE(view.selectedPlaylistID(), created.id);
    QTest::keyClicks(nameField, QStringLiteral("Morning"));
    QTest::keyClick(nameField, Qt::Key_Return);
    QVERIFY(storedSettings().playlists.contains(Playlist{created.id, QStringLiteral("Morning")}));
    QCOMPARE(picker->currentText(), QStringLiteral("Morning"));

    // The first press only asks, the second deletes.
    config.setCurrentPlaylistIndex(3);
    auto* button = view.findChild<QAbstractButton*>("deletePlaylistButton");
    button->click();
    QCOMPARE(button->text(), QStringLiteral("Are you sure?"));
    QCOMPARE(config.playlists().size(), 4);
    button->click();
    QCOMPARE(storedSettings().playlists.size(), 3);
    QCOMPARE(button->text(), QStringLiteral("Delete playlist..."));
    QCOMPARE(config.currentPlaylistIndex(), 0); // brought back into range
    // Deleted elsewhere while the player's index points past the end: the first is shown.
    config.setCurrentPlaylistIndex(2);
    config.deletePlaylist(catalogue.at(2).id);
    QCOMPARE(names(view.tracks()), QStringList{"r1"});

    config.setPlaylists({});
    QVERIFY(!view.selectedPlaylistID());
    QVERIFY(!view.findChild<QAbstractButton*>("addTracksButton")->isEnabled());
}

void PlaylistSettingsViewTest::filesAreAddedInOrderAndUnreadableFilesKept()
{
    Config config;
    const QString folder = TestEnvironment::home() + "/My Music";
    QDir().mkpath(folder);
    const QStringList paths{folder + "/b song.mp3", folder + "/a song.mp3", folder + "/plain.mp3"};
    QVERIFY(makeMp3(paths.at(0), QStringLiteral("Song"), QStringLiteral("Band")));
    QVERIFY(makeMp3(paths.at(1), QStringLiteral("Ünïcode"), QStringLiteral("Ensemble")));
    QVERIFY(makeMp3(paths.at(2)));
    const QList<Playlist> catalogue = makeCatalogue(config, {"Mix", "Broken"}, {{track("old")}});
    const QUuid id = catalogue.at(0).id;
    const QUuid broken = catalogue.at(1).id;
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QWidget* viewport = view.findChild<TrackTable*>("trackTable")->viewport();
    QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);
    FileWrites writes(QFileInfo(config.playlistFileURL(id)).path());

    // As a file manager sends them (text too), with a web address and a folder among them.
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(paths.at(0)), QUrl("https://example.org/x.mp3"), QUrl::fromLocalFile(folder),
                   QUrl::fromLocalFile(paths.at(1)), QUrl::fromLocalFile(paths.at(2))});
    files.setText(files.urls().first().toString());
    QVERIFY(sendDragEvent<QDragEnterEvent>(viewport, {10, 10}, files));
    QVERIFY(sendDragEvent<QDropEvent>(viewport, {10, 10}, files));
    QVERIFY(added.wait(10000));
    QCOMPARE(names(view.tracks()), (QStringList{"old", "Song", "Ünïcode", "Track"}));
    QCOMPARE(view.tracks().at(3).artist, QStringLiteral("Unknown artist"));
    QVERIFY(view.tracks().at(1).urlString.endsWith(QStringLiteral("My%20Music/b%20song.mp3")));
    QCOMPARE(config.readPlaylistTracks(id), std::optional<QList<Track>>(view.tracks()));
    QCOMPARE(writes.count(uuidText(id) + ".json"), 1);

    // Files only, several at once, of any type; three names typed as a user may.
    // Nothing is checked inside: a failure there would leave the dialog open.
    QStringList seen;
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        answer.stop();
        seen = QStringList{dialog->windowTitle(), QString::number(dialog->fileMode())} + dialog->nameFilters();
        dialog->setDirectory(folder);
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText("\"plain.mp3\" \"b song.mp3\" \"a song.mp3\"");
        QMetaObject::invokeMethod(dialog, "accept");
    });
    answer.start(50);
    QTest::mouseClick(view.findChild<QAbstractButton*>("addTracksButton"), Qt::LeftButton);
    QCOMPARE(seen.mid(0, 2), (QStringList{"Add track to playlist", QString::number(QFileDialog::ExistingFiles)}));
    QVERIFY2(seen.mid(2).isEmpty() || seen.mid(2) == QStringList{"All Files (*)"}, qPrintable(seen.join(';')));
    QVERIFY(added.wait(10000));
    QCOMPARE(names(view.tracks()).mid(4), (QStringList{"Track", "Song", "Ünïcode"}));
    // Two quick additions, the first slower to read, land in the order they were made.
    view.addFiles(QList<QUrl>(300, QUrl::fromLocalFile(paths.at(2))));
    view.addFiles({QUrl::fromLocalFile(paths.at(0))});
    QTRY_COMPARE_WITH_TIMEOUT(added.count(), 4, 10000);
    QCOMPARE(view.tracks().size(), 7 + 300 + 1);
    QCOMPARE(view.tracks().last().trackName, QStringLiteral("Song"));

    // Moving on before the tags are read: the files still go where they were added.
    // The next playlist's file is unreadable: reported and shown empty.
    const QByteArray brokenBytes("{ \"tracks\" : [ oops");
    QVERIFY(TestFiles::writeFile(config.playlistFileURL(broken), brokenBytes));
    view.addFiles({QUrl::fromLocalFile(paths.at(1))});
    StdoutCapture out;
    view.selectPlaylist(broken);
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(added.wait(10000));
    QCOMPARE(names(config.readPlaylistTracks(id).value()).mid(308), QStringList{"Ünïcode"});
    QVERIFY(view.tracks().isEmpty());
    // Adding to it replaces the file, but its old bytes are kept beside it, once.
    for (int addition = 0; addition < 2; ++addition) {
        view.addFiles({QUrl::fromLocalFile(paths.at(2))});
        QVERIFY(added.wait(10000));
    }
    QCOMPARE(names(config.readPlaylistTracks(broken).value()), (QStringList{"Track", "Track"}));
    QCOMPARE(TestFiles::readFile(config.playlistFileURL(broken) + ".broken"), brokenBytes);
    QVERIFY(!QFile::exists(config.playlistFileURL(broken) + ".broken-2"));
}

void PlaylistSettingsViewTest::rowsDraggedOverTheTableReorderAndSaveOnceThenTrash()
{
    Config config;
    const QUuid id = makeCatalogue(config, {"Mix"}, {{track("T1"), track("T2"), track("T3")}}).first().id;
    PlaylistSettingsView view(config);
    view.resize(400, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* table = view.findChild<TrackTable*>("trackTable");
    QWidget* viewport = table->viewport();
    FileWrites writes(QFileInfo(config.playlistFileURL(id)).path());

    // Pulling the first row starts a drag; this platform has no drag loop, so
    // the drag's path over the rows is sent as the events the table would get.
    const QPoint start = rowCentre(table, 0);
    const QPoint pulled = start + QPoint(2 * QApplication::startDragDistance() + 10, 0);
    QTest::mousePress(viewport, Qt::LeftButton, {}, start);
    QTest::mouseMove(viewport, start + QPoint(QApplication::startDragDistance() + 5, 0));
    QTest::mouseMove(viewport, pulled);
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, pulled);
    QMimeData payload;
    payload.setText(QStringLiteral("row"));
    QVERIFY(sendDragEvent<QDragEnterEvent>(viewport, start, payload));
    for (const int row : {0, 1, 1, 2})
        QVERIFY(sendDragEvent<QDragMoveEvent>(viewport, rowCentre(table, row), payload));
    QVERIFY(sendDragEvent<QDropEvent>(viewport, rowCentre(table, 2), payload));
    QCOMPARE(names(config.readPlaylistTracks(id).value()), (QStringList{"T2", "T3", "T1"}));
    QCOMPARE(writes.count(uuidText(id) + ".json"), 1);

    // The trash button removes the selected rows.
    QTest::mouseClick(viewport, Qt::LeftButton, {}, rowCentre(table, 0));
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::ControlModifier, rowCentre(table, 2));
    QTest::mouseClick(view.findChild<QAbstractButton*>("removeTracksButton"), Qt::LeftButton);
    QCOMPARE(names(config.readPlaylistTracks(id).value()), QStringList{"T3"});
}

PLINK_TEST_MAIN_WITH(QApplication, PlaylistSettingsViewTest)
#include "test_playlistsettingsview.moc"
