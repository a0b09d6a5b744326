#include "app/windowsnapdelegate.h"
#include "player/skingeometry.h"
#include "support/testenvironment.h"

#include <QCoreApplication>

// A drag on the scrub bar of the layout's right end maxX: the thumb's place and the seek's fraction (-1: no seek).
struct Drag { bool superSized; double maxX, pointerX, thumbX, fraction; };

// Where the skin puts things and where the window snaps, over the default layout (close 17 × 14 at (9.5, 11),
// text lines 152 wide, the scrub bar from 117.5 to 266.5 at 65.5).
class SkinGeometryTest : public QObject
{
    Q_OBJECT

private slots:
    // Enlarged, a text line's centre moves with the skin but its width stays.
    void textLinesKeepTheirWidthWhenEnlarged()
    {
        QCOMPARE(elementRect(ThemeData(), Element::trackTitle, skinScale(true), 10), QRectF(212, 107.5, 152, 10));
    }

    void zeroWidthRemovesOnlyOptionalElements()
    {
        ThemeData theme;
        theme.minWidth = theme.trackArtWidth = theme.closeWidth = theme.playWidth = 0;
        QVERIFY(!elementShown(theme, Element::minimise, false) && !elementShown(theme, Element::albumArt, false));
        QVERIFY(elementShown(theme, Element::close, false) && elementShown(theme, Element::playPause, false));
    }

    void scrubDragIsClampedToScaledBounds_data()
    {
        QTest::addColumn<Drag>("drag");
        QTest::newRow("left of the bar") << Drag{false, 266.5, 3.0, 117.5, 0.0};
        QTest::newRow("enlarged right") << Drag{true, 266.5, 500.0, 399.75, 1.0};
        QTest::newRow("enlarged quarter") << Drag{true, 266.5, 232.125, 232.125, 0.25};
        QTest::newRow("no travel never seeks") << Drag{false, 117.5, 500.0, 117.5, -1.0};
    }
    void scrubDragIsClampedToScaledBounds()
    {
        QFETCH(Drag, drag);
        const auto [superSized, maxX, pointerX, thumbX, fraction] = drag;
        const ScrubBounds bounds = scrubBounds(ThemeData{.scrubberMaxPosX = maxX}, skinScale(superSized));
        QCOMPARE(clampedDragX(bounds, pointerX), thumbX);
        QCOMPARE(seekFraction(bounds, thumbX).value_or(-1.0), fraction);
        if (fraction >= 0)
            QCOMPARE(thumbCentreX(bounds, fraction), thumbX);
    }

    void hitTestingFindsTheTopmostControl_data()
    {
        QTest::addColumn<bool>("superSized");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("control"); // -1: the background
        QTest::newRow("shared edge goes to the later minimise") << false << QPointF(18, 18) << int(Element::minimise);
        QTest::newRow("just outside close") << false << QPointF(18.5, 11) << -1;
        QTest::newRow("enlarged close") << true << QPointF(26, 26) << int(Element::close);
        QTest::newRow("play edge goes to fast-forward") << false << QPointF(209.5, 34) << int(Element::fastForward);
        QTest::newRow("art is background") << false << QPointF(67, 48) << -1;
        QTest::newRow("no thumb when stopped") << false << QPointF(117.5, 65.5) << -1;
    }
    void hitTestingFindsTheTopmostControl()
    {
        QFETCH(bool, superSized);
        QFETCH(QPointF, point);
        const double s = skinScale(superSized);
        const auto found = controlAt(ThemeData(), s, false, thumbCentreX(scrubBounds(ThemeData(), s), 0), point);
        QTEST(found ? int(*found) : -1, "control");
    }

    void windowSnapsToTheNearEdges_data()
    {
        // The usable area lies below a 30-point panel: 0,30 to 1280,800.
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QPoint>("expected"); // (-1, -1): left alone
        QTest::newRow("10 from the left snaps") << QRect(10, 300, 269, 96) << QPoint(0, 300);
        QTest::newRow("11 from the left stays") << QRect(11, 300, 269, 96) << QPoint(-1, -1);
        QTest::newRow("partly off the left") << QRect(-7, 300, 269, 96) << QPoint(0, 300);
        QTest::newRow("past the right edge") << QRect(1280 - 269 + 10, 300, 269, 96) << QPoint(1280 - 269, 300);
        QTest::newRow("4 below the top and 6 from the right") << QRect(1005, 34, 269, 96) << QPoint(1011, 30);
        QTest::newRow("below the bottom") << QRect(500, 800 - 96 + 3, 269, 96) << QPoint(500, 800 - 96);
        QTest::newRow("both sides near: left wins over a nearer right") << QRect(7, 300, 1276, 96) << QPoint(0, 300);
        QTest::newRow("top and bottom near: bottom wins over a nearer top") << QRect(500, 33, 269, 760) << QPoint(500, 40);
    }
    void windowSnapsToTheNearEdges()
    {
        QFETCH(QRect, window);
        const QRect area(0, 30, 1280, 770);
        const auto place = snapped(window, area);
        QTEST(place.value_or(QPoint(-1, -1)), "expected");
        if (place) // snapping again from there changes nothing more
            QCOMPARE(snapped(QRect(*place, window.size()), area), place);
    }
};

PLINK_TEST_MAIN_WITH(QCoreApplication, SkinGeometryTest)
#include "test_skingeometry.moc"
