#include "support/testenvironment.h"
#include "themes/defaultlayouts.h"

#include <QGuiApplication>
#include <QImage>

namespace {

const QStringList catalogue{"nano-tangerine", "neo-lime", "mini-blueberry", "max-graphite"};

// Where the player draws a picture, in points, straight from the family's layout.
QRectF frameOf(const ThemeData& l, QString picture)
{
    const auto at = [](double x, double y, double w, double h) { return QRectF(x - w / 2, y - h / 2, w, h); };
    picture.remove(QLatin1String("-on")).replace(QLatin1String("pause"), QLatin1String("play"));
    const QHash<QString, QRectF> frames{
        {"player", {0, 0, l.playerWidth, l.playerHeight}},
        {"player-min", {0, 0, l.playerMinWidth, l.playerMinHeight}},
        {"close", at(l.closePosX, l.closePosY, l.closeWidth, l.closeHeight)},
        {"min", at(l.minPosX, l.minPosY, l.minWidth, l.minHeight)},
        {"rr", at(l.rrPosX, l.rrPosY, l.rrWidth, l.rrHeight)},
        {"play", at(l.playPosX, l.playPosY, l.playWidth, l.playHeight)},
        {"ff", at(l.ffPosX, l.ffPosY, l.ffWidth, l.ffHeight)},
        {"playlist-menu", at(l.playlistMenuPosX, l.playlistMenuPosY, l.playlistMenuWidth, l.playlistMenuHeight)},
        {"track-menu", at(l.trackMenuPosX, l.trackMenuPosY, l.trackMenuWidth, l.trackMenuHeight)},
        {"track-scrubber", at(l.scrubberMinPosX, l.scrubberMinPosY, l.scrubberWidth, l.scrubberHeight)},
        {"track-album", at(l.trackArtPosX, l.trackArtPosY, l.trackArtWidth, l.trackArtHeight)}};
    if (!frames.contains(picture))
        qFatal("unknown picture %s", qPrintable(picture));
    return frames.value(picture);
}

const ThemeData& layoutOf(const QString& theme) { return familyLayout(*familyOfTheme(theme)); }

QImage shipped(const QString& theme, const QString& picture, const char* prefix = "themes")
{
    return QImage(QStringLiteral(":/%1/%2-%3@2x.png").arg(QLatin1String(prefix), theme, picture));
}

int luminance(QRgb pixel) { return (qRed(pixel) * 299 + qGreen(pixel) * 587 + qBlue(pixel) * 114) / 1000; }

} // namespace

class TestArt : public QObject
{
    Q_OBJECT

private slots:
    void shippedPicturesFitTheirElements_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QString>("picture");
        for (const QString& picture : themePictureNames()) {
            for (const QString& theme : catalogue)
                QTest::addRow("%s-%s", qPrintable(theme), qPrintable(picture)) << "themes" << theme << picture;
            QTest::addRow("fallback-%s", qPrintable(picture)) << "fallback" << "mini-blueberry" << picture;
        }
    }
    void shippedPicturesFitTheirElements()
    {
        QFETCH(QString, prefix);
        QFETCH(QString, theme);
        QFETCH(QString, picture);
        // Reading the resource also proves the linker kept the resources.
        const QImage image = shipped(theme, picture, qPrintable(prefix));
        QVERIFY2(!image.isNull(), "missing from the resources");
        QVERIFY(image.hasAlphaChannel());
        const QRectF frame = frameOf(layoutOf(theme), picture);
        if (frame.width() > 0) // an element the family lacks still ships a picture
            QCOMPARE(image.size(), (frame.size() * 2).toSize());
        if (!picture.endsWith(QLatin1String("-on")))
            return;
        // Highlighted: not a faint tint, a large part of the face changes clearly.
        const QImage normal = shipped(theme, picture.chopped(3), qPrintable(prefix));
        QCOMPARE(image.size(), normal.size());
        int changed = 0;
        for (int y = 0; y < normal.height(); ++y) {
            for (int x = 0; x < normal.width(); ++x) {
                const QRgb a = normal.pixel(x, y), b = image.pixel(x, y);
                changed += qAbs(luminance(a) - luminance(b)) > 24 || qAbs(qBlue(a) - qBlue(b)) > 48;
            }
        }
        QVERIFY2(changed > normal.width() * normal.height() / 3, qPrintable(QString::number(changed)));
    }

    void scrubberKnobIsHardPixelArt()
    {
        for (const QString& theme : catalogue) {
            const QImage art = shipped(theme, QStringLiteral("track-scrubber"));
            int opaque = 0;
            for (int y = 0; y < art.height(); ++y) {
                for (int x = 0; x < art.width(); ++x) {
                    const int alpha = qAlpha(art.pixel(x, y));
                    QVERIFY2(alpha == 0 || alpha == 255, qPrintable(QStringLiteral("%1: alpha %2 at %3,%4").arg(theme).arg(alpha).arg(x).arg(y)));
                    opaque += alpha == 255;
                    // One colour per 2 × 2 block, so that 1.5 times larger gives even 3 × 3 blocks.
                    QCOMPARE(art.pixel(x, y), art.pixel(x & ~1, y & ~1));
                }
            }
            QVERIFY2(opaque > art.width() * art.height() / 5, qPrintable(theme));
        }
    }

    void backgroundsCutCleanly_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QString>("picture");
        QTest::addColumn<bool>("whiteText");
        for (const QString& theme : catalogue) {
            const bool text = theme.startsWith(QLatin1String("mini")) || theme.startsWith(QLatin1String("max"));
            QTest::addRow("%s-player", qPrintable(theme)) << theme << "player" << text;
            QTest::addRow("%s-player-min", qPrintable(theme)) << theme << "player-min" << false;
        }
    }
    // Without a compositor the window is its picture's shape cut at half alpha.
    void backgroundsCutCleanly()
    {
        QFETCH(QString, theme);
        QFETCH(QString, picture);
        QFETCH(bool, whiteText);
        const ThemeData& l = layoutOf(theme);
        const QImage image = shipped(theme, picture);
        const auto solid = [&](QPointF point) { return qAlpha(image.pixel((point * 2).toPoint())) == 255; };
        // A soft shadow would become a dark fringe: see-through or solid, but for
        // antialiased edge pixels within two pixels of solid ones.
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const int alpha = qAlpha(image.pixel(x, y));
                bool nearSolid = alpha == 0 || alpha == 255;
                for (int dy = -2; dy <= 2 && !nearSolid; ++dy) {
                    for (int dx = -2; dx <= 2 && !nearSolid; ++dx)
                        nearSolid = image.rect().contains(x + dx, y + dy) && qAlpha(image.pixel(x + dx, y + dy)) == 255;
                }
                QVERIFY2(nearSolid, qPrintable(QStringLiteral("soft pixel at %1,%2").arg(x).arg(y)));
            }
        }
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        // Every button within the window needs solid ground, or the cut takes it away.
        const QRectF window(QPointF(0, 0), image.size() / 2.0);
        int buttons = 0;
        for (const char* name : {"close", "min", "rr", "play", "ff", "playlist-menu", "track-menu"}) {
            const QRectF inner = frameOf(l, name).adjusted(2, 2, -2, -2);
            if (inner.width() <= 0 || !window.contains(inner))
                continue;
            for (const QPointF point : {inner.topLeft(), inner.topRight(), inner.bottomLeft(), inner.bottomRight(), inner.center()})
                QVERIFY2(solid(point), name);
            ++buttons;
        }
        QVERIFY(buttons >= 4); // minimised, mini and max still show close, minimise and both menus
        // White text needs a dark ground along both lines, across most of their width.
        if (!whiteText)
            return;
        QVERIFY(l.textReversed && l.trackTextSize >= 1);
        for (const QPointF line : {QPointF(l.trackNamePosX, l.trackNamePosY), QPointF(l.trackArtistPosX, l.trackArtistPosY)}) {
            for (double dx = -0.45; dx <= 0.45; dx += 0.05) {
                const QPointF point(line.x() + dx * l.trackTextWidth, line.y());
                QVERIFY2(luminance(image.pixel((point * 2).toPoint())) < 60,
                         qPrintable(QStringLiteral("text ground at %1,%2").arg(point.x()).arg(point.y())));
            }
        }
    }

    void iconIsSquareAndInstalledCopyIsCurrent()
    {
        const QImage icon(QStringLiteral(":/icons/plinkbox.png"));
        QCOMPARE(icon.size(), QSize(256, 256));
        const QImage installed(QStringLiteral(PLINK_INSTALLED_ICON));
        QVERIFY2(!installed.isNull(), "resources/icons/plinkbox.png is missing");
        // Rebuild and copy build-dir/resources/icons/plinkbox.png when this fails.
        // Antialiased edges may round one level apart on another CPU.
        const QImage a = installed.convertToFormat(QImage::Format_ARGB32), b = icon.convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(a.size(), b.size());
        int differ = 0;
        for (int y = 0; y < a.height(); ++y) {
            for (int x = 0; x < a.width(); ++x) {
                const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
                differ += qMax(qMax(qAbs(qRed(p) - qRed(q)), qAbs(qGreen(p) - qGreen(q))),
                               qMax(qAbs(qBlue(p) - qBlue(q)), qAbs(qAlpha(p) - qAlpha(q)))) > 2;
            }
        }
        QCOMPARE(differ, 0);
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestArt)
#include "test_art.moc"
