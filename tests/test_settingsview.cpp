#include "app/commandmenu.h"
#include "playerfixture.h"
#include "settings/generalsettingsview.h"
#include "settings/playlistsettingsview.h"
#include "settings/settingsview.h"
#include "settings/tracktable.h"
#include "store/config.h"
#include "support/audiofixtures.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>

using TestFiles::settingsPath;
using TestFiles::storedSettings;

namespace {

const struct {
    const char* name;
    const char* label;
    bool SettingsData::*stored;
    void (Config::*set)(const bool&);
} switches[] = {
    {"playSoundsSwitch", "Play sounds", &SettingsData::playsSounds, &Config::setPlaysSounds},
    {"largeSizedSwitch", "Large-sized", &SettingsData::superSized, &Config::setSuperSized},
    {"floatingWindowSwitch", "Floating window", &SettingsData::isFloating, &Config::setIsFloating},
    {"loopTracksSwitch", "Loop tracks", &SettingsData::loopTracks, &Config::setLoopTracks},
    {"shuffleTracksSwitch", "Shuffle tracks", &SettingsData::shuffleTracks, &Config::setShuffleTracks},
};

Track track(const QString& name)
{
    return Track::make("file:///music/" + name + ".mp3", name, QStringLiteral("Band"));
}

QStringList names(const QList<Track>& tracks)
{
    QStringList result;
    std::ranges::transform(tracks, std::back_inserter(result), &Track::trackName);
    return result;
}

// Playlists with these names (the first is the one a first start makes) and tracks.
QList<Playlist> makeCatalogue(Config& config, const QStringList& playlistNames, const QList<QStringList>& trackNames)
{
    while (config.playlists().size() < playlistNames.size())
        config.createPlaylist();
    QList<Playlist> catalogue = config.playlists();
    for (qsizetype i = 0; i < catalogue.size(); ++i) {
        catalogue[i].name = playlistNames.at(i);
        QList<Track> tracks;
        for (const QString& name : trackNames.value(i))
            tracks.append(track(name));
        config.writePlaylistTracks(catalogue.at(i).id, tracks);
    }
    config.setPlaylists(catalogue);
    config.saveSettings();
    return catalogue;
}

template <class Event>
bool sendDragEvent(QWidget* target, const QPoint& at, const QMimeData& mime)
{
    Event event(at, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(target, &event);
    return event.isAccepted();
}

// Presses a button whose file dialog it answers with a name typed in a folder; gives the dialog's title and file mode.
// Nothing is checked inside: a failure there would leave the dialog open.
QStringList answerFileDialog(QAbstractButton* button, const QString& folder, const QString& typed)
{
    QStringList seen;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        answer.stop();
        seen = QStringList{dialog->windowTitle(), QString::number(dialog->fileMode())};
        dialog->setDirectory(folder);
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(typed);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    answer.start(50);
    QTest::mouseClick(button, Qt::LeftButton);
    return seen;
}

// A drag over the rows T1 twin T3 twin (the twins equal tracks): the rows it
// starts and enters (empty: no drag), then the order it leaves.
struct Drag { QString dragged, target; bool playsSounds; QStringList result; };

} // namespace

class SettingsViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    // Each click on a switch is saved; a change made in the store, as the "Player" menu makes (and saves) it, is only shown.
    void switchesSaveEachClickAndOnlyMirrorTheStore()
    {
        Config config;
        const SettingsData before = storedSettings();
        QFile::remove(settingsPath());
        GeneralSettingsView view(config);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QVERIFY2(!QFile::exists(settingsPath()), "showing the view saves nothing");
        for (const auto& entry : switches) {
            auto* box = view.findChild<QCheckBox*>(entry.name);
            const bool initial = before.*entry.stored;
            QVERIFY2(box->text() == entry.label && box->isChecked() == initial, entry.name);
            for (const bool expected : {!initial, initial}) {
                QTest::mouseClick(box, Qt::LeftButton, {}, box->rect().center());
                QVERIFY2(storedSettings().*entry.stored == expected, entry.name);
                QVERIFY(QFile::remove(settingsPath()));
            }
            (config.*entry.set)(!initial);
            QVERIFY2(box->isChecked() == !initial && !QFile::exists(settingsPath()), entry.name);
        }
    }

    // Our own icons show without an icon theme that has them; Space plays or pauses unless the focused control uses it;
    // choosing a theme saves the settings, then reads its layout, and the current one again does nothing.
    void windowIconsSpaceAndThemeChoice()
    {
        QIcon::setThemeName(QStringLiteral("no-such-theme"));
        PlayerFixture::Rig rig({});
        CommandMenu commands(rig.config, rig.player, rig.transport);
        SettingsView window(rig.config);
        commands.addShortcutsTo(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(std::pair(window.windowTitle(), window.size()), std::pair(QString("Settings"), QSize(640, 640)));
        auto* tabs = window.findChild<QTabWidget*>();
        QCOMPARE((QStringList{tabs->tabText(0), tabs->tabText(1)}), (QStringList{"General", "Playlists"}));
        const auto drawn = [](const QIcon& icon, const char* name) {
            const QImage ours(QStringLiteral(":/icons/ui/%1-32.png").arg(QLatin1String(name)));
            return !ours.isNull() && icon.pixmap(32).toImage().convertToFormat(ours.format()) == ours;
        };
        QVERIFY(drawn(tabs->tabIcon(0), "preferences-system") && drawn(tabs->tabIcon(1), "view-media-playlist"));
        QVERIFY(drawn(window.findChild<QToolButton*>(QStringLiteral("removeTracksButton"))->icon(), "user-trash"));
        const auto* note = window.findChild<QLabel*>(QStringLiteral("floatingWindowNote"));
        QVERIFY(note && note->isVisible() && note->text() == "Takes effect the next time plinkBox starts.");

        QSignalSpy playPause(commands.menu()->actions().first(), &QAction::triggered);
        auto* box = window.findChild<QCheckBox*>(QStringLiteral("loopTracksSwitch"));
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Space);
        QVERIFY(!rig.config.loopTracks() && playPause.isEmpty());
        tabs->setFocus();
        QTest::keyClick(tabs, Qt::Key_Space);
        QCOMPARE(playPause.count(), 1);

        auto* picker = window.findChild<QComboBox*>("themePicker");
        const auto choose = [&](int row) { // as a user picks: open the list, move to the entry, press Return
            picker->showPopup();
            picker->view()->setCurrentIndex(picker->view()->model()->index(row, 0));
            QTest::keyClick(picker->view(), Qt::Key_Return);
        };
        QFile::remove(settingsPath());
        QSignalSpy changes(&rig.config, &Config::changed);
        QSignalSpy activations(picker, &QComboBox::activated);
        choose(picker->currentIndex());
        QVERIFY(activations.count() == 1 && changes.isEmpty() && !QFile::exists(settingsPath()));

        QString savedWhenLayoutArrived;
        connect(&rig.config, &Config::changed, this, [&](Config::Property property) {
            if (property == Config::Property::playerWidth && savedWhenLayoutArrived.isEmpty())
                savedWhenLayoutArrived = storedSettings().currentTheme;
        });
        choose(int(rig.config.availableThemes().indexOf(QStringLiteral("max-graphite"))));
        QCOMPARE(savedWhenLayoutArrived, QStringLiteral("max-graphite"));
        rig.config.setCurrentTheme(QStringLiteral("no-such-theme"));
        QCOMPARE(picker->currentIndex(), -1);
    }

    // The dragged row lands on the entered one (below it coming from above, above it from below); the drop commits once,
    // with the "drag" sound when sounds are on.
    void draggedRowLandsOnTheEnteredRowAndDropCommitsOnce_data()
    {
        QTest::addColumn<Drag>("drag");
        const QStringList unchanged{"T1", "twin", "T3", "twin"};
        QTest::newRow("no drag") << Drag{"", "T1", false, unchanged};
        QTest::newRow("over itself") << Drag{"T1", "T1", false, unchanged};
        QTest::newRow("dragged row gone") << Drag{"elsewhere", "T1", false, unchanged};
        QTest::newRow("target row gone") << Drag{"T1", "elsewhere", false, unchanged};
        QTest::newRow("up by two") << Drag{"T3", "T1", true, {"T3", "T1", "twin", "twin"}};
        QTest::newRow("equal tracks move the first") << Drag{"twin", "T1", false, {"twin", "T1", "T3", "twin"}};
    }
    void draggedRowLandsOnTheEnteredRowAndDropCommitsOnce()
    {
        QFETCH(Drag, drag);
        Config config;
        config.setPlaysSounds(drag.playsSounds);
        const Track twin = track("twin");
        QList<Track> tracks{track("T1"), twin, track("T3"), twin};
        const auto find = [&](const QString& name) {
            return names(tracks).contains(name) ? tracks.at(names(tracks).indexOf(name)) : track(name);
        };
        std::optional<Track> draggedTrack = drag.dragged.isEmpty() ? std::nullopt : std::optional(find(drag.dragged));
        QList<QStringList> commits;
        TrackDropDelegate delegate(tracks, config, draggedTrack, [&] { commits.append(names(tracks)); });
        delegate.dropEntered(find(drag.target));
        QCOMPARE(names(tracks), drag.result);
        QVERIFY(commits.isEmpty());
        // This binary carries no sounds: a requested one prints "not found".
        StdoutCapture out;
        QVERIFY(delegate.performDrop() && !draggedTrack);
        QCOMPARE(commits, QList<QStringList>{drag.result});
        QCOMPARE(out.lines(), drag.playsSounds ? QStringList{"Error: Sound file drag.m4a not found."} : QStringList());
    }

    void playlistsArePickedCreatedRenamedAndDeletedInTwoSteps()
    {
        Config config;
        const QList<Playlist> catalogue = makeCatalogue(config, {"Road", "Home", "Work"}, {{"r1"}, {"h1", "h2"}, {"w1"}});
        config.setCurrentPlaylistIndex(1);
        PlaylistSettingsView view(config);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        auto* picker = view.findChild<QComboBox*>("playlistPicker");
        auto* nameField = view.findChild<QLineEdit*>("playlistNameField");
        QCOMPARE(names(view.tracks()), (QStringList{"h1", "h2"}));

        // Picking here leaves the player's playlist alone and saves nothing; the player choosing one brings the editor along.
        QFile::remove(settingsPath());
        picker->setCurrentIndex(2);
        QCOMPARE(nameField->text(), QStringLiteral("Work"));
        QCOMPARE(names(view.tracks()), QStringList{"w1"});
        QCOMPARE(config.currentPlaylistIndex(), 1);
        QVERIFY(!QFile::exists(settingsPath()));
        config.setCurrentPlaylistIndex(0);
        QCOMPARE(names(view.tracks()), QStringList{"r1"});
        // Its file replaced by another program: the new contents show.
        const QString road = config.playlistFileURL(catalogue.at(0).id);
        QVERIFY(QFile::remove(road) && QFile::copy(config.playlistFileURL(catalogue.at(1).id), road));
        QTRY_COMPARE(names(view.tracks()), (QStringList{"h1", "h2"}));

        // A new playlist is selected with its name ready to be typed over; Return saves the name.
        QTest::mouseClick(view.findChild<QAbstractButton*>("newPlaylistButton"), Qt::LeftButton);
        const Playlist created = config.playlists().value(3);
        QTest::keyClicks(nameField, QStringLiteral("Morning"));
        QTest::keyClick(nameField, Qt::Key_Return);
        QVERIFY(storedSettings().playlists.contains(Playlist{created.id, QStringLiteral("Morning")}));
        // A blank name is not taken: the old one comes back.
        nameField->selectAll();
        QTest::keyClicks(nameField, QStringLiteral("   "));
        QTest::keyClick(nameField, Qt::Key_Return);
        QCOMPARE((QStringList{nameField->text(), picker->currentText()}), QStringList(2, QStringLiteral("Morning")));

        config.setCurrentPlaylistIndex(3);
        auto* button = view.findChild<QAbstractButton*>("deletePlaylistButton");
        button->click();
        QVERIFY(button->text() == "Are you sure?" && config.playlists().size() == 4);
        button->click();
        QCOMPARE(storedSettings().playlists.size(), 3);
        QCOMPARE(button->text(), QStringLiteral("Delete playlist..."));
        QCOMPARE(config.currentPlaylistIndex(), 0); // brought back into range
        // Deleted elsewhere while the player's index points past the end: the first is shown.
        config.setCurrentPlaylistIndex(2);
        config.deletePlaylist(catalogue.at(2).id);
        QCOMPARE(names(view.tracks()), (QStringList{"h1", "h2"}));
        config.setPlaylists({});
        QVERIFY(!view.selectedPlaylistID() && !view.findChild<QAbstractButton*>("addTracksButton")->isEnabled());
    }

    void filesAreAddedInOrderUnreadableFilesKeptAndExportsReadBack()
    {
        Config config;
        const QString home = TestEnvironment::home(), folder = home + "/My Music";
        QDir().mkpath(folder);
        const QStringList paths{folder + "/b song.mp3", folder + "/a song.mp3", folder + "/plain.mp3"};
        const QStringList tags{"Song", "Band", "Ünïcode", "Ensemble", "", ""};
        for (int i = 0; i < 3; ++i) {
            AudioFixtures::Tone tone(0.1);
            tone.title = tags.at(2 * i);
            tone.artist = tags.at(2 * i + 1);
            QVERIFY(AudioFixtures::makeTone(paths.at(i), tone));
        }
        const QList<Playlist> catalogue = makeCatalogue(config, {"Mix", "Broken"}, {{"old"}});
        const QUuid id = catalogue.at(0).id, broken = catalogue.at(1).id;
        PlaylistSettingsView view(config);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QWidget* viewport = view.findChild<TrackTable*>("trackTable")->viewport();
        QSignalSpy added(&view, &PlaylistSettingsView::tracksAdded);
        const auto button = [&](const char* name) { return view.findChild<QAbstractButton*>(name); };

        // As a file manager sends them (text too), a web address and a folder among them; the folder's files in name order.
        QMimeData files;
        files.setUrls({QUrl::fromLocalFile(paths.at(0)), QUrl("https://example.org/x.mp3"), QUrl::fromLocalFile(folder),
                       QUrl::fromLocalFile(paths.at(1)), QUrl::fromLocalFile(paths.at(2))});
        files.setText(files.urls().first().toString());
        QVERIFY(sendDragEvent<QDragEnterEvent>(viewport, {10, 10}, files));
        QVERIFY(sendDragEvent<QDropEvent>(viewport, {10, 10}, files));
        QVERIFY(added.wait(10000));
        QCOMPARE(names(view.tracks()), (QStringList{"old", "Song", "Ünïcode", "Song", "Track", "Ünïcode", "Track"}));
        QCOMPARE(view.tracks().last().artist, QStringLiteral("Unknown artist"));
        QVERIFY(view.tracks().at(1).urlString.endsWith(QStringLiteral("My%20Music/b%20song.mp3")));

        // Files only, several at once, of any type; three names typed as a user may.
        QCOMPARE(answerFileDialog(button("addTracksButton"), folder, "\"plain.mp3\" \"b song.mp3\" \"a song.mp3\""),
                 (QStringList{"Add track to playlist", QString::number(QFileDialog::ExistingFiles)}));
        QVERIFY(added.wait(10000));
        QCOMPARE(names(view.tracks()).mid(7), (QStringList{"Track", "Song", "Ünïcode"}));
        // Two quick additions, the first slower to read, land in the order they were made.
        view.addFiles(QList<QUrl>(300, QUrl::fromLocalFile(paths.at(2))));
        view.addFiles({QUrl::fromLocalFile(paths.at(0))});
        QTRY_COMPARE_WITH_TIMEOUT(added.count(), 4, 10000);
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
        QCOMPARE(names(config.readPlaylistTracks(id).value()).mid(311), QStringList{"Ünïcode"});
        QVERIFY(view.tracks().isEmpty());
        // Adding to it replaces the file, but its old bytes are kept beside it, once.
        for (int addition = 0; addition < 2; ++addition) {
            view.addFiles({QUrl::fromLocalFile(paths.at(2))});
            QVERIFY(added.wait(10000));
        }
        QCOMPARE(names(config.readPlaylistTracks(broken).value()), (QStringList{"Track", "Track"}));
        QCOMPARE(TestFiles::readFile(config.playlistFileURL(broken) + ".broken"), brokenBytes);
        QVERIFY(!QFile::exists(config.playlistFileURL(broken) + ".broken-2"));

        // A chosen folder adds its files in name order; a playlist exported beside its tracks comes back named after its file.
        QCOMPARE(answerFileDialog(button("addFolderButton"), home, "My Music"),
                 (QStringList{"Add folder to playlist", QString::number(QFileDialog::Directory)}));
        QVERIFY(added.wait(10000));
        const QList<Track> tracks = view.tracks();
        QCOMPARE(names(tracks), (QStringList{"Track", "Track", "Ünïcode", "Song", "Track"}));
        // Typed without its extension, as people do.
        QCOMPARE(answerFileDialog(button("exportButton"), home, "Saved").value(0), "Export playlist");
        QCOMPARE(TestFiles::readFile(home + "/Saved.m3u8").count("\nMy Music/"), 5);
        QCOMPARE(answerFileDialog(button("importButton"), home, "Saved.m3u8").value(0), "Import playlist");
        QVERIFY(added.wait(10000));
        QVERIFY(config.playlists().size() == 3 && config.playlists().last().name == "Saved");
        QCOMPARE(view.selectedPlaylistID(), config.playlists().last().id);
        QCOMPARE(names(view.tracks()), names(tracks));
        QVERIFY(view.tracks().first().urlString == tracks.first().urlString && view.tracks().first().id != tracks.first().id);
    }

    void rowsDraggedOverTheTableReorderAndSaveOnceThenAreRemoved()
    {
        Config config;
        const QUuid id = makeCatalogue(config, {"Mix"}, {{"T1", "T2", "T3", "T4"}}).first().id;
        PlaylistSettingsView view(config);
        view.resize(400, 400);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        auto* table = view.findChild<TrackTable*>("trackTable");
        QWidget* viewport = table->viewport();
        const auto rowCentre = [&](int row) { return table->visualRect(table->model()->index(row, 0)).center(); };
        const auto stored = [&] { return names(config.readPlaylistTracks(id).value()); };
        QSignalSpy writes(&config, &Config::playlistTracksWritten);

        // Pulling a row starts a drag. This platform has no drag loop: the drag ends at once, undropped, and its path over
        // the rows is sent after it as the events the table would get.
        const auto pull = [&](int row) {
            const QPoint start = rowCentre(row), pulled = start + QPoint(2 * QApplication::startDragDistance() + 10, 0);
            QTest::mousePress(viewport, Qt::LeftButton, {}, start);
            QTest::mouseMove(viewport, start + QPoint(QApplication::startDragDistance() + 5, 0));
            QTest::mouseMove(viewport, pulled);
            QTest::mouseRelease(viewport, Qt::LeftButton, {}, pulled);
        };
        QMimeData payload;
        payload.setText(QStringLiteral("row"));
        const auto pass = [&](const QList<int>& rows) {
            QVERIFY(sendDragEvent<QDragEnterEvent>(viewport, rowCentre(rows.first()), payload));
            for (const int row : rows)
                QVERIFY(sendDragEvent<QDragMoveEvent>(viewport, rowCentre(row), payload));
        };
        pull(0);
        pass({0, 1, 1, 2});
        QVERIFY(sendDragEvent<QDropEvent>(viewport, rowCentre(2), payload));
        QCOMPARE(stored(), (QStringList{"T2", "T3", "T1", "T4"}));
        QCOMPARE(writes.count(), 1);
        // Rows moved by a drag that ends outside the table go back to the saved order.
        pull(0);
        pass({0, 1});
        QCOMPARE(names(view.tracks()), (QStringList{"T3", "T2", "T1", "T4"}));
        pull(3);
        QCOMPARE(names(view.tracks()), stored());

        QTest::mouseClick(viewport, Qt::LeftButton, {}, rowCentre(0));
        QTest::mouseClick(viewport, Qt::LeftButton, Qt::ControlModifier, rowCentre(2));
        QTest::keyClick(table, Qt::Key_Delete);
        QCOMPARE(stored(), (QStringList{"T3", "T4"}));
        QTest::mouseClick(viewport, Qt::LeftButton, {}, rowCentre(1));
        QTest::keyClick(table, Qt::Key_Backspace);
        QCOMPARE(stored(), QStringList{"T3"});
        QTest::mouseClick(viewport, Qt::LeftButton, {}, rowCentre(0));
        QTest::mouseClick(view.findChild<QAbstractButton*>("removeTracksButton"), Qt::LeftButton);
        QVERIFY(stored().isEmpty());
    }

    // The player window 269 × 96 on a 1280 × 800 screen, the settings frame 648 × 672.
    void opensBesideThePlayer_data()
    {
        QTest::addColumn<QRect>("player");
        QTest::addColumn<QRect>("available");
        QTest::addColumn<QRect>("expected");
        const QSize frame(648, 672);
        const QRect screen(0, 0, 1280, 800);
        QTest::newRow("left of it") << QRect(1000, 50, 269, 96) << screen << QRect(QPoint(340, 50), frame);
        QTest::newRow("pushed up onto the screen") << QRect(20, 700, 269, 96) << screen << QRect(QPoint(301, 128), frame);
        QTest::newRow("below a wide player") << QRect(0, 0, 1280, 100) << screen << QRect(QPoint(0, 112), frame);
        QTest::newRow("covered least, never narrowed") << QRect(505, 352, 269, 96) << screen << QRect(QPoint(632, 128), frame);
        QTest::newRow("covered least where nothing fits") << QRect(300, 300, 700, 200) << screen << QRect(0, 128, 648, 672);
        QTest::newRow("a corner covered least") << QRect(400, 600, 480, 150) << screen << QRect(QPoint(632, 0), frame);
        QTest::newRow("fitted to a short screen") << QRect(100, 100, 269, 96) << QRect(0, 0, 1024, 600) << QRect(376, 0, 648, 600);
    }
    void opensBesideThePlayer()
    {
        QFETCH(QRect, player);
        QFETCH(QRect, available);
        QFETCH(QRect, expected);
        QCOMPARE(SettingsView::placeBeside(player, QSize(648, 672), available), expected);
    }
};

PLINK_TEST_MAIN_WITH(QApplication, SettingsViewTest)
#include "test_settingsview.moc"
