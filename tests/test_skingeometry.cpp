#include "player/skingeometry.h"
#include "support/testenvironment.h"

#include <QCoreApplication>

Q_DECLARE_METATYPE(Element)

class SkinGeometryTest : public QObject
{
    Q_OBJECT

private slots:
    void elementsSitAtTheirScaledCentres_data()
    {
        QTest::addColumn<Element>("element");
        QTest::addColumn<bool>("superSized");
        QTest::addColumn<QRectF>("expected");
        // The default layout: close 17 × 14 at (9.5, 11), text lines 152 wide.
        QTest::newRow("close") << Element::close << false << QRectF(1, 4, 17, 14);
        QTest::newRow("close enlarged") << Element::close << true << QRectF(1.5, 6, 25.5, 21);
        QTest::newRow("play enlarged") << Element::playPause << true << QRectF(262.5, 12, 51, 78);
        QTest::newRow("title keeps its width") << Element::trackTitle << true << QRectF(212, 107.5, 152, 10);
    }
    void elementsSitAtTheirScaledCentres()
    {
        QFETCH(Element, element);
        QFETCH(bool, superSized);
        QFETCH(QRectF, expected);
        QCOMPARE(elementRect(ThemeData(), element, skinScale(superSized), 10), expected);
    }

    void windowFollowsModeScaleAndStaysSane_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<bool>("minimised");
        QTest::addColumn<bool>("superSized");
        QTest::addColumn<QSizeF>("frame"); // invalid: not checked
        QTest::addColumn<QSize>("window");
        QTest::newRow("enlarged") << 269.0 << 96.0 << false << true << QSizeF(403.5, 144) << QSize(404, 144);
        QTest::newRow("huge") << 1e300 << 5e9 << false << true << QSizeF() << QSize(4000, 4000);
        QTest::newRow("negative") << -269.0 << -1.0 << false << true << QSizeF() << QSize(1, 1);
        QTest::newRow("not a number") << qQNaN() << qInf() << false << true << QSizeF() << QSize(1, 4000);
    }
    void windowFollowsModeScaleAndStaysSane()
    {
        QFETCH(double, width);
        QFETCH(double, height);
        QFETCH(bool, minimised);
        QFETCH(bool, superSized);
        QFETCH(QSizeF, frame);
        QFETCH(QSize, window);
        ThemeData theme;
        theme.playerWidth = width;
        theme.playerHeight = height;
        const QSizeF found = frameSize(theme, minimised, skinScale(superSized));
        if (frame.isValid())
            QCOMPARE(found, frame);
        QCOMPARE(windowSize(found), window);
    }

    void zeroWidthRemovesOnlyOptionalElements()
    {
        ThemeData theme;
        QVERIFY(elementShown(theme, Element::minimise, false));
        theme.minWidth = theme.playlistMenuWidth = theme.trackMenuWidth = theme.trackArtWidth = 0;
        theme.closeWidth = theme.rrWidth = theme.playWidth = theme.ffWidth = 0;
        for (Element kept : {Element::close, Element::rewind, Element::playPause, Element::fastForward})
            QVERIFY(elementShown(theme, kept, false));
        for (Element gone : {Element::minimise, Element::playlistMenu, Element::trackMenu, Element::albumArt})
            QVERIFY(!elementShown(theme, gone, false));
    }

    void scrubDragIsClampedToScaledBounds_data()
    {
        QTest::addColumn<bool>("superSized");
        QTest::addColumn<double>("maxX"); // the bar's right end in the layout
        QTest::addColumn<double>("pointerX");
        QTest::addColumn<double>("thumbX");
        QTest::addColumn<double>("fraction"); // -1: no seek
        QTest::newRow("left of the bar") << false << 266.5 << 3.0 << 117.5 << 0.0;
        QTest::newRow("enlarged left") << true << 266.5 << 100.0 << 176.25 << 0.0;
        QTest::newRow("enlarged right") << true << 266.5 << 500.0 << 399.75 << 1.0;
        QTest::newRow("enlarged quarter") << true << 266.5 << 232.125 << 232.125 << 0.25;
        QTest::newRow("no travel never seeks") << false << 117.5 << 500.0 << 117.5 << -1.0;
    }
    void scrubDragIsClampedToScaledBounds()
    {
        QFETCH(bool, superSized);
        QFETCH(double, maxX);
        QFETCH(double, pointerX);
        QFETCH(double, thumbX);
        QFETCH(double, fraction);
        ThemeData theme;
        theme.scrubberMaxPosX = maxX;
        const ScrubBounds bounds = scrubBounds(theme, skinScale(superSized));
        const double x = clampedDragX(bounds, pointerX);
        QCOMPARE(x, thumbX);
        QCOMPARE(seekFraction(bounds, x).value_or(-1.0), fraction);
        if (fraction >= 0)
            QCOMPARE(thumbCentreX(bounds, fraction), thumbX);
    }

    void hitTestingFindsTheTopmostControl_data()
    {
        QTest::addColumn<bool>("superSized");
        QTest::addColumn<bool>("playing");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("control"); // -1: the background
        QTest::newRow("close") << false << false << QPointF(9.5, 11) << int(Element::close);
        QTest::newRow("shared edge goes to the later minimise") << false << false << QPointF(18, 18) << int(Element::minimise);
        QTest::newRow("just outside close") << false << false << QPointF(18.5, 11) << -1;
        QTest::newRow("enlarged close") << true << false << QPointF(26, 26) << int(Element::close);
        QTest::newRow("play edge goes to fast-forward") << false << false << QPointF(209.5, 34) << int(Element::fastForward);
        QTest::newRow("art is background") << false << false << QPointF(67, 48) << -1;
        QTest::newRow("thumb while playing") << false << true << QPointF(117.5, 65.5) << int(Element::scrubber);
        QTest::newRow("no thumb when stopped") << false << false << QPointF(117.5, 65.5) << -1;
    }
    void hitTestingFindsTheTopmostControl()
    {
        QFETCH(bool, superSized);
        QFETCH(bool, playing);
        QFETCH(QPointF, point);
        QFETCH(int, control);
        const double s = skinScale(superSized);
        const ThemeData theme;
        const auto found = controlAt(theme, s, playing, thumbCentreX(scrubBounds(theme, s), 0), point);
        QCOMPARE(found ? int(*found) : -1, control);
    }
};

PLINK_TEST_MAIN_WITH(QCoreApplication, SkinGeometryTest)
#include "test_skingeometry.moc"
