#include "player/skingeometry.h"
#include "support/testenvironment.h"

#include <QCoreApplication>

Q_DECLARE_METATYPE(Element)

class SkinGeometryTest : public QObject
{
    Q_OBJECT

private slots:
    void elementsSitAtTheirScaledCentres_data();
    void elementsSitAtTheirScaledCentres();
    void frameFollowsModeAndScale_data();
    void frameFollowsModeAndScale();
    void absurdThemeNumbersGiveASaneWindow_data();
    void absurdThemeNumbersGiveASaneWindow();
    void zeroWidthRemovesOptionalElements_data();
    void zeroWidthRemovesOptionalElements();
    void scrubDragIsClampedToScaledBounds_data();
    void scrubDragIsClampedToScaledBounds();
    void emptyScrubTravelNeverSeeks();
    void hitTestingFindsTheTopmostControl_data();
    void hitTestingFindsTheTopmostControl();
};

void SkinGeometryTest::elementsSitAtTheirScaledCentres_data()
{
    QTest::addColumn<Element>("element");
    QTest::addColumn<bool>("superSized");
    QTest::addColumn<QRectF>("expected");
    // The default (mini) layout: close 17 × 14 at (9.5, 11), text 152 wide.
    QTest::newRow("close") << Element::close << false << QRectF(1, 4, 17, 14);
    QTest::newRow("close enlarged") << Element::close << true << QRectF(14.25 - 12.75, 16.5 - 10.5, 25.5, 21);
    QTest::newRow("play enlarged") << Element::playPause << true << QRectF(288 - 25.5, 51 - 39, 51, 78);
    QTest::newRow("art") << Element::albumArt << false << QRectF(21, 2, 92, 92);
    QTest::newRow("title keeps its width") << Element::trackTitle << true << QRectF(288 - 76, 112.5 - 5, 152, 10);
    QTest::newRow("artist keeps its width") << Element::artist << false << QRectF(192 - 76, 89 - 5, 152, 10);
}

void SkinGeometryTest::elementsSitAtTheirScaledCentres()
{
    QFETCH(Element, element);
    QFETCH(bool, superSized);
    QFETCH(QRectF, expected);
    QCOMPARE(elementRect(ThemeData(), element, skinScale(superSized), 10), expected);
}

void SkinGeometryTest::frameFollowsModeAndScale_data()
{
    QTest::addColumn<bool>("minimised");
    QTest::addColumn<bool>("superSized");
    QTest::addColumn<QSizeF>("frame");
    QTest::addColumn<QSize>("window");
    QTest::newRow("normal") << false << false << QSizeF(269, 96) << QSize(269, 96);
    QTest::newRow("enlarged") << false << true << QSizeF(403.5, 144) << QSize(404, 144);
    QTest::newRow("minimised") << true << false << QSizeF(20, 96) << QSize(20, 96);
    QTest::newRow("minimised enlarged") << true << true << QSizeF(30, 144) << QSize(30, 144);
}

void SkinGeometryTest::frameFollowsModeAndScale()
{
    QFETCH(bool, minimised);
    QFETCH(bool, superSized);
    QFETCH(QSizeF, frame);
    QFETCH(QSize, window);
    QCOMPARE(frameSize(ThemeData(), minimised, skinScale(superSized)), frame);
    QCOMPARE(windowSize(frame), window);
}

void SkinGeometryTest::absurdThemeNumbersGiveASaneWindow_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<QSize>("window");
    QTest::newRow("huge") << 1e300 << 5e9 << QSize(4000, 4000);
    QTest::newRow("negative") << -269.0 << -1.0 << QSize(1, 1);
    QTest::newRow("zero") << 0.0 << 0.4 << QSize(1, 1);
    QTest::newRow("not a number") << qQNaN() << qInf() << QSize(1, 4000);
}

void SkinGeometryTest::absurdThemeNumbersGiveASaneWindow()
{
    QFETCH(double, width);
    QFETCH(double, height);
    QFETCH(QSize, window);
    ThemeData theme;
    theme.playerWidth = width;
    theme.playerHeight = height;
    QCOMPARE(windowSize(frameSize(theme, false, 1.5)), window);
}

void SkinGeometryTest::zeroWidthRemovesOptionalElements_data()
{
    QTest::addColumn<Element>("element");
    QTest::addColumn<bool>("removable");
    QTest::newRow("minimise") << Element::minimise << true;
    QTest::newRow("playlist menu") << Element::playlistMenu << true;
    QTest::newRow("track menu") << Element::trackMenu << true;
    QTest::newRow("album art") << Element::albumArt << true;
    QTest::newRow("close") << Element::close << false;
    QTest::newRow("rewind") << Element::rewind << false;
    QTest::newRow("play") << Element::playPause << false;
    QTest::newRow("fast-forward") << Element::fastForward << false;
}

void SkinGeometryTest::zeroWidthRemovesOptionalElements()
{
    QFETCH(Element, element);
    QFETCH(bool, removable);
    ThemeData theme;
    QVERIFY(elementShown(theme, element, false));
    theme.minWidth = theme.playlistMenuWidth = theme.trackMenuWidth = theme.trackArtWidth = 0;
    theme.closeWidth = theme.rrWidth = theme.playWidth = theme.ffWidth = 0;
    QCOMPARE(elementShown(theme, element, false), !removable);
}

void SkinGeometryTest::scrubDragIsClampedToScaledBounds_data()
{
    QTest::addColumn<bool>("superSized");
    QTest::addColumn<double>("pointerX");
    QTest::addColumn<double>("thumbX");
    QTest::addColumn<double>("fraction");
    QTest::newRow("left of the bar") << false << 3.0 << 117.5 << 0.0;
    QTest::newRow("past the end") << false << 900.0 << 266.5 << 1.0;
    QTest::newRow("middle") << false << 192.0 << 192.0 << 0.5;
    QTest::newRow("enlarged left") << true << 100.0 << 176.25 << 0.0;
    QTest::newRow("enlarged right") << true << 500.0 << 399.75 << 1.0;
    QTest::newRow("enlarged quarter") << true << 176.25 + 223.5 / 4 << 176.25 + 223.5 / 4 << 0.25;
}

void SkinGeometryTest::scrubDragIsClampedToScaledBounds()
{
    QFETCH(bool, superSized);
    QFETCH(double, pointerX);
    QFETCH(double, thumbX);
    QFETCH(double, fraction);
    const ScrubBounds bounds = scrubBounds(ThemeData(), skinScale(superSized));
    const double x = clampedDragX(bounds, pointerX);
    QCOMPARE(x, thumbX);
    QCOMPARE(*seekFraction(bounds, x), fraction);
    QCOMPARE(thumbCentreX(bounds, fraction), thumbX);
}

void SkinGeometryTest::emptyScrubTravelNeverSeeks()
{
    ThemeData theme;
    theme.scrubberMaxPosX = theme.scrubberMinPosX;
    const ScrubBounds bounds = scrubBounds(theme, 1.0);
    QCOMPARE(clampedDragX(bounds, 500), theme.scrubberMinPosX);
    QVERIFY(!seekFraction(bounds, 500).has_value());
}

void SkinGeometryTest::hitTestingFindsTheTopmostControl_data()
{
    QTest::addColumn<bool>("superSized");
    QTest::addColumn<bool>("playing");
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<int>("control"); // -1: the background
    QTest::newRow("close") << false << false << QPointF(9.5, 11) << int(Element::close);
    QTest::newRow("close's edge") << false << false << QPointF(18, 17) << int(Element::close);
    QTest::newRow("shared edge goes to the later minimise") << false << false << QPointF(18, 18) << int(Element::minimise);
    QTest::newRow("just outside close") << false << false << QPointF(18.5, 11) << -1;
    QTest::newRow("enlarged close") << true << false << QPointF(26, 26) << int(Element::close);
    QTest::newRow("play") << false << false << QPointF(192, 34) << int(Element::playPause);
    QTest::newRow("play edge goes to fast-forward") << false << false << QPointF(209.5, 34) << int(Element::fastForward);
    QTest::newRow("art is background") << false << false << QPointF(67, 48) << -1;
    QTest::newRow("thumb while playing") << false << true << QPointF(117.5, 65.5) << int(Element::scrubber);
    QTest::newRow("no thumb when stopped") << false << false << QPointF(117.5, 65.5) << -1;
    QTest::newRow("playlist menu") << false << false << QPointF(9.5, 71) << int(Element::playlistMenu);
    QTest::newRow("track menu") << false << false << QPointF(9.5, 87) << int(Element::trackMenu);
}

void SkinGeometryTest::hitTestingFindsTheTopmostControl()
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

PLINK_TEST_MAIN_WITH(QCoreApplication, SkinGeometryTest)
#include "test_skingeometry.moc"
