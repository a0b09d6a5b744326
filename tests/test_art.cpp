// The pictures the build draws fill the skin's boxes at two pixels per point and survive the way the skin shows them.
#include "player/skingeometry.h"
#include "support/testenvironment.h"
#include "themes/defaultlayouts.h"

#include <QGuiApplication>
#include <QImage>

namespace {

const QHash<QString, Element> elements{
    {"close", Element::close}, {"min", Element::minimise}, {"rr", Element::rewind}, {"play", Element::playPause},
    {"pause", Element::playPause}, {"ff", Element::fastForward}, {"playlist-menu", Element::playlistMenu},
    {"track-menu", Element::trackMenu}, {"track-scrubber", Element::scrubber}, {"track-album", Element::albumArt}};

} // namespace

class ArtTest : public QObject
{
    Q_OBJECT

private slots:
    void picturesFitTheSkin_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QString>("picture");
        for (const QString& picture : themePictureNames()) {
            for (const char* theme : {"nano-tangerine", "neo-lime", "mini-blueberry", "max-graphite"})
                QTest::addRow("%s-%s", theme, qPrintable(picture)) << "themes" << theme << picture;
            QTest::addRow("fallback-%s", qPrintable(picture)) << "fallback" << "mini-blueberry" << picture;
        }
    }
    void picturesFitTheSkin()
    {
        QFETCH(QString, prefix);
        QFETCH(QString, theme);
        QFETCH(QString, picture);
        const auto shipped = [&](const QString& name) { return QImage(QString(":/%1/%2-%3@2x.png").arg(prefix, theme, name)); };
        // Reading the resource also proves the linker kept the resources.
        const QImage image = shipped(picture);
        QVERIFY2(image.hasAlphaChannel(), "missing from the resources");
        const ThemeData& l = familyLayout(*familyOfTheme(theme));
        const bool background = picture.startsWith("player");
        const QSizeF frame = background ? frameSize(l, picture == "player-min", 1)
                                        : elementRect(l, elements.value(QString(picture).remove("-on")), 1).size();
        if (frame.width() > 0) // an element the family lacks still ships a picture
            QCOMPARE(image.size(), (frame * 2).toSize());
        const QImage unlit = picture.endsWith("-on") ? shipped(picture.chopped(3)) : image;
        int lit = 0, opaque = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb a = unlit.pixel(x, y), b = image.pixel(x, y);
                lit += qAbs(qGray(a) - qGray(b)) > 24 || qAbs(qBlue(a) - qBlue(b)) > 48;
                opaque += qAlpha(b) == 255;
                // The knob is hard pixel art in 2 × 2 blocks, so that 1.5 times larger gives even blocks.
                if (picture == "track-scrubber" && ((qAlpha(b) % 255) || b != image.pixel(x & ~1, y & ~1)))
                    QFAIL(qPrintable(QString("soft knob pixel at %1,%2").arg(x).arg(y)));
                // Without a compositor a window is its picture cut at half alpha: a soft shadow
                // would be a dark fringe. See-through or solid, but for edges near solid pixels.
                bool nearSolid = !background || qAlpha(b) % 255 == 0;
                for (int dy = -2; dy <= 2 && !nearSolid; ++dy) {
                    for (int dx = -2; dx <= 2 && !nearSolid; ++dx)
                        nearSolid = image.rect().contains(x + dx, y + dy) && qAlpha(image.pixel(x + dx, y + dy)) == 255;
                }
                if (!nearSolid)
                    QFAIL(qPrintable(QString("soft pixel at %1,%2").arg(x).arg(y)));
            }
        }
        // Highlighted: not a faint tint, a large part of the face changes clearly.
        QVERIFY2(unlit == image || lit > image.width() * image.height() / 3, qPrintable(QString::number(lit)));
        QVERIFY(opaque > image.width() * image.height() / 5); // the knob too is no ghost
        if (!background)
            return;
        // Every button within the window needs solid ground, or the cut takes it away;
        // white text needs dark ground along both lines, across most of their width.
        const QRectF window(QPointF(0, 0), image.size() / 2.0);
        const auto pixel = [&](QPointF point) { return image.pixel((point * 2).toPoint()); };
        QList<QPointF> solid, dark;
        for (Element e : {Element::close, Element::minimise, Element::rewind, Element::playPause, Element::fastForward,
                          Element::playlistMenu, Element::trackMenu}) {
            const QRectF inner = elementRect(l, e, 1).adjusted(2, 2, -2, -2);
            if (inner.width() > 0 && window.contains(inner))
                solid << inner.topLeft() << inner.topRight() << inner.bottomLeft() << inner.bottomRight() << inner.center();
        }
        QVERIFY(solid.size() >= 20); // minimised, mini and max still show close, minimise and both menus
        for (double dx = -0.45; picture == "player" && l.textReversed && l.trackTextSize > 0 && dx <= 0.45; dx += 0.05)
            dark << QPointF(l.trackNamePosX + dx * l.trackTextWidth, l.trackNamePosY)
                 << QPointF(l.trackArtistPosX + dx * l.trackTextWidth, l.trackArtistPosY);
        for (const QPointF point : solid + dark)
            QVERIFY2(qAlpha(pixel(point)) == 255 && (!dark.contains(point) || qGray(pixel(point)) < 60),
                     qPrintable(QString("ground at %1,%2").arg(point.x()).arg(point.y())));
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, ArtTest)
#include "test_art.moc"
