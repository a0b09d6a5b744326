#include "pictures.h"
#include "support/testenvironment.h"
#include "themes/defaultlayouts.h"

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QtEndian>

namespace {

const QStringList catalogue{QStringLiteral("nano-tangerine"), QStringLiteral("neo-lime"),
                            QStringLiteral("mini-blueberry"), QStringLiteral("max-graphite")};

struct Frame {
    double x = 0, y = 0, width = 0, height = 0;
};

// Where the player draws each picture, straight from the family's layout.
Frame elementFrame(const ThemeData& l, QString picture)
{
    if (picture.endsWith(QLatin1String("-on")))
        picture.chop(3);
    if (picture == QLatin1String("close"))
        return {l.closePosX, l.closePosY, l.closeWidth, l.closeHeight};
    if (picture == QLatin1String("min"))
        return {l.minPosX, l.minPosY, l.minWidth, l.minHeight};
    if (picture == QLatin1String("rr"))
        return {l.rrPosX, l.rrPosY, l.rrWidth, l.rrHeight};
    if (picture == QLatin1String("play") || picture == QLatin1String("pause"))
        return {l.playPosX, l.playPosY, l.playWidth, l.playHeight};
    if (picture == QLatin1String("ff"))
        return {l.ffPosX, l.ffPosY, l.ffWidth, l.ffHeight};
    if (picture == QLatin1String("playlist-menu"))
        return {l.playlistMenuPosX, l.playlistMenuPosY, l.playlistMenuWidth, l.playlistMenuHeight};
    if (picture == QLatin1String("track-menu"))
        return {l.trackMenuPosX, l.trackMenuPosY, l.trackMenuWidth, l.trackMenuHeight};
    if (picture == QLatin1String("track-scrubber"))
        return {l.scrubberMinPosX, l.scrubberMinPosY, l.scrubberWidth, l.scrubberHeight};
    if (picture == QLatin1String("track-album"))
        return {l.trackArtPosX, l.trackArtPosY, l.trackArtWidth, l.trackArtHeight};
    if (picture == QLatin1String("player"))
        return {l.playerWidth / 2, l.playerHeight / 2, l.playerWidth, l.playerHeight};
    if (picture == QLatin1String("player-min"))
        return {l.playerMinWidth / 2, l.playerMinHeight / 2, l.playerMinWidth, l.playerMinHeight};
    qFatal("unknown picture");
}

const ThemeData& layoutOf(const QString& theme)
{
    return familyLayout(*familyOfTheme(theme));
}

QImage shipped(const QString& prefix, const QString& theme, const QString& picture)
{
    return QImage(QStringLiteral(":/%1/%2-%3@2x.png").arg(prefix, theme, picture));
}

// The two pixels per point of a picture that fills the frame.
QSize pixelSize(const Frame& frame)
{
    return QSize(qRound(frame.width * 2), qRound(frame.height * 2));
}

// The duration of an MP4 file from its movie header ("mvhd").
double mp4Seconds(const QByteArray& file)
{
    const qsizetype at = file.indexOf("mvhd");
    if (at < 0)
        return -1;
    const auto* box = reinterpret_cast<const uchar*>(file.constData()) + at + 4;
    if (box[0] == 1) // 64-bit times: skip creation and modification (8 bytes each)
        return double(qFromBigEndian<quint64>(box + 24)) / qFromBigEndian<quint32>(box + 20);
    return double(qFromBigEndian<quint32>(box + 16)) / qFromBigEndian<quint32>(box + 12);
}

int luminance(QRgb pixel)
{
    return (qRed(pixel) * 299 + qGreen(pixel) * 587 + qBlue(pixel) * 114) / 1000;
}

} // namespace

class TestArt : public QObject
{
    Q_OBJECT

private slots:
    void shippedPicturesMatchTheirElements_data();
    void shippedPicturesMatchTheirElements();
    void everyThemeNameRendersAtLayoutSize();
    void scrubberKnobIsHardPixelArt_data();
    void scrubberKnobIsHardPixelArt();
    void highlightedButtonsVisiblyDiffer_data();
    void highlightedButtonsVisiblyDiffer();
    void controlsSitOnSolidBackground_data();
    void controlsSitOnSolidBackground();
    void backgroundsHaveHardOutlines_data();
    void backgroundsHaveHardOutlines();
    void reversedTextSitsOnDarkBand();
    void soundsAreShortResources_data();
    void soundsAreShortResources();
    void iconIsSquareAndInstalledCopyIsCurrent();
};

void TestArt::shippedPicturesMatchTheirElements_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("picture");
    for (const QString& picture : themePictureNames()) {
        for (const QString& theme : catalogue) {
            QTest::addRow("%s-%s", qPrintable(theme), qPrintable(picture))
                << QStringLiteral("themes") << theme << picture;
        }
        QTest::addRow("fallback-%s", qPrintable(picture))
            << QStringLiteral("fallback") << QStringLiteral("mini-blueberry") << picture;
    }
}

void TestArt::shippedPicturesMatchTheirElements()
{
    QFETCH(QString, prefix);
    QFETCH(QString, theme);
    QFETCH(QString, picture);
    // Reading the resource also proves the linker kept the resources.
    const QImage image = shipped(prefix, theme, picture);
    QVERIFY2(!image.isNull(), "missing from the resources");
    QVERIFY(image.hasAlphaChannel());
    const Frame frame = elementFrame(layoutOf(theme), picture);
    // An element the family lacks still ships a picture; it has no size to match.
    if (frame.width > 0)
        QCOMPARE(image.size(), pixelSize(frame));
}

void TestArt::everyThemeNameRendersAtLayoutSize()
{
    int checked = 0;
    for (const QString& family : themeFamilyNames()) {
        for (const QString& colour : themeColourNames()) {
            const QString theme = family + QLatin1Char('-') + colour;
            for (const QString& picture : themePictureNames()) {
                const QImage image = renderPicture(theme, picture);
                QVERIFY2(!image.isNull(), qPrintable(theme + QLatin1Char(' ') + picture));
                const Frame frame = elementFrame(layoutOf(theme), picture);
                if (frame.width > 0) {
                    QCOMPARE(image.size(), pixelSize(frame));
                    ++checked;
                }
            }
        }
    }
    QVERIFY(checked > 28 * 12);
    QVERIFY(renderPicture(QStringLiteral("mini-cherry"), QStringLiteral("play")).isNull());
    QVERIFY(renderPicture(QStringLiteral("mini-lime"), QStringLiteral("stop")).isNull());
}

void TestArt::scrubberKnobIsHardPixelArt_data()
{
    QTest::addColumn<QImage>("knob");
    for (const QString& theme : catalogue) {
        QTest::newRow(qPrintable(theme))
            << shipped(QStringLiteral("themes"), theme, QStringLiteral("track-scrubber"));
    }
    for (const QString& colour : themeColourNames()) {
        const QString theme = QStringLiteral("neo-") + colour;
        QTest::newRow(qPrintable(theme))
            << renderPicture(theme, QStringLiteral("track-scrubber"));
    }
}

void TestArt::scrubberKnobIsHardPixelArt()
{
    QFETCH(QImage, knob);
    QVERIFY(!knob.isNull());
    const QImage art = knob.convertToFormat(QImage::Format_ARGB32);
    int opaque = 0;
    for (int y = 0; y < art.height(); ++y) {
        for (int x = 0; x < art.width(); ++x) {
            const int alpha = qAlpha(art.pixel(x, y));
            QVERIFY2(alpha == 0 || alpha == 255, qPrintable(QStringLiteral("alpha %1 at %2,%3")
                                                                .arg(alpha).arg(x).arg(y)));
            opaque += alpha == 255;
            // One cell per point: every 2 × 2 block is one colour, so drawing
            // it 1.5 times larger turns each cell into an even 3 × 3 block.
            QCOMPARE(art.pixel(x, y), art.pixel(x & ~1, y & ~1));
        }
    }
    QVERIFY(opaque > art.width() * art.height() / 5);
}

void TestArt::highlightedButtonsVisiblyDiffer_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("button");
    for (const QString& theme : catalogue) {
        for (const char* button : {"rr", "play", "pause", "ff"})
            QTest::addRow("%s-%s", qPrintable(theme), button) << theme << QString::fromLatin1(button);
    }
}

void TestArt::highlightedButtonsVisiblyDiffer()
{
    QFETCH(QString, theme);
    QFETCH(QString, button);
    const QImage normal = shipped(QStringLiteral("themes"), theme, button)
                              .convertToFormat(QImage::Format_ARGB32);
    const QImage lit = shipped(QStringLiteral("themes"), theme, button + QStringLiteral("-on"))
                           .convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(lit.size(), normal.size());
    // Not a faint tint: a large part of the face changes clearly.
    int changed = 0;
    for (int y = 0; y < normal.height(); ++y) {
        for (int x = 0; x < normal.width(); ++x)
            changed += qAbs(luminance(normal.pixel(x, y)) - luminance(lit.pixel(x, y))) > 24
                    || qAbs(qBlue(normal.pixel(x, y)) - qBlue(lit.pixel(x, y))) > 48;
    }
    QVERIFY2(changed > normal.width() * normal.height() / 3, qPrintable(QString::number(changed)));
}

void TestArt::controlsSitOnSolidBackground_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("minimised");
    for (const QString& theme : catalogue) {
        QTest::addRow("%s", qPrintable(theme)) << theme << false;
        QTest::addRow("%s minimised", qPrintable(theme)) << theme << true;
    }
}

// The window is cut to the background's shape: every button that lies within
// the window must have solid background under it, or it would be cut away.
void TestArt::controlsSitOnSolidBackground()
{
    QFETCH(QString, theme);
    QFETCH(bool, minimised);
    const ThemeData& layout = layoutOf(theme);
    const QImage background =
        shipped(QStringLiteral("themes"), theme,
                minimised ? QStringLiteral("player-min") : QStringLiteral("player"));
    const QRectF window(QPointF(0, 0), background.size() / 2.0);
    int checked = 0;
    for (const char* name : {"close", "min", "rr", "play", "ff", "playlist-menu", "track-menu"}) {
        const Frame f = elementFrame(layout, QString::fromLatin1(name));
        const QRectF frame(f.x - f.width / 2, f.y - f.height / 2, f.width, f.height);
        if (f.width <= 0 || !window.contains(frame))
            continue;
        const QRectF inner = frame.adjusted(2, 2, -2, -2);
        for (const QPointF point : {inner.topLeft(), inner.topRight(), inner.bottomLeft(),
                                    inner.bottomRight(), inner.center()}) {
            QCOMPARE(qAlpha(background.pixel((point * 2).toPoint())), 255);
        }
        ++checked;
    }
    // Minimised, mini and max still show close, minimise and both menus.
    QVERIFY(checked >= 4);
}

void TestArt::backgroundsHaveHardOutlines_data()
{
    QTest::addColumn<QImage>("background");
    for (const QString& theme : catalogue) {
        for (const char* picture : {"player", "player-min"}) {
            QTest::addRow("%s-%s", qPrintable(theme), picture)
                << shipped(QStringLiteral("themes"), theme, QString::fromLatin1(picture));
        }
    }
}

// Without a compositor the window is its picture's shape cut at half alpha; a
// soft shadow would become a dark fringe. Allow only antialiased edge pixels
// within two pixels of solid ones (a shallow arc blends over two pixels).
void TestArt::backgroundsHaveHardOutlines()
{
    QFETCH(QImage, background);
    const QImage image = background.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(image.pixel(x, y));
            if (alpha == 0 || alpha == 255)
                continue;
            bool nextToSolid = false;
            for (int dy = -2; dy <= 2 && !nextToSolid; ++dy) {
                for (int dx = -2; dx <= 2 && !nextToSolid; ++dx) {
                    const QPoint near(x + dx, y + dy);
                    nextToSolid = image.rect().contains(near) && qAlpha(image.pixel(near)) == 255;
                }
            }
            QVERIFY2(nextToSolid, qPrintable(QStringLiteral("soft pixel at %1,%2").arg(x).arg(y)));
        }
    }
    // The corners of the window are see-through, the middle is solid.
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(image.pixel(image.width() / 2, image.height() / 2)), 255);
}

void TestArt::reversedTextSitsOnDarkBand()
{
    int checked = 0;
    for (const QString& theme : catalogue) {
        const ThemeData& l = layoutOf(theme);
        if (!l.textReversed || l.trackTextSize < 1)
            continue;
        const QImage player = shipped(QStringLiteral("themes"), theme, QStringLiteral("player"));
        // Along the middle of both lines, across most of their width: white
        // text needs a dark ground.
        for (const QPointF line : {QPointF(l.trackNamePosX, l.trackNamePosY),
                                   QPointF(l.trackArtistPosX, l.trackArtistPosY)}) {
            for (double dx = -0.45; dx <= 0.45; dx += 0.05) {
                const QPointF point(line.x() + dx * l.trackTextWidth, line.y());
                const QRgb pixel = player.pixel((point * 2).toPoint());
                QVERIFY2(luminance(pixel) < 60, qPrintable(QStringLiteral("%1 at %2,%3")
                                                             .arg(theme).arg(point.x()).arg(point.y())));
            }
        }
        ++checked;
    }
    QCOMPARE(checked, 2); // mini and max show text
}

void TestArt::soundsAreShortResources_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"click", "min", "pop", "drag"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestArt::soundsAreShortResources()
{
    QFETCH(QString, name);
    QFile file(QStringLiteral(":/sounds/%1.m4a").arg(name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.mid(4, 8) == "ftypM4A " || bytes.mid(4, 4) == "ftyp");
    const double seconds = mp4Seconds(bytes);
    QVERIFY2(seconds > 0.02 && seconds < 0.15, qPrintable(QString::number(seconds)));
}

void TestArt::iconIsSquareAndInstalledCopyIsCurrent()
{
    const QImage icon(QStringLiteral(":/icons/plinkbox.png"));
    QCOMPARE(icon.size(), QSize(256, 256));
    const QImage installed(QStringLiteral(PLINK_INSTALLED_ICON));
    QVERIFY2(!installed.isNull(), "resources/icons/plinkbox.png is missing");
    // Rebuild and copy build-dir/resources/icons/plinkbox.png when this fails.
    QCOMPARE(installed.convertToFormat(QImage::Format_ARGB32),
             icon.convertToFormat(QImage::Format_ARGB32));
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TestArt)
#include "test_art.moc"
