#include "player/contentview.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QAccessible>
#include <QApplication>
#include <QMenu>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QTemporaryDir>

using PlayerFixture::printedBy;

class ContentViewTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QStringList m_tones;
    std::unique_ptr<PlayerFixture::Rig> m_rig; // "Untitled" (empty), "Three" (current), "Two"
    std::unique_ptr<ContentView> m_view;

    Config& config() { return m_rig->config; }
    AudioPlayer& player() { return m_rig->player; }
    void makeView()
    {
        m_view = std::make_unique<ContentView>(config(), player(), m_rig->transport);
        m_view->move(200, 200);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
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
        const QColor wanted = PlayerFixture::pictureColour(QLatin1String(picture));
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
        PlayerFixture::writeColouredTheme(config());
    }
    void cleanup()
    {
        m_view.reset();
        m_rig.reset();
    }

    void sizeFollowsScaleThemeAndMinimise_data()
    {
        QTest::addColumn<bool>("superSized");
        QTest::addColumn<double>("playerWidth");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("minimised");
        QTest::newRow("default") << false << 269.0 << QSize(269, 96) << QSize(20, 96);
        QTest::newRow("enlarged") << true << 269.0 << QSize(404, 144) << QSize(30, 144);
        QTest::newRow("another theme width") << false << 300.0 << QSize(300, 96) << QSize(20, 96);
    }
    void sizeFollowsScaleThemeAndMinimise()
    {
        QFETCH(bool, superSized);
        QFETCH(double, playerWidth);
        QFETCH(QSize, size);
        QFETCH(QSize, minimised);
        makeView();
        config().setSuperSized(superSized);
        config().setPlayerWidth(playerWidth);
        QCOMPARE(m_view->size(), size);
        QCOMPARE(m_view->minimumSize(), m_view->maximumSize());
        for (const QSize& toggled : {minimised, size}) {
            QCOMPARE(printedBy([&] { click(Element::minimise); }), QStringList{"Error: Sound file min.m4a not found."});
            QCOMPARE(m_view->size(), toggled);
        }
    }

    void buttonsDriveTheTransportAndPicturesFollow()
    {
        makeView();
        const QPointF play = centreOf(Element::playPause), rewind = centreOf(Element::rewind);
        const ScrubBounds bounds = scrubBounds(config().geometry(), 1);
        const QPointF thumbStart(bounds.minX + 2, bounds.y), thumbMiddle(bounds.minX + bounds.range() / 2, bounds.y);
        QVERIFY(shows(play, "play") && shows(rewind, "rr") && shows(QPointF(120, 90), "player"));
        QVERIFY(shows(centreOf(Element::albumArt), "track-album") && shows(centreOf(Element::minimise), "min"));
        QVERIFY(shows(thumbStart, "player")); // no thumb while stopped
        QTest::mouseMove(m_view.get(), play.toPoint());
        QTRY_VERIFY(shows(play, "play-on"));
        click(Element::playPause);
        QVERIFY(player().isPlaying());
        QVERIFY(shows(play, "pause-on") && shows(thumbStart, "track-scrubber"));
        QTest::mouseMove(m_view.get(), rewind.toPoint());
        QTRY_VERIFY(shows(rewind, "rr-on") && shows(play, "pause"));

        click(Element::fastForward);
        QCOMPARE(player().currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
        click(Element::rewind);
        QCOMPARE(config().currentTrackIndex(), 0);
        // A press that leaves the button before it is let go does nothing.
        // The hover follows the pointer while the button is held too.
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, play.toPoint());
        QTest::mouseMove(m_view.get(), play.toPoint() + QPoint(1, 1));
        QVERIFY(shows(play, "pause-on"));
        QTest::mouseMove(m_view.get(), QPoint(120, 90));
        QVERIFY(shows(play, "pause"));
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(120, 90));
        QVERIFY(player().isPlaying());
        player().seek(0.5);
        QVERIFY(shows(thumbMiddle, "track-scrubber"));
        click(Element::playPause);
        QVERIFY(!player().isPlaying() && shows(thumbMiddle, "player"));
    }

    // Playing must stay cheap: a progress tick repaints the thumb's old and
    // new places, never the whole skin.
    void aTickRepaintsOnlyAroundTheThumb()
    {
        makeView();
        m_rig->transport.playPausePressed();
        QTest::qWait(300);
        struct PaintRecorder : QObject {
            QList<QRect> rects;
            bool eventFilter(QObject*, QEvent* event) override
            {
                if (event->type() == QEvent::Paint)
                    rects += QList<QRect>(static_cast<QPaintEvent*>(event)->region().begin(), static_cast<QPaintEvent*>(event)->region().end());
                return false;
            }
        } recorder;
        m_view->installEventFilter(&recorder);
        QTest::qWait(500);
        QVERIFY(!recorder.rects.isEmpty());
        const ThemeData theme = config().geometry();
        const double y = scrubBounds(theme, 1).y;
        for (const QRect& rect : recorder.rects) {
            QVERIFY2(rect.width() <= 2 * (theme.scrubberWidth + 2) + 1, qPrintable(QStringLiteral("%1 wide").arg(rect.width())));
            QVERIFY(rect.top() >= y - theme.scrubberHeight / 2 - 2 && rect.bottom() <= y + theme.scrubberHeight / 2 + 2);
        }

        // A thumb that stays on the same pixels is not repainted; one that leaves them is.
        player().invalidateTimer(); // holds the progress; the view still shows the thumb
        player().seek(0.5);
        QTest::qWait(300);
        recorder.rects.clear();
        player().seek(0.501);
        QTest::qWait(300);
        QVERIFY(recorder.rects.isEmpty());
        player().seek(0.6);
        QTRY_VERIFY(!recorder.rects.isEmpty());
    }

    void scrubDragSeeksWithinTheScaledBar()
    {
        config().setSuperSized(true);
        makeView();
        m_rig->transport.playPausePressed();
        const ScrubBounds bounds = scrubBounds(config().geometry(), 1.5);
        const QPoint start(qRound(bounds.minX + 2), qRound(bounds.y)), windowPlace = m_view->pos();
        // 8.5 points is no drag, and the thumb is no handle for the window.
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, start);
        QTest::mouseMove(m_view.get(), start + QPoint(6, 6));
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, start + QPoint(6, 6));
        QVERIFY(!m_view->isDragging() && player().hasTimer() && player().progress() < 0.1);
        QCOMPARE(m_view->pos(), windowPlace);

        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, start);
        QTest::mouseMove(m_view.get(), start + QPoint(60, 3));
        QVERIFY(m_view->isDragging() && !player().hasTimer());
        QCOMPARE(m_view->cursor().shape(), Qt::ClosedHandCursor);
        QVERIFY(qAbs(player().progress() - (start.x() + 60 - bounds.minX) / bounds.range()) < 1e-9);
        // The thumb is drawn where the pointer is, not where the progress is.
        QVERIFY(shows(QPointF(start.x() + 60, bounds.y), "track-scrubber"));
        QTest::mouseMove(m_view.get(), QPoint(1, start.y()));
        QCOMPARE(m_view->dragX(), 176.25);
        QCOMPARE(player().progress(), 0.0);
        const QPoint middle(qRound(bounds.minX + bounds.range() / 2), start.y());
        QTest::mouseMove(m_view.get(), middle);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, middle);
        QVERIFY(!m_view->isDragging() && player().hasTimer() && player().isPlaying());
        QCOMPARE(m_view->cursor().shape(), Qt::ArrowCursor);
        QTRY_VERIFY_WITH_TIMEOUT(player().progress() > 0.5, 3000);

        // Past the end: held at the scaled end, and the track plays out.
        const QPoint thumb(qRound(thumbCentreX(bounds, player().progress())), start.y());
        const QPoint end(m_view->width() - 1, start.y());
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, thumb);
        QTest::mouseMove(m_view.get(), end);
        QCOMPARE(m_view->dragX(), 399.75);
        QCOMPARE(player().progress(), 1.0);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, end);
        QTRY_COMPARE_WITH_TIMEOUT(config().currentTrackIndex(), 1, 5000);
    }

    void menusOpenChooseAndMarkTheCurrentEntry()
    {
        makeView();
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
        QCOMPARE(config().currentPlaylistIndex(), 2);
        QMenu* tracks = open(Element::trackMenu, {"Tone 1 ✓", "Tone 2", "Edit playlists"});
        QVERIFY(tracks);
        QCOMPARE(printedBy([&] { tracks->actions().at(1)->trigger(); }), pop);
        QCOMPARE(player().currentUrl(), QUrl::fromLocalFile(m_tones.at(1)));
        player().seek(0.5); // the current track chosen again starts again
        tracks->actions().at(1)->trigger();
        tracks->close();
        QVERIFY(player().isPlaying() && player().progress() < 0.5);
        config().setCurrentPlaylistIndex(0);
        tracks = open(Element::trackMenu, {"Edit playlists"});
        QVERIFY(tracks);
        tracks->actions().last()->trigger();
        tracks->close();
        QCOMPARE(settings.count(), 1);
        // A right click anywhere opens the command menu.
        QMenu commands;
        commands.addAction(QStringLiteral("Play"));
        m_view->setCommandMenu(&commands);
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(120, 90), m_view->mapToGlobal(QPoint(120, 90)));
        QApplication::sendEvent(m_view.get(), &event);
        QTRY_COMPARE(QApplication::activePopupWidget(), &commands);
        commands.close();
    }

    void controlsAreAccessible()
    {
        makeView();
        QAccessibleInterface* skin = QAccessible::queryAccessibleInterface(m_view.get());
        const auto find = [&](const QString& name) -> QAccessibleInterface* {
            for (int i = 0; i < skin->childCount(); ++i) {
                if (skin->child(i)->text(QAccessible::Name) == name && !skin->child(i)->state().invisible)
                    return skin->child(i);
            }
            return nullptr;
        };
        for (const char* name : {"Close", "Minimise", "Previous track", "Play", "Next track", "Playlists", "Tracks"}) {
            QAccessibleInterface* button = find(QString::fromLatin1(name));
            QVERIFY2(button && button->role() == QAccessible::Button, name);
        }
        QVERIFY(!find(QStringLiteral("Scrub bar"))); // only while playing
        find(QStringLiteral("Play"))->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTRY_VERIFY(player().isPlaying() && find(QStringLiteral("Pause")));
        find(QStringLiteral("Scrub bar"))->valueInterface()->setCurrentValue(500);
        QCOMPARE(player().progress(), 0.5);
    }

    void textLinesDecodeThePlaylistOnlyWhenItChanged()
    {
        makeView();
        m_view->repaint();
        const int reads = m_view->playlistReads();
        m_view->repaint();
        m_view->repaint();
        QCOMPARE(m_view->playlistReads(), reads);
        // A rewrite of the same size (only the order changed) is read again.
        auto tracks = *config().readPlaylistTracks(m_rig->three);
        std::swap(tracks[0], tracks[1]);
        config().writePlaylistTracks(m_rig->three, tracks);
        m_view->repaint();
        QCOMPARE(m_view->playlistReads(), reads + 1);
    }
};

PLINK_TEST_MAIN_WITH(QApplication, ContentViewTest)
#include "test_contentview.moc"
