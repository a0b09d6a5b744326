#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "player/contentview.h"
#include "player/filterlist.h"
#include "player/menuentry.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QAccessible>
#include <QApplication>
#include <QColor>
#include <QDir>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QUrl>
#include <QMimeData>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using PlayerFixture::printedBy;

namespace {

// Every picture the skin draws, each a solid colour of far apart hues: one pixel tells which picture is where.
const QStringList pictureNames = {"player", "player-min", "close", "min", "rr", "rr-on", "play", "play-on",
                                  "pause", "pause-on", "ff", "ff-on", "playlist-menu", "track-menu",
                                  "track-scrubber", "track-album"};
QColor pictureColour(const QString& picture)
{
    const int index = int(pictureNames.indexOf(picture));
    return QColor::fromHsv((index * 360 / int(pictureNames.size()) + index % 2 * 11) % 360, 255, 230);
}

} // namespace

class ContentViewTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<PlayerFixture::Rig> m_rig; // "Untitled" (empty), "Three" (current), "Two"
    std::unique_ptr<ContentView> m_view;

    Config& config() { return m_rig->config; }
    AudioPlayer& player() { return m_rig->player; }
    QPoint centreOf(Element element) const
    {
        return elementRect(m_rig->config.geometry(), element, m_view->scale()).center().toPoint();
    }
    void click(Element element) { QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, centreOf(element)); }
    // Whether the picture's colour is drawn at a point of the skin.
    bool shows(QPointF point, const char* picture)
    {
        const QImage image = m_view->grab().toImage();
        const QColor found = image.pixelColor((point * image.devicePixelRatio()).toPoint());
        const QColor wanted = pictureColour(QLatin1String(picture));
        return qAbs(found.red() - wanted.red()) < 12 && qAbs(found.green() - wanted.green()) < 12
            && qAbs(found.blue() - wanted.blue()) < 12;
    }

private slots:
    void initTestCase()
    {
        m_tones = PlayerFixture::makeTones(m_toneFolder.path(), 3, 20);
        QCOMPARE(m_tones.size(), 3);
    }
    void init()
    {
        TestEnvironment::wipeHome();
        QCursor::setPos(0, 0); // the virtual cursor stays where the last test left it
        m_rig = std::make_unique<PlayerFixture::Rig>(m_tones);
        // The pictures go into the current theme's folder; the skin stretches them.
        const QString folder = config().themesFolder() + QLatin1Char('/') + config().currentTheme() + QLatin1Char('/');
        QDir().mkpath(folder);
        for (const QString& name : pictureNames)
            QVERIFY(AudioFixtures::makePicture(folder + name + QStringLiteral(".png"), 64, 64, pictureColour(name).rgb()));
        m_view = std::make_unique<ContentView>(config(), player(), m_rig->transport);
        m_view->setMovableByBackground(true);
        m_view->move(200, 200);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
    void cleanup()
    {
        m_view.reset();
        m_rig.reset();
    }

    // The window takes the picture's size, enlarged and minimised too; pictures follow hover and playing; a press counts
    // where it is let go; the thumb follows a drag of 10 points or more, seeking; a drag past the end ends the track once.
    void playingFromTheSkin()
    {
        config().setSuperSized(true);
        QCOMPARE(m_view->size(), QSize(404, 144));
        QCOMPARE(m_view->minimumSize(), m_view->maximumSize());
        for (const QSize size : {QSize(30, 144), QSize(404, 144)}) {
            QCOMPARE(printedBy([&] { click(Element::minimise); }), QStringList{"Error: Sound file min.m4a not found."});
            QCOMPARE(m_view->size(), size);
        }
        const QPointF play = centreOf(Element::playPause), rewind = centreOf(Element::rewind);
        const ScrubBounds bounds = scrubBounds(config().geometry(), 1.5);
        const QPoint start(qRound(bounds.minX + 2), qRound(bounds.y));
        QVERIFY(shows(play, "play") && shows(rewind, "rr") && shows(QPointF(180, 135), "player"));
        QVERIFY(shows(centreOf(Element::albumArt), "track-album") && shows(centreOf(Element::minimise), "min"));
        QTest::mouseMove(m_view.get(), play.toPoint());
        QTRY_VERIFY(shows(play, "play-on"));
        click(Element::playPause);
        QVERIFY(player().isPlaying() && shows(play, "pause-on") && shows(start, "track-scrubber"));
        QTest::mouseMove(m_view.get(), rewind.toPoint());
        QTRY_VERIFY(shows(rewind, "rr-on") && shows(play, "pause"));
        click(Element::fastForward);
        QCOMPARE(player().currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
        click(Element::rewind);
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, play.toPoint());
        QTest::mouseMove(m_view.get(), QPoint(180, 135));
        QVERIFY(shows(play, "pause"));
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(180, 135));
        QVERIFY(player().isPlaying());

        // A tick repaints the thumb only once it moves to other pixels, and only around it.
        struct PaintRecorder : QObject {
            QRegion painted;
            bool eventFilter(QObject*, QEvent* event) override
            {
                if (event->type() == QEvent::Paint)
                    painted += static_cast<QPaintEvent*>(event)->region();
                return false;
            }
        } recorder;
        m_view->repaint();
        m_view->installEventFilter(&recorder);
        player().invalidateTimer(); // only the seeks move the thumb now
        const QRectF thumb = thumbRect(config().geometry(), 1.5, thumbCentreX(bounds, 0.5));
        for (const double fraction : {0.49, 0.5}) {
            recorder.painted = QRegion();
            player().seek(fraction);
            QTRY_VERIFY(!recorder.painted.isEmpty());
        }
        for (const QRect& rect : recorder.painted)
            QVERIFY2(rect.width() < 3 * thumb.width() && rect.height() < thumb.height() + 4, qPrintable(QString::number(rect.width())));
        recorder.painted = QRegion();
        player().seek(0.5005);
        QTest::qWait(100);
        QVERIFY(recorder.painted.isEmpty());
        m_view->removeEventFilter(&recorder);
        player().restartTimer();

        // 8.5 points is no drag, and the thumb is no handle for the window.
        const QPoint thumbAt = thumb.center().toPoint(), windowPlace = m_view->pos();
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, thumbAt);
        QTest::mouseMove(m_view.get(), thumbAt + QPoint(6, 6));
        QVERIFY(!m_view->isDragging());
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, thumbAt + QPoint(6, 6));
        QCOMPARE(m_view->pos(), windowPlace);
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, thumbAt);
        QTest::mouseMove(m_view.get(), start);
        QVERIFY(m_view->isDragging() && !player().hasTimer() && m_view->cursor().shape() == Qt::ClosedHandCursor);
        QVERIFY(qAbs(player().progress() - (start.x() - bounds.minX) / bounds.range()) < 1e-9);
        QVERIFY(shows(start, "track-scrubber")); // where the pointer is, whatever the progress
        QTest::mouseMove(m_view.get(), QPoint(1, start.y()));
        QCOMPARE(player().progress(), 0.0);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(1, start.y()));
        QVERIFY(!m_view->isDragging() && player().hasTimer() && player().isPlaying());
        QCOMPARE(m_view->cursor().shape(), Qt::ArrowCursor);
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, start);
        for (const double beyond : {-20.0, 5.0, 30.0}) {
            QTest::mouseMove(m_view.get(), QPoint(qRound(bounds.maxX + beyond), start.y()));
            QTest::qWait(150);
        }
        QCOMPARE(config().currentTrackIndex(), 0);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(qRound(bounds.maxX + 30), start.y()));
        QTRY_COMPARE(config().currentTrackIndex(), 1);
        QTest::qWait(300);
        QVERIFY(config().currentTrackIndex() == 1 && player().isPlaying() && player().progress() < 0.1);
        click(Element::playPause);
        QVERIFY(!player().isPlaying() && shows(start, "player"));
    }

    void menusOpenChooseAndMarkTheCurrentEntry()
    {
        QSignalSpy settings(m_view.get(), &ContentView::settingsRequested);
        const QStringList pop{"Error: Sound file pop.m4a not found."};
        // Opens the menu under an element; null unless it lists these entries, the current one checked.
        const auto open = [&](Element element, const QStringList& titles) -> QMenu* {
            click(element);
            auto menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            QStringList texts;
            for (QAction* action : menu->actions())
                texts.append(action->text() + (action->isChecked() ? " ✓" : ""));
            return texts == titles ? menu : nullptr;
        };
        QMenu* playlists = open(Element::playlistMenu, {"Untitled", "Three ✓", "Two", "Edit playlists"});
        QVERIFY(playlists && playlists->actions().last()->font().italic());
        QCOMPARE(printedBy([&] { playlists->actions().at(2)->trigger(); }), pop);
        playlists->close();
        QMenu* tracks = open(Element::trackMenu, {"Tone 1 ✓", "Tone 2", "Edit playlists"});
        QVERIFY(tracks);
        QCOMPARE(printedBy([&] { tracks->actions().at(1)->trigger(); }), pop);
        QCOMPARE(player().currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
        tracks->close();
        config().setCurrentPlaylistIndex(0);
        tracks = open(Element::trackMenu, {"Edit playlists"});
        QVERIFY(tracks);
        tracks->actions().last()->trigger();
        tracks->close();
        QCOMPARE(settings.count(), 1);
        // Beyond a screenful, the filter list; a track chosen there plays as one chosen from the menu.
        QList<Track> many;
        for (qsizetype i = 0; i <= menuEntriesOnScreen(m_view->screen()); ++i)
            many.append(Track::make(QUrl::fromLocalFile(m_tones.at(i % 2)).toString(), QString("Song %1").arg(i), "Band"));
        config().writePlaylistTracks(config().playlists().at(0).id, many);
        click(Element::trackMenu);
        auto* list = qobject_cast<FilterList*>(QApplication::activePopupWidget());
        QVERIFY(list);
        QTest::keyClicks(list->filterField(), "song 3");
        QCOMPARE(printedBy([&] { QTest::keyClick(list->filterField(), Qt::Key_Return); }), pop);
        QCOMPARE(std::pair(config().currentTrackIndex(), player().currentUrl()), std::pair(qint64(3), QUrl::fromLocalFile(m_tones.at(1))));
        // A right click anywhere opens the command menu.
        QMenu commands;
        m_view->setCommandMenu(&commands);
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(120, 90), m_view->mapToGlobal(QPoint(120, 90)));
        QApplication::sendEvent(m_view.get(), &event);
        QTRY_COMPARE(QApplication::activePopupWidget(), &commands);
        commands.close();
    }

    // Screen readers see the buttons, and the scrub bar only while playing, acting as the skin does. The text lines
    // decode the playlist only when its file changed, also when a rewrite kept its size.
    void controlsAreAccessibleAndTextLinesReadOnlyChanges()
    {
        QAccessibleInterface* skin = QAccessible::queryAccessibleInterface(m_view.get());
        const auto find = [&](const QString& name) -> QAccessibleInterface* {
            for (int i = 0; i < skin->childCount(); ++i) {
                if (skin->child(i)->text(QAccessible::Name) == name && !skin->child(i)->state().invisible)
                    return skin->child(i);
            }
            return nullptr;
        };
        for (const char* name : {"Close", "Minimise", "Previous track", "Play", "Next track", "Playlists", "Tracks"})
            QVERIFY2(find(QString::fromLatin1(name)) && find(QString::fromLatin1(name))->role() == QAccessible::Button, name);
        QVERIFY(!find(QStringLiteral("Scrub bar")));
        find(QStringLiteral("Play"))->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTRY_VERIFY(player().isPlaying() && find(QStringLiteral("Pause")));
        find(QStringLiteral("Scrub bar"))->valueInterface()->setCurrentValue(500);
        QCOMPARE(player().progress(), 0.5);

        // Painting decodes no playlist file.
        const int reads = config().playlistReads();
        m_view->repaint();
        m_view->repaint();
        QCOMPARE(config().playlistReads(), reads);
    }

    // Files dropped on the skin are handed on to be opened; web addresses are not taken.
    void filesDroppedOnTheSkinAreHandedOn()
    {
        QSignalSpy dropped(m_view.get(), &ContentView::filesDropped);
        const QUrl file = QUrl::fromLocalFile(m_tones.at(0));
        for (const QList<QUrl>& urls : {QList<QUrl>{QUrl("https://example.org/a.mp3")}, QList<QUrl>{file, QUrl("https://example.org")}}) {
            QMimeData mime;
            mime.setUrls(urls);
            QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
            QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
            QApplication::sendEvent(m_view.get(), &enter);
            QApplication::sendEvent(m_view.get(), &drop);
            QCOMPARE(enter.isAccepted(), urls.first() == file);
        }
        QCOMPARE(dropped, QList<QVariantList>{{QVariant::fromValue(QList<QUrl>{file})}});
    }

    // Names that are no files: neither wait for a writer that never comes nor read for ever.
    void tagsOfNamesThatAreNoFiles()
    {
        const QString pipe = TestEnvironment::home() + QStringLiteral("/pipe.mp3");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString& path : {pipe, QStringLiteral("/dev/zero")}) {
            alarm(30); // a read that never returns ends the test as a failure
            QVERIFY(readTrackTags(path) == TrackTags() && readAlbumArt(path).isNull()); // "Track", "Unknown artist"
            alarm(0);
        }
    }

    // The current playlist cut short on disk, then settings edited by hand to no playlists and a selection past them:
    // drawing, buttons, menus and a track's end are tried on each, and the player goes on.
    void shortListsAreSurvivedEverywhere()
    {
        config().setPlaysSounds(false); // the sounds are not linked in: each would print
        const auto tryEverything = [&] {
            for (const Element element :
                 {Element::playPause, Element::fastForward, Element::rewind, Element::playlistMenu, Element::trackMenu}) {
                m_view->repaint();
                click(element);
                while (QWidget* popup = QApplication::activePopupWidget())
                    popup->close();
            }
            player().onTrackFinished();
            m_view->repaint();
        };

        config().setCurrentTrackIndex(2);
        const auto three = config().readPlaylistTracks(m_rig->three);
        QVERIFY(three && TestFiles::writeFile(config().playlistFileURL(m_rig->three), toJson(PlaylistData{three->mid(0, 1)})));
        tryEverything();
        const auto tracks = config().currentPlaylistTracks();
        QVERIFY(tracks && (tracks->isEmpty() || config().currentTrackIndex() < tracks->size()));

        SettingsData settings = TestFiles::storedSettings();
        settings.playlists.clear();
        settings.lastSelectedPlaylistID = 99;
        settings.playsSounds = false;
        QVERIFY(TestFiles::writeFile(TestFiles::settingsPath(), toJson(settings)));
        config().loadSettings();
        QVERIFY(config().playlists().isEmpty());
        tryEverything();
        QVERIFY(!player().isPlaying());
    }
};

PLINK_TEST_MAIN_WITH(QApplication, ContentViewTest)
#include "test_contentview.moc"
