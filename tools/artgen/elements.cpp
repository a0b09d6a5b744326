#include "elements.h"

#include "style.h"
#include "surfaces.h"

#include <QConicalGradient>
#include <QPainter>
#include <QRadialGradient>

#include <array>

namespace {

bool isTransport(Glyph glyph)
{
    return glyph == Glyph::rewind || glyph == Glyph::play || glyph == Glyph::pause
        || glyph == Glyph::fastForward;
}

// Pixel art, one character per cell: o outline, w glint, h lit face, b face,
// s shade, . clear. The bead is a round knob centred on its grid.
using Sprite = std::array<const char*, 14>;

constexpr Sprite bead{
    "..............",
    ".....oooo.....",
    "...oohhhhoo...",
    "..ohwwhhhhbo..",
    "..ohwhhhhhbo..",
    ".ohhhhhhhhbbo.",
    ".ohhhhhhhbbbo.",
    ".ohhhhhhbbbbo.",
    ".obhhhbbbbbso.",
    "..obbbbbbbso..",
    "..obbbbbbsso..",
    "...oossssoo...",
    ".....oooo.....",
    "..............",
};

// max's knob slides along the bottom edge of the cover art, which is drawn
// over its top half: a tab that hangs below the art.
constexpr Sprite tab{
    "..............",
    "..............",
    "..............",
    "..............",
    "..............",
    ".oooooooooooo.",
    ".ohhwwhhhhhbo.",
    ".ohwhhhhhhbbo.",
    ".ohhhhhhhhbbo.",
    ".obhhhhhhbbso.",
    ".obbbbbbbbsso.",
    ".obbbbbbbssso.",
    "..obbbbbssso..",
    "...oooooooo...",
};

// nano's track runs along the window's bottom edge, which cuts the knob in
// half: a pin that hangs from the top with its tip on the track.
constexpr Sprite pin{
    "....oooooo....",
    "...ohwwhhbo...",
    "..ohwhhhhbbo..",
    "..ohhhhhhbbo..",
    "..obhhhhbbso..",
    "...obbbbbso...",
    "....obbbso....",
    ".....obso.....",
    "......oo......",
    "..............",
    "..............",
    "..............",
    "..............",
    "..............",
};

QRgb spriteColour(char cell, const Palette& colours)
{
    switch (cell) {
    case 'o': return colours.keyEdge.rgba();
    case 'w': return qRgba(255, 255, 255, 255);
    case 'h': return colours.keyTop.rgba();
    case 'b': return colours.keyBottom.rgba();
    case 's': return colours.keyBottom.darker(135).rgba();
    default: return qRgba(0, 0, 0, 0);
    }
}

} // namespace

QImage renderKey(QSizeF frame, Glyph glyph, bool lit, const Palette& colours)
{
    QImage image = canvas(frame);
    QPainter painter;
    beginPainting(painter, image);

    const bool tall = isTransport(glyph);
    const double insetX = tall ? Style::keyInsetX : Style::smallInset;
    const double insetY = tall ? Style::keyInsetY : Style::smallInset;
    const double radius = tall ? Style::keyRadius : Style::smallRadius;
    const double depth = tall ? Style::keyDepth : Style::smallDepth;
    const QRectF key = QRectF(QPointF(0, 0), frame).adjusted(insetX, insetY, -insetX, -insetY);

    const QColor top = lit ? colours.litTop : colours.keyTop;
    const QColor bottom = lit ? colours.litBottom : colours.keyBottom;
    drawRaised(painter, key, radius, colours.keyEdge, lit ? top.lighter(125) : QColor(Qt::white),
               top, bottom, depth);

    // The glyph sits in the middle of the face, above the side.
    const QPointF centre(key.center().x(), key.center().y() - depth / 2);
    QColor emboss = lit ? bottom.darker(160) : QColor(255, 255, 255, 200);
    drawGlyph(painter, glyph, centre, tall ? Style::keyGlyphScale : 1.0,
              lit ? colours.litInk : colours.ink, emboss);
    return image;
}

QImage renderKnob(ThemeFamily family, QSizeF frame, const Palette& colours)
{
    const Sprite& sprite = family == ThemeFamily::nano ? pin
                           : family == ThemeFamily::max ? tab
                                                         : bead;
    QImage cells(14, 14, QImage::Format_ARGB32);
    for (int y = 0; y < 14; ++y) {
        for (int x = 0; x < 14; ++x)
            cells.setPixel(x, y, spriteColour(sprite[size_t(y)][x], colours));
    }
    // Whole pixels only: every cell becomes a block, never a blend.
    return cells.scaled(qRound(frame.width() * 2), qRound(frame.height() * 2),
                        Qt::IgnoreAspectRatio, Qt::FastTransformation)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage renderAlbum(QSizeF frame, const Palette& colours)
{
    QImage image = canvas(frame);
    QPainter painter;
    beginPainting(painter, image);
    const QRectF all(QPointF(0, 0), frame);

    // Dark ground with a soft pool of light behind the disc.
    painter.fillRect(all, vertical(all, colours.screenTop.lighter(150), colours.screenBottom));
    QRadialGradient pool(all.center(), all.width() * 0.6);
    pool.setColorAt(0, QColor(255, 255, 255, 22));
    pool.setColorAt(1, QColor(255, 255, 255, 0));
    painter.fillRect(all, pool);

    // A record: grooves, two faint reflections, a label in the theme colour.
    const double side = qMin(frame.width(), frame.height());
    const QPointF centre = all.center();
    const double disc = side * 0.34;
    painter.setBrush(QColor(14, 14, 16));
    painter.setPen(QPen(QColor(0, 0, 0), 0.5));
    painter.drawEllipse(centre, disc, disc);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 16), 0.5));
    for (double r = disc * 0.46; r < disc - 1.0; r += side * 0.022)
        painter.drawEllipse(centre, r, r);
    QConicalGradient sheen(centre, 45);
    sheen.setColorAt(0.00, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.08, QColor(255, 255, 255, 38));
    sheen.setColorAt(0.16, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.50, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.58, QColor(255, 255, 255, 38));
    sheen.setColorAt(0.66, QColor(255, 255, 255, 0));
    sheen.setColorAt(1.00, QColor(255, 255, 255, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(sheen);
    painter.drawEllipse(centre, disc - 0.5, disc - 0.5);

    const double label = disc * 0.38;
    const QRectF labelRect(centre.x() - label, centre.y() - label, 2 * label, 2 * label);
    painter.setBrush(vertical(labelRect, colours.litTop, colours.litBottom));
    painter.drawEllipse(labelRect);
    painter.setBrush(colours.screenBottom);
    painter.drawEllipse(centre, side * 0.018 + 0.5, side * 0.018 + 0.5);
    return image;
}
