#include "playback/audioplayer.h"
#include "player/contentview.h"
#include "player/transport.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QAccessible>
#include <QApplication>
#include <QMenu>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QTemporaryDir>

using PlayerFixture::pictureColour;
using PlayerFixture::printedBy;

class ContentViewTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void windowFollowsThemeScaleAndMinimise_data();
    void windowFollowsThemeScaleAndMinimise();
    void buttonPicturesFollowHoverAndPlaying();
    void optionalElementsAndTheThumb();
    void clicksDriveTheTransport();
    void scrubDragSeeksWithinTheBar();
    void shortScrubDragIsNoDrag();
    void skinMenusChooseAndMarkTheCurrentEntry();
    void rightClickOpensTheCommandMenu();
    void controlsAreAccessible();
    void textLinesDecodeThePlaylistOnlyWhenItChanged();
    void progressTickRepaintsOnlyTheThumb();
    void indexesBeyondTheCatalogueAreBroughtIntoRange();

private:
    void makeView();
    QColor colourAt(QPointF point);
    QPointF centreOf(Element element) { return elementRect(m_config->geometry(), element, m_view->scale()).center(); }
    static bool near(const QColor& a, const QColor& b);

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_player;
    std::unique_ptr<Transport> m_transport;
    std::unique_ptr<ContentView> m_view;
    QUuid m_three;
};

void ContentViewTest::initTestCase()
{
    m_tones = PlayerFixture::makeTones(m_toneFolder.path(), 3, 20);
    QCOMPARE(m_tones.size(), 3);
}

void ContentViewTest::init()
{
    TestEnvironment::wipeHome();
    QCursor::setPos(0, 0); // the virtual cursor stays where the last test left it
}

void ContentViewTest::cleanup()
{
    m_view.reset();
    m_transport.reset();
    m_player.reset();
    m_config.reset();
}

// Playlists "Untitled" (empty), "Three" (current), "Two".
void ContentViewTest::makeView()
{
    m_config = std::make_unique<Config>();
    PlayerFixture::writeColouredTheme(*m_config);
    m_three = PlayerFixture::addPlaylist(*m_config, QStringLiteral("Three"), m_tones);
    PlayerFixture::addPlaylist(*m_config, QStringLiteral("Two"), m_tones.mid(0, 2));
    m_config->setCurrentPlaylistIndex(1);
    m_player = std::make_unique<AudioPlayer>();
    m_transport = std::make_unique<Transport>(*m_config, *m_player);
    m_view = std::make_unique<ContentView>(*m_config, *m_player, *m_transport);
    m_view->move(200, 200);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

QColor ContentViewTest::colourAt(QPointF point)
{
    const QImage image = m_view->grab().toImage();
    return image.pixelColor((point * image.devicePixelRatio()).toPoint());
}

bool ContentViewTest::near(const QColor& a, const QColor& b)
{
    return qAbs(a.red() - b.red()) < 12 && qAbs(a.green() - b.green()) < 12 && qAbs(a.blue() - b.blue()) < 12;
}

void ContentViewTest::windowFollowsThemeScaleAndMinimise_data()
{
    QTest::addColumn<bool>("superSized");
    QTest::addColumn<double>("playerWidth");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("minimised");
    QTest::newRow("default") << false << 269.0 << QSize(269, 96) << QSize(20, 96);
    QTest::newRow("enlarged") << true << 269.0 << QSize(404, 144) << QSize(30, 144);
    QTest::newRow("another theme width") << false << 300.0 << QSize(300, 96) << QSize(20, 96);
    QTest::newRow("absurd width") << true << 1e12 << QSize(4000, 144) << QSize(30, 144);
    QTest::newRow("negative width") << false << -50.0 << QSize(1, 96) << QSize(20, 96);
}

void ContentViewTest::windowFollowsThemeScaleAndMinimise()
{
    QFETCH(bool, superSized);
    QFETCH(double, playerWidth);
    QFETCH(QSize, size);
    QFETCH(QSize, minimised);
    makeView();
    QCOMPARE(m_view->size(), QSize(269, 96));
    m_config->setSuperSized(superSized);
    m_config->setPlayerWidth(playerWidth);
    QCOMPARE(m_view->size(), size);
    QCOMPARE(m_view->minimumSize(), m_view->maximumSize());
    const auto clickMinimise = [&] {
        return printedBy([&] {
            QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, centreOf(Element::minimise).toPoint());
        });
    };
    const QStringList minSound{QStringLiteral("Error: Sound file min.m4a not found.")};
    QCOMPARE(clickMinimise(), minSound);
    QVERIFY(m_view->isMinimized());
    QCOMPARE(m_view->size(), minimised);
    QCOMPARE(clickMinimise(), minSound);
    QCOMPARE(m_view->size(), size);
}

void ContentViewTest::buttonPicturesFollowHoverAndPlaying()
{
    makeView();
    const QPointF play = centreOf(Element::playPause);
    const QPointF rewind = centreOf(Element::rewind);
    const QPointF fastForward = centreOf(Element::fastForward);
    QVERIFY(near(colourAt(play), pictureColour("play")));
    QVERIFY(near(colourAt(rewind), pictureColour("rr")));
    QVERIFY(near(colourAt(centreOf(Element::close)), pictureColour("close")));
    QVERIFY(near(colourAt(QPointF(120, 90)), pictureColour("player")));

    QTest::mouseMove(m_view.get(), play.toPoint());
    QTRY_VERIFY(near(colourAt(play), pictureColour("play-on")));
    QVERIFY(near(colourAt(rewind), pictureColour("rr")));
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, play.toPoint());
    QVERIFY(m_player->isPlaying());
    QVERIFY(near(colourAt(play), pictureColour("pause-on")));
    QTest::mouseMove(m_view.get(), rewind.toPoint());
    QTRY_VERIFY(near(colourAt(rewind), pictureColour("rr-on")));
    QVERIFY(near(colourAt(play), pictureColour("pause")));
    QTest::mouseMove(m_view.get(), fastForward.toPoint());
    QTRY_VERIFY(near(colourAt(fastForward), pictureColour("ff-on")));
    QVERIFY(near(colourAt(rewind), pictureColour("rr")));
    // Close and minimise have no hover picture.
    QTest::mouseMove(m_view.get(), centreOf(Element::close).toPoint());
    QTRY_VERIFY(near(colourAt(fastForward), pictureColour("ff")));
    QVERIFY(near(colourAt(centreOf(Element::close)), pictureColour("close")));
}

void ContentViewTest::optionalElementsAndTheThumb()
{
    makeView();
    const QPointF art = centreOf(Element::albumArt);
    QVERIFY(near(colourAt(art), pictureColour("track-album")));
    QVERIFY(near(colourAt(centreOf(Element::minimise)), pictureColour("min")));
    const ScrubBounds bounds = scrubBounds(m_config->geometry(), 1);
    const QPointF thumb(bounds.minX + 2, bounds.y); // progress stays near 0 for a moment
    QVERIFY(near(colourAt(thumb), pictureColour("player")));
    m_transport->playPausePressed();
    QVERIFY(near(colourAt(thumb), pictureColour("track-scrubber")));
    m_player->seek(0.5);
    QVERIFY(near(colourAt(QPointF(bounds.minX + bounds.range() / 2, bounds.y)), pictureColour("track-scrubber")));
    m_transport->playPausePressed();
    QVERIFY(near(colourAt(QPointF(bounds.minX + bounds.range() / 2, bounds.y)), pictureColour("player")));

    m_config->setTrackArtWidth(0);
    m_config->setMinWidth(0);
    QVERIFY(near(colourAt(art), pictureColour("player")));
    QVERIFY(near(colourAt(centreOf(Element::minimise)), pictureColour("player")));
}

void ContentViewTest::clicksDriveTheTransport()
{
    makeView();
    const auto click = [&](Element element) {
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, centreOf(element).toPoint());
    };
    click(Element::playPause);
    QVERIFY(m_player->isPlaying());
    click(Element::fastForward);
    QCOMPARE(m_config->currentTrackIndex(), 1);
    QCOMPARE(m_player->currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
    click(Element::rewind);
    click(Element::rewind);
    QCOMPARE(m_config->currentTrackIndex(), 2);
    QVERIFY(m_player->isPlaying());
    // A press that leaves the button before it is let go does nothing.
    QTest::mousePress(m_view.get(), Qt::LeftButton, {}, centreOf(Element::playPause).toPoint());
    QTest::mouseMove(m_view.get(), QPoint(120, 90));
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(120, 90));
    QVERIFY(m_player->isPlaying());
    click(Element::playPause);
    QVERIFY(!m_player->isPlaying());
}

void ContentViewTest::scrubDragSeeksWithinTheBar()
{
    makeView();
    m_config->setSuperSized(true);
    m_transport->playPausePressed();
    const ScrubBounds bounds = scrubBounds(m_config->geometry(), 1.5);
    QCOMPARE(bounds.minX, 176.25);
    const QPoint start(qRound(bounds.minX + 2), qRound(bounds.y));
    QTest::mousePress(m_view.get(), Qt::LeftButton, {}, start);
    QTest::mouseMove(m_view.get(), start + QPoint(60, 3));
    QVERIFY(m_view->isDragging());
    QCOMPARE(m_view->dragX(), double(start.x() + 60));
    QVERIFY(!m_player->hasTimer());
    QCOMPARE(m_view->cursor().shape(), Qt::ClosedHandCursor);
    QVERIFY(qAbs(m_player->progress() - (start.x() + 60 - bounds.minX) / bounds.range()) < 1e-9);
    // The thumb is drawn where the pointer is, not where the progress is.
    QVERIFY(near(colourAt(QPointF(start.x() + 60, bounds.y)), pictureColour("track-scrubber")));

    QTest::mouseMove(m_view.get(), QPoint(1, start.y()));
    QCOMPARE(m_view->dragX(), 176.25);
    QCOMPARE(m_player->progress(), 0.0);
    const QPoint middle(qRound(bounds.minX + bounds.range() / 2), start.y());
    QTest::mouseMove(m_view.get(), middle);
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, middle);
    QVERIFY(!m_view->isDragging());
    QVERIFY(m_player->hasTimer());
    QCOMPARE(m_view->cursor().shape(), Qt::ArrowCursor);
    QVERIFY(m_player->isPlaying());
    QTRY_VERIFY_WITH_TIMEOUT(m_player->progress() > 0.5, 3000);

    // Past the end: held at the scaled end, and the track plays out.
    const QPoint thumb(qRound(thumbCentreX(bounds, m_player->progress())), start.y());
    QTest::mousePress(m_view.get(), Qt::LeftButton, {}, thumb);
    QTest::mouseMove(m_view.get(), QPoint(m_view->width() - 1, start.y()));
    QCOMPARE(m_view->dragX(), 399.75);
    QCOMPARE(m_player->progress(), 1.0);
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(m_view->width() - 1, start.y()));
    QTRY_COMPARE_WITH_TIMEOUT(m_config->currentTrackIndex(), 1, 5000);
}

void ContentViewTest::shortScrubDragIsNoDrag()
{
    makeView();
    m_transport->playPausePressed();
    const ScrubBounds bounds = scrubBounds(m_config->geometry(), 1);
    const QPoint start(qRound(bounds.minX + 1), qRound(bounds.y));
    const QPoint windowPlace = m_view->pos();
    QTest::mousePress(m_view.get(), Qt::LeftButton, {}, start);
    QTest::mouseMove(m_view.get(), start + QPoint(6, 6)); // 8.5 points away
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, start + QPoint(6, 6));
    QVERIFY(!m_view->isDragging());
    QVERIFY(m_player->hasTimer());
    QVERIFY(m_player->progress() < 0.1);
    QCOMPARE(m_view->pos(), windowPlace); // the thumb is no handle for the window
}

void ContentViewTest::skinMenusChooseAndMarkTheCurrentEntry()
{
    makeView();
    QSignalSpy settings(m_view.get(), &ContentView::settingsRequested);
    const auto openMenu = [&](Element element) -> QMenu* {
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, centreOf(element).toPoint());
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    };
    const auto titles = [](QMenu* menu) {
        QStringList texts;
        for (QAction* action : menu->actions())
            texts.append(action->text() + (action->isChecked() ? QStringLiteral(" ✓") : QString()));
        return texts;
    };

    QMenu* playlists = openMenu(Element::playlistMenu);
    QVERIFY(playlists);
    QCOMPARE(titles(playlists), (QStringList{"Untitled", "Three ✓", "Two", "Edit playlists"}));
    QVERIFY(playlists->actions().last()->font().italic());
    QCOMPARE(printedBy([&] { playlists->actions().at(2)->trigger(); }),
             QStringList{QStringLiteral("Error: Sound file pop.m4a not found.")});
    playlists->close();
    QCOMPARE(m_config->currentPlaylistIndex(), 2);

    QMenu* tracks = openMenu(Element::trackMenu);
    QVERIFY(tracks);
    QCOMPARE(titles(tracks), (QStringList{"Tone 1 ✓", "Tone 2", "Edit playlists"}));
    tracks->actions().at(1)->trigger();
    tracks->close();
    QCOMPARE(m_config->currentTrackIndex(), 1);
    QVERIFY(m_player->isPlaying());

    m_config->setCurrentPlaylistIndex(0);
    tracks = openMenu(Element::trackMenu);
    QCOMPARE(titles(tracks), QStringList{"Edit playlists"});
    tracks->actions().last()->trigger();
    tracks->close();
    QCOMPARE(settings.count(), 1);
}

void ContentViewTest::rightClickOpensTheCommandMenu()
{
    makeView();
    QMenu commands;
    commands.addAction(QStringLiteral("Play"));
    m_view->setCommandMenu(&commands);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(120, 90), m_view->mapToGlobal(QPoint(120, 90)));
    QApplication::sendEvent(m_view.get(), &event);
    QTRY_COMPARE(QApplication::activePopupWidget(), &commands);
    commands.close();
}

void ContentViewTest::controlsAreAccessible()
{
    makeView();
    QAccessibleInterface* skin = QAccessible::queryAccessibleInterface(m_view.get());
    QVERIFY(skin);
    const auto find = [&](const QString& name) -> QAccessibleInterface* {
        for (int i = 0; i < skin->childCount(); ++i) {
            QAccessibleInterface* child = skin->child(i);
            if (child->text(QAccessible::Name) == name && !child->state().invisible)
                return child;
        }
        return nullptr;
    };
    for (const char* name : {"Close", "Minimise", "Previous track", "Play", "Next track", "Playlists", "Tracks"}) {
        QAccessibleInterface* button = find(QString::fromLatin1(name));
        QVERIFY2(button, name);
        QCOMPARE(button->role(), QAccessible::Button);
        QVERIFY(button->rect().intersects(m_view->geometry()));
    }
    QVERIFY(!find(QStringLiteral("Scrub bar")));
    // Pressing through accessibility is pressing the button.
    QAccessibleInterface* play = find(QStringLiteral("Play"));
    play->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QTRY_VERIFY(m_player->isPlaying());
    QVERIFY(find(QStringLiteral("Pause")));
    QAccessibleInterface* scrub = find(QStringLiteral("Scrub bar"));
    QVERIFY(scrub);
    QCOMPARE(scrub->role(), QAccessible::Slider);
    scrub->valueInterface()->setCurrentValue(500);
    QCOMPARE(m_player->progress(), 0.5);
}

void ContentViewTest::textLinesDecodeThePlaylistOnlyWhenItChanged()
{
    makeView();
    m_view->repaint();
    const int reads = m_view->playlistReads();
    QVERIFY(reads >= 1);
    for (int i = 0; i < 5; ++i)
        m_view->repaint();
    QCOMPARE(m_view->playlistReads(), reads);
    // A rewrite (same size: only the order changed) is read again.
    auto tracks = *m_config->readPlaylistTracks(m_three);
    std::swap(tracks[0], tracks[1]);
    m_config->writePlaylistTracks(m_three, tracks);
    m_view->repaint();
    QCOMPARE(m_view->playlistReads(), reads + 1);
}

// Records the region of each paint of a widget.
class PaintRecorder : public QObject
{
public:
    QList<QRegion> regions;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            regions.append(static_cast<QPaintEvent*>(event)->region());
        return false;
    }
};

void ContentViewTest::progressTickRepaintsOnlyTheThumb()
{
    makeView();
    m_transport->playPausePressed();
    QTest::qWait(300);
    PaintRecorder recorder;
    m_view->installEventFilter(&recorder);
    m_player->seek(0.25);
    QTest::qWait(500); // a few ticks as well
    QVERIFY(!recorder.regions.isEmpty());
    const ThemeData theme = m_config->geometry();
    const double y = scrubBounds(theme, 1).y;
    for (const QRegion& region : recorder.regions) {
        for (const QRect& rect : region) {
            const QString where = QStringLiteral("repainted %1,%2 %3x%4")
                                      .arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
            // Old and new thumb boxes, one pixel around each, side by side at most.
            QVERIFY2(rect.width() <= 2 * (theme.scrubberWidth + 2) + 1, qPrintable(where));
            QVERIFY2(rect.top() >= y - theme.scrubberHeight / 2 - 2, qPrintable(where));
            QVERIFY2(rect.bottom() <= y + theme.scrubberHeight / 2 + 2, qPrintable(where));
        }
    }
}

void ContentViewTest::indexesBeyondTheCatalogueAreBroughtIntoRange()
{
    {
        Config config;
        config.setCurrentPlaylistIndex(0);
        QList<Playlist> catalogue = config.playlists();
        QCOMPARE(catalogue.size(), 1);
        // A hand-edited settings file naming the fifth playlist.
        config.setLastSelectedPlaylistID(5);
        config.saveSettings();
    }
    m_config = std::make_unique<Config>();
    QCOMPARE(m_config->currentPlaylistIndex(), 5);
    m_player = std::make_unique<AudioPlayer>();
    m_transport = std::make_unique<Transport>(*m_config, *m_player);
    m_view = std::make_unique<ContentView>(*m_config, *m_player, *m_transport);
    QCOMPARE(m_config->currentPlaylistIndex(), 0);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    // The catalogue shrinking under the current index is brought back too.
    m_config->createPlaylist();
    m_config->setCurrentPlaylistIndex(1);
    m_config->setCurrentTrackIndex(12);
    m_config->setPlaylists(m_config->playlists().mid(0, 1));
    QCOMPARE(m_config->currentPlaylistIndex(), 0);
    m_view->repaint();
}

PLINK_TEST_MAIN_WITH(QApplication, ContentViewTest)
#include "test_contentview.moc"
