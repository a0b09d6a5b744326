#include "settings/playlistsettingsview.h"
#include "settings/tracktable.h"
#include "settingsfixtures.h"
#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>

using SettingsFixtures::FileWrites;
using SettingsFixtures::makeMp3;

namespace {

QString settingsPath()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/plinkBox-settings.json");
}

QString playlistsFolder()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/Playlists");
}

QString fileName(const QUuid& id)
{
    return uuidText(id) + QStringLiteral(".json");
}

SettingsData storedSettings()
{
    QFile file(settingsPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return settingsDataFromJson(file.readAll()).value.value_or(SettingsData{});
}

QStringList names(const QList<Track>& tracks)
{
    QStringList result;
    for (const Track& track : tracks)
        result.append(track.trackName);
    return result;
}

Track track(const QString& name)
{
    return Track::make(QStringLiteral("file:///music/") + name + QStringLiteral(".mp3"), name,
                       QStringLiteral("Band"));
}

// A catalogue of playlists named as given, the first being the one a first
// start makes; each holds the tracks listed for it.
QList<Playlist> makeCatalogue(Config& config, const QStringList& playlistNames,
                              const QList<QList<Track>>& tracks = {})
{
    while (config.playlists().size() < playlistNames.size())
        config.createPlaylist();
    QList<Playlist> catalogue = config.playlists();
    for (qsizetype i = 0; i < catalogue.size(); ++i) {
        catalogue[i].name = playlistNames.at(i);
        if (i < tracks.size())
            config.writePlaylistTracks(catalogue.at(i).id, tracks.at(i));
    }
    config.setPlaylists(catalogue);
    config.saveSettings();
    return catalogue;
}

QPoint rowCentre(TrackTable* table, int row)
{
    return table->visualRect(table->model()->index(row, 0)).center();
}

template <class Widget>
Widget* child(QWidget& view, const char* name)
{
    auto* widget = view.findChild<Widget*>(QLatin1String(name));
    if (!widget)
        qWarning("no %s", name);
    return widget;
}

void sendDrop(QWidget* target, const QPoint& at, QMimeData* mime)
{
    QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, {});
    QApplication::sendEvent(target, &enter);
    QDragMoveEvent move(at, Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, {});
    QApplication::sendEvent(target, &move);
    QDropEvent drop(at, Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, {});
    QApplication::sendEvent(target, &drop);
}

} // namespace

class PlaylistSettingsViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::wipeHome();
        QCursor::setPos(0, 0);
    }

    void startsOnThePlayersPlaylistAndPickingOnlyChangesTheEditor();
    void newPlaylistBecomesTheSelection();
    void nameCommitsThroughTheStore();
    void addedFilesKeepTheirOrderAndAreWrittenOnce();
    void filesStillGoToThePlaylistTheyWereAddedTo();
    void onlyLocalFilesAreTakenFromADrop();
    void trashRemovesTheSelectedTracks();
    void deleteAsksBeforeDeleting();
    void selectionStaysValidWhenTheCatalogueChanges();
    void unreadablePlaylistShowsNoTracks();
    void nothingToEditWithoutPlaylists();
    void rowsDraggedOverTheTableReorderAndSaveOnce();
    void fileDialogOffersSeveralFilesOfAnyType();
};

void PlaylistSettingsViewTest::startsOnThePlayersPlaylistAndPickingOnlyChangesTheEditor()
{
    Config config;
    const QList<Playlist> catalogue
        = makeCatalogue(config, {"Road", "Home", "Work"}, {{track("r1")}, {track("h1"), track("h2")}, {track("w1")}});
    config.setCurrentPlaylistIndex(1);
    config.setLastSelectedPlaylistID(1);
    config.saveSettings();
    QFile::remove(settingsPath());

    PlaylistSettingsView view(config);
    auto* picker = child<QComboBox>(view, "playlistPicker");
    QCOMPARE(picker->count(), 3);
    QCOMPARE(picker->itemText(0), QStringLiteral("Road"));
    QCOMPARE(picker->currentText(), QStringLiteral("Home"));
    QCOMPARE(view.selectedPlaylistID(), catalogue.at(1).id);
    QCOMPARE(names(view.tracks()), (QStringList{"h1", "h2"}));
    QCOMPARE(child<QLineEdit>(view, "playlistNameField")->text(), QStringLiteral("Home"));

    picker->setCurrentIndex(2);
    QCOMPARE(view.selectedPlaylistID(), catalogue.at(2).id);
    QCOMPARE(names(view.tracks()), QStringList{"w1"});
    QCOMPARE(child<QLineEdit>(view, "playlistNameField")->text(), QStringLiteral("Work"));
    // The player keeps its playlist; nothing is saved.
    QCOMPARE(config.currentPlaylistIndex(), 1);
    QCOMPARE(config.lastSelectedPlaylistID(), 1);
    QVERIFY(!QFile::exists(settingsPath()));

    // The player choosing another playlist brings the editor along.
    config.setCurrentPlaylistIndex(0);
    QCOMPARE(picker->currentText(), QStringLiteral("Road"));
    QCOMPARE(names(view.tracks()), QStringList{"r1"});
}

void PlaylistSettingsViewTest::newPlaylistBecomesTheSelection()
{
    Config config;
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* newButton = child<QToolButton>(view, "newPlaylistButton");
    QVERIFY(!newButton->icon().isNull());

    QTest::mouseClick(newButton, Qt::LeftButton);
    QCOMPARE(config.playlists().size(), 2);
    const Playlist created = config.playlists().last();
    QCOMPARE(view.selectedPlaylistID(), created.id);
    QCOMPARE(storedSettings().playlists.size(), 2);
    QVERIFY(QFile::exists(playlistsFolder() + QLatin1Char('/') + fileName(created.id)));
    QVERIFY(view.tracks().isEmpty());
    // Ready for a name to be typed over the default one.
    auto* nameField = child<QLineEdit>(view, "playlistNameField");
    QCOMPARE(nameField->selectedText(), created.name);
}

void PlaylistSettingsViewTest::nameCommitsThroughTheStore()
{
    Config config;
    const QList<Playlist> catalogue = makeCatalogue(config, {"First", "Second"});
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.selectPlaylist(catalogue.at(1).id);
    auto* nameField = child<QLineEdit>(view, "playlistNameField");
    QSignalSpy changes(&config, &Config::changed);

    nameField->setFocus();
    nameField->selectAll();
    QTest::keyClicks(nameField, QStringLiteral("Morning"));
    QCOMPARE(changes.count(), 0); // nothing until the name is committed
    QTest::keyClick(nameField, Qt::Key_Return);

    QCOMPARE(config.playlists().at(1).name, QStringLiteral("Morning"));
    QCOMPARE(config.playlists().at(0).name, QStringLiteral("First"));
    QCOMPARE(config.playlists().at(1).id, catalogue.at(1).id);
    QCOMPARE(storedSettings().playlists.at(1).name, QStringLiteral("Morning"));
    QCOMPARE(child<QComboBox>(view, "playlistPicker")->currentText(), QStringLiteral("Morning"));

    // Committing the same name again saves nothing.
    QFile::remove(settingsPath());
    QTest::keyClick(nameField, Qt::Key_Return);
    QVERIFY(!QFile::exists(settingsPath()));
}

void PlaylistSettingsViewTest::addedFilesKeepTheirOrderAndAreWrittenOnce()
{
    Config config;
    const QString folder = TestEnvironment::home() + QStringLiteral("/My Music");
    QDir().mkpath(folder);
    const QStringList paths{folder + "/b song.mp3", folder + "/a song.mp3", folder + "/plain.mp3"};
    QVERIFY(makeMp3(paths.at(0), QStringLiteral("Song"), QStringLiteral("Band")));
    QVERIFY(makeMp3(paths.at(1), QStringLiteral("Ünïcode"), QStringLiteral("Ensemble")));
    QVERIFY(makeMp3(paths.at(2)));
    const QUuid id = makeCatalogue(config, {"Mix"}, {{track("old")}}).first().id;

    PlaylistSettingsView view(config);
    QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);
    FileWrites writes(playlistsFolder());
    QVERIFY(writes.isWatching());
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    view.addFiles(urls);
    QVERIFY(added.wait(10000));

    QCOMPARE(names(view.tracks()), (QStringList{"old", "Song", "Ünïcode", "Track"}));
    QCOMPARE(view.tracks().at(1).artist, QStringLiteral("Band"));
    QCOMPARE(view.tracks().at(3).artist, QStringLiteral("Unknown artist"));
    QCOMPARE(view.tracks().at(1).urlString, QUrl::fromLocalFile(paths.at(0)).toString(QUrl::FullyEncoded));
    QVERIFY(view.tracks().at(1).urlString.contains(QStringLiteral("My%20Music/b%20song.mp3")));
    QVERIFY(view.tracks().at(1).id != view.tracks().at(2).id);
    QCOMPARE(config.readPlaylistTracks(id), std::optional<QList<Track>>(view.tracks()));
    QCOMPARE(writes.count(fileName(id)), 1);
    QCOMPARE(added.count(), 1);
}

void PlaylistSettingsViewTest::filesStillGoToThePlaylistTheyWereAddedTo()
{
    Config config;
    const QString path = TestEnvironment::home() + QStringLiteral("/late.mp3");
    QVERIFY(makeMp3(path, QStringLiteral("Late"), QStringLiteral("Band")));
    const QList<Playlist> catalogue = makeCatalogue(config, {"Target", "Other"}, {{track("t1")}, {track("o1")}});
    PlaylistSettingsView view(config);
    view.selectPlaylist(catalogue.at(0).id);
    QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);

    view.addFiles({QUrl::fromLocalFile(path)});
    view.selectPlaylist(catalogue.at(1).id); // before the tags have been read
    QVERIFY(added.wait(10000));

    QCOMPARE(names(view.tracks()), QStringList{"o1"});
    QCOMPARE(names(config.readPlaylistTracks(catalogue.at(0).id).value()), (QStringList{"t1", "Late"}));
    QCOMPARE(names(config.readPlaylistTracks(catalogue.at(1).id).value()), QStringList{"o1"});
}

void PlaylistSettingsViewTest::onlyLocalFilesAreTakenFromADrop()
{
    Config config;
    const QString first = TestEnvironment::home() + QStringLiteral("/one.mp3");
    const QString second = TestEnvironment::home() + QStringLiteral("/two.mp3");
    QVERIFY(makeMp3(first, QStringLiteral("One"), QStringLiteral("Band")));
    QVERIFY(makeMp3(second, QStringLiteral("Two"), QStringLiteral("Band")));
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* table = child<TrackTable>(view, "trackTable");
    QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);

    // Nothing here is a file: the drop is refused.
    QMimeData web;
    web.setUrls({QUrl(QStringLiteral("https://example.org/song.mp3"))});
    web.setText(QStringLiteral("https://example.org/song.mp3"));
    QDragEnterEvent refused(QPoint(10, 10), Qt::CopyAction, &web, Qt::LeftButton, {});
    QApplication::sendEvent(table->viewport(), &refused);
    QVERIFY(!refused.isAccepted());

    // As a file manager sends them: URLs with their text, a folder among them.
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(second), QUrl(QStringLiteral("https://example.org/x.mp3")),
                   QUrl::fromLocalFile(TestEnvironment::home()), QUrl::fromLocalFile(first)});
    files.setText(QUrl::fromLocalFile(second).toString());
    sendDrop(table->viewport(), QPoint(10, 10), &files);
    QVERIFY(added.wait(10000));
    QCOMPARE(names(view.tracks()), (QStringList{"Two", "One"}));
    QCOMPARE(names(config.readPlaylistTracks(*view.selectedPlaylistID()).value()), (QStringList{"Two", "One"}));
}

void PlaylistSettingsViewTest::trashRemovesTheSelectedTracks()
{
    Config config;
    const QUuid id
        = makeCatalogue(config, {"Mix"}, {{track("t1"), track("t2"), track("t3"), track("t4")}}).first().id;
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* table = child<TrackTable>(view, "trackTable");
    auto* trash = child<QToolButton>(view, "removeTracksButton");
    QVERIFY(!trash->isEnabled()); // nothing selected yet

    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, rowCentre(table, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::ControlModifier, rowCentre(table, 2));
    QVERIFY(trash->isEnabled());
    QTest::mouseClick(trash, Qt::LeftButton);

    QCOMPARE(names(view.tracks()), (QStringList{"t2", "t4"}));
    QCOMPARE(names(config.readPlaylistTracks(id).value()), (QStringList{"t2", "t4"}));
    QCOMPARE(table->model()->rowCount(), 2);
}

void PlaylistSettingsViewTest::deleteAsksBeforeDeleting()
{
    Config config;
    const QList<Playlist> catalogue = makeCatalogue(config, {"Keep", "Drop"});
    config.setCurrentPlaylistIndex(1);
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* button = child<QPushButton>(view, "deletePlaylistButton");
    const QString dropFile = playlistsFolder() + QLatin1Char('/') + fileName(catalogue.at(1).id);
    QCOMPARE(button->text(), QStringLiteral("Delete playlist..."));

    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), QStringLiteral("Are you sure?"));
    QCOMPARE(config.playlists(), catalogue);
    QVERIFY(QFile::exists(dropFile));

    // Looking at another playlist withdraws the question.
    view.selectPlaylist(catalogue.at(0).id);
    QCOMPARE(button->text(), QStringLiteral("Delete playlist..."));
    view.selectPlaylist(catalogue.at(1).id);
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::mouseClick(button, Qt::LeftButton);

    QCOMPARE(config.playlists(), QList<Playlist>{catalogue.at(0)});
    QCOMPARE(storedSettings().playlists, QList<Playlist>{catalogue.at(0)});
    QVERIFY(!QFile::exists(dropFile));
    QCOMPARE(button->text(), QStringLiteral("Delete playlist..."));
    QCOMPARE(view.selectedPlaylistID(), catalogue.at(0).id);
    QCOMPARE(config.currentPlaylistIndex(), 0); // brought back into range

    // The last playlist gives way to a fresh "Untitled" one, which is then shown.
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(config.playlists().size(), 1);
    QCOMPARE(config.playlists().first().name, QStringLiteral("Untitled"));
    QCOMPARE(view.selectedPlaylistID(), config.playlists().first().id);
    QCOMPARE(child<QComboBox>(view, "playlistPicker")->currentText(), QStringLiteral("Untitled"));
}

void PlaylistSettingsViewTest::selectionStaysValidWhenTheCatalogueChanges()
{
    Config config;
    const QList<Playlist> catalogue = makeCatalogue(config, {"A", "B", "C"}, {{track("a1")}, {}, {track("c1")}});
    config.setCurrentPlaylistIndex(2);
    PlaylistSettingsView view(config);
    view.selectPlaylist(catalogue.at(1).id);
    auto* picker = child<QComboBox>(view, "playlistPicker");

    // Renamed and reordered elsewhere: the same playlist stays selected.
    QList<Playlist> changed{catalogue.at(2), catalogue.at(1), catalogue.at(0)};
    changed[1].name = QStringLiteral("Bee");
    config.setPlaylists(changed);
    QCOMPARE(view.selectedPlaylistID(), catalogue.at(1).id);
    QCOMPARE(picker->currentText(), QStringLiteral("Bee"));
    QCOMPARE(child<QLineEdit>(view, "playlistNameField")->text(), QStringLiteral("Bee"));

    // Deleted elsewhere: the player's playlist is shown instead, or the first
    // one when the player's index is out of range.
    config.deletePlaylist(catalogue.at(1).id);
    QCOMPARE(view.selectedPlaylistID(), catalogue.at(2).id); // the player's index now points past the end
    QCOMPARE(picker->count(), 2);
    QCOMPARE(picker->itemData(picker->currentIndex()).toUuid(), *view.selectedPlaylistID());
}

void PlaylistSettingsViewTest::unreadablePlaylistShowsNoTracks()
{
    Config config;
    const QList<Playlist> catalogue = makeCatalogue(config, {"Good", "Broken"}, {{track("g1")}});
    QFile broken(playlistsFolder() + QLatin1Char('/') + fileName(catalogue.at(1).id));
    QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("{ \"tracks\" : [ oops");
    broken.close();

    PlaylistSettingsView view(config);
    QCOMPARE(names(view.tracks()), QStringList{"g1"});
    StdoutCapture out;
    view.selectPlaylist(catalogue.at(1).id);
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(view.tracks().isEmpty());
    QCOMPARE(child<TrackTable>(view, "trackTable")->model()->rowCount(), 0);

    // Adding to it replaces the file, but its old bytes are kept beside it, once.
    const QString path = playlistsFolder() + QLatin1Char('/') + fileName(catalogue.at(1).id);
    QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);
    const QString file = TestEnvironment::home() + QStringLiteral("/new.mp3");
    QVERIFY(makeMp3(file));
    view.addFiles({QUrl::fromLocalFile(file)});
    QVERIFY(added.wait(10000));
    view.addFiles({QUrl::fromLocalFile(file)});
    QVERIFY(added.wait(10000));
    QCOMPARE(config.readPlaylistTracks(catalogue.at(1).id)->size(), 2);
    QFile kept(path + QStringLiteral(".broken"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("{ \"tracks\" : [ oops"));
    QVERIFY(!QFile::exists(path + QStringLiteral(".broken-2")));
}

void PlaylistSettingsViewTest::nothingToEditWithoutPlaylists()
{
    Config config;
    config.setPlaylists({});
    PlaylistSettingsView view(config);
    QVERIFY(!view.selectedPlaylistID());
    QVERIFY(!child<QPushButton>(view, "addTracksButton")->isEnabled());
    QVERIFY(!child<QPushButton>(view, "deletePlaylistButton")->isEnabled());
    QVERIFY(!child<QLineEdit>(view, "playlistNameField")->isEnabled());

    config.createPlaylist();
    QVERIFY(view.selectedPlaylistID());
    QVERIFY(child<QPushButton>(view, "addTracksButton")->isEnabled());
}

void PlaylistSettingsViewTest::rowsDraggedOverTheTableReorderAndSaveOnce()
{
    Config config;
    const QUuid id = makeCatalogue(config, {"Mix"}, {{track("T1"), track("T2"), track("T3")}}).first().id;
    PlaylistSettingsView view(config);
    view.resize(400, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* table = child<TrackTable>(view, "trackTable");
    QWidget* viewport = table->viewport();
    FileWrites writes(playlistsFolder());

    // The user presses on the first row and pulls it: the table starts a drag.
    // This platform has no drag loop, so the drag's path over the rows is
    // sent as the events the table would get.
    const QPoint start = rowCentre(table, 0);
    QTest::mousePress(viewport, Qt::LeftButton, {}, start);
    QTest::mouseMove(viewport, start + QPoint(QApplication::startDragDistance() + 5, 0));
    QTest::mouseMove(viewport, start + QPoint(2 * QApplication::startDragDistance() + 10, 0));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, start + QPoint(2 * QApplication::startDragDistance() + 10, 0));

    QMimeData payload;
    payload.setText(QStringLiteral("row"));
    QDragEnterEvent enter(rowCentre(table, 0), Qt::MoveAction, &payload, Qt::LeftButton, {});
    QApplication::sendEvent(viewport, &enter);
    QVERIFY(enter.isAccepted());
    for (const int row : {0, 1, 1, 2}) {
        QDragMoveEvent move(rowCentre(table, row), Qt::MoveAction, &payload, Qt::LeftButton, {});
        QApplication::sendEvent(viewport, &move);
        QVERIFY(move.isAccepted());
        if (row == 1)
            QCOMPARE(names(view.tracks()), (QStringList{"T2", "T1", "T3"}));
    }
    QCOMPARE(names(view.tracks()), (QStringList{"T2", "T3", "T1"}));
    QCOMPARE(table->model()->index(2, 0).data().toString(), QStringLiteral("T1"));
    QCOMPARE(writes.count(fileName(id)), 0); // nothing written while dragging

    QDropEvent drop(rowCentre(table, 2), Qt::MoveAction, &payload, Qt::LeftButton, {});
    QApplication::sendEvent(viewport, &drop);
    QVERIFY(drop.isAccepted());
    QCOMPARE(names(config.readPlaylistTracks(id).value()), (QStringList{"T2", "T3", "T1"}));
    QCOMPARE(writes.count(fileName(id)), 1);
}

void PlaylistSettingsViewTest::fileDialogOffersSeveralFilesOfAnyType()
{
    Config config;
    const QString folder = TestEnvironment::home() + QStringLiteral("/Music");
    QDir().mkpath(folder);
    QVERIFY(makeMp3(folder + QStringLiteral("/first.mp3"), QStringLiteral("First"), QStringLiteral("Band")));
    QVERIFY(makeMp3(folder + QStringLiteral("/second.mp3"), QStringLiteral("Second"), QStringLiteral("Band")));
    PlaylistSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);

    QString title;
    QFileDialog::FileMode mode = QFileDialog::AnyFile;
    QStringList filters;
    QTimer answer;
    answer.setInterval(50);
    connect(&answer, &QTimer::timeout, this, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        answer.stop();
        title = dialog->windowTitle();
        mode = dialog->fileMode();
        filters = dialog->nameFilters();
        // Typed into the dialog's name field, as a user may do.
        dialog->setDirectory(folder);
        if (auto* nameField = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
            nameField->setText(QStringLiteral("\"second.mp3\" \"first.mp3\""));
        QMetaObject::invokeMethod(dialog, "accept");
    });
    // Should the dialog never be answered, close it so that the test fails rather than hangs.
    QTimer watchdog;
    watchdog.setSingleShot(true);
    connect(&watchdog, &QTimer::timeout, this, [] {
        if (QWidget* modal = QApplication::activeModalWidget())
            modal->close();
    });
    answer.start();
    watchdog.start(15000);
    QTest::mouseClick(child<QPushButton>(view, "addTracksButton"), Qt::LeftButton);
    watchdog.stop();

    QCOMPARE(title, QStringLiteral("Add track to playlist"));
    QCOMPARE(mode, QFileDialog::ExistingFiles);
    QVERIFY2(filters.isEmpty() || filters == QStringList{QStringLiteral("All Files (*)")}, qPrintable(filters.join(';')));
    QVERIFY(added.wait(10000));
    QCOMPARE(names(view.tracks()), (QStringList{"Second", "First"}));
}

PLINK_TEST_MAIN_WITH(QApplication, PlaylistSettingsViewTest)
#include "test_playlistsettingsview.moc"
