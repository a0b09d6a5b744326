#include "icon.h"

#include "elements.h"
#include "palette.h"
#include "style.h"
#include "surfaces.h"

#include <QPainter>

QImage renderIcon()
{
    const Palette& colours = palette(QStringLiteral("blueberry"));
    // Drawn on a 128-point square at two pixels per point, like the skins.
    QImage image = canvas(QSizeF(128, 128));
    QPainter painter;
    beginPainting(painter, image);

    const QRectF body(10, 12, 108, 104);
    drawShell(painter, body, 22, colours.shellTop, colours.shellBottom, colours);

    const QRectF screen(20, 21, 88, 50);
    drawScreen(painter, screen, Style::screenRadius + 1, colours);
    const QRectF glass = screen.adjusted(Style::pixel, Style::pixel, -Style::pixel, -Style::pixel);
    painter.drawImage(glass, renderAlbum(glass.size(), colours));

    // Three keys in one recess, as on the players.
    const QSizeF key(29, 38);
    const double left = 64 - key.width() * 1.5;
    const double top = 73;
    const QRectF keys(left, top, key.width() * 3, key.height());
    const double insetX = Style::keyInsetX - Style::wellMargin;
    const double insetY = Style::keyInsetY - Style::wellMargin;
    drawRecess(painter, keys.adjusted(insetX, insetY, -insetX, -insetY),
               Style::keyRadius + Style::wellMargin, colours);
    const Glyph glyphs[] = {Glyph::rewind, Glyph::play, Glyph::fastForward};
    for (int i = 0; i < 3; ++i) {
        const QRectF frame(left + i * key.width(), top, key.width(), key.height());
        painter.drawImage(frame, renderKey(key, glyphs[i], i == 1, colours));
    }
    return image;
}
