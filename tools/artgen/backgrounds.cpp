#include "backgrounds.h"

#include "style.h"
#include "surfaces.h"

#include <QPainter>
#include <QPainterPath>

namespace {

QRectF frameAt(double x, double y, double width, double height)
{
    return QRectF(x - width / 2, y - height / 2, width, height);
}

double bodyRadius(ThemeFamily family)
{
    switch (family) {
    case ThemeFamily::mini: return Style::miniRadius;
    case ThemeFamily::neo: return Style::neoRadius;
    case ThemeFamily::max: return Style::maxRadius;
    case ThemeFamily::nano: return Style::nanoRadius;
    }
    return Style::miniRadius;
}

// Small buttons that (nearly) touch share one recess, like a rocker.
QList<QRectF> smallWells(const ThemeData& layout)
{
    QList<QRectF> frames;
    const auto add = [&frames](double x, double y, double w, double h) {
        if (w > 0 && h > 0)
            frames.append(frameAt(x, y, w, h));
    };
    add(layout.closePosX, layout.closePosY, layout.closeWidth, layout.closeHeight);
    add(layout.minPosX, layout.minPosY, layout.minWidth, layout.minHeight);
    add(layout.playlistMenuPosX, layout.playlistMenuPosY, layout.playlistMenuWidth,
        layout.playlistMenuHeight);
    add(layout.trackMenuPosX, layout.trackMenuPosY, layout.trackMenuWidth,
        layout.trackMenuHeight);

    QList<QRectF> wells;
    for (const QRectF& frame : frames) {
        bool merged = false;
        for (QRectF& well : wells) {
            if (well.adjusted(-2.5, -2.5, 2.5, 2.5).intersects(frame)) {
                well = well.united(frame);
                merged = true;
                break;
            }
        }
        if (!merged)
            wells.append(frame);
    }
    const double inset = Style::smallInset - Style::wellMargin;
    for (QRectF& well : wells)
        well.adjust(inset, inset, -inset, -inset);
    return wells;
}

QRectF transportWell(const ThemeData& layout)
{
    const QRectF all = frameAt(layout.rrPosX, layout.rrPosY, layout.rrWidth, layout.rrHeight)
                           .united(frameAt(layout.playPosX, layout.playPosY, layout.playWidth,
                                           layout.playHeight))
                           .united(frameAt(layout.ffPosX, layout.ffPosY, layout.ffWidth,
                                           layout.ffHeight));
    const double insetX = Style::keyInsetX - Style::wellMargin;
    const double insetY = Style::keyInsetY - Style::wellMargin;
    return all.adjusted(insetX, insetY, -insetX, -insetY);
}

QRectF artWindow(const ThemeData& layout)
{
    if (layout.trackArtWidth <= 0)
        return {};
    return frameAt(layout.trackArtPosX, layout.trackArtPosY, layout.trackArtWidth,
                   layout.trackArtHeight)
        .adjusted(-Style::pixel, -Style::pixel, Style::pixel, Style::pixel);
}

// The dark band behind the two text lines, a little taller than the text.
QRectF textBand(const ThemeData& layout, const QRectF& body)
{
    if (layout.trackTextSize <= 0 || !layout.textReversed)
        return {};
    const double half = layout.trackTextWidth / 2;
    const QRectF band(layout.trackNamePosX - half, layout.trackNamePosY - layout.trackTextSize * 0.7,
                      layout.trackTextWidth,
                      layout.trackArtistPosY - layout.trackNamePosY
                          + (layout.trackTextSize + layout.artistTextSize) * 0.7);
    return band.intersected(body.adjusted(2, 2, -2, -2));
}

QRectF grooveRect(const ThemeData& layout, const QRectF& body)
{
    const double h = Style::grooveHeight;
    QRectF groove(layout.scrubberMinPosX, layout.scrubberMinPosY - h / 2,
                  layout.scrubberMaxPosX - layout.scrubberMinPosX, h);
    groove.setLeft(qMax(groove.left(), body.left() + 3));
    groove.setRight(qMin(groove.right(), body.right() - 3));
    groove.setBottom(qMin(groove.bottom(), body.bottom() - 1));
    return groove;
}

// Speaker holes, where each family has room for them.
void drawDecoration(QPainter& painter, ThemeFamily family, const Palette& colours)
{
    switch (family) {
    case ThemeFamily::mini: drawHoles(painter, QRectF(5.5, 38, 8, 20), 3, 6, 0.8, colours); break;
    case ThemeFamily::neo: drawHoles(painter, QRectF(44, 23.5, 69, 8), 16, 3, 0.8, colours); break;
    case ThemeFamily::max: drawHoles(painter, QRectF(45, 6.5, 66, 6), 16, 2, 0.8, colours); break;
    case ThemeFamily::nano: drawHoles(painter, QRectF(5.5, 25, 8, 30), 3, 8, 0.8, colours); break;
    }
}

} // namespace

QImage renderPlayer(ThemeFamily family, const Palette& colours, bool minimised)
{
    const ThemeData& layout = familyLayout(family);
    const QSizeF normalSize(layout.playerWidth, layout.playerHeight);
    const QSizeF minSize(layout.playerMinWidth, layout.playerMinHeight);
    const bool shrinks = normalSize != minSize;
    const QSizeF size = minimised ? minSize : normalSize;

    QImage image = canvas(size);
    QPainter painter;
    beginPainting(painter, image);
    const QRectF body(QPointF(0, 0), size);
    const double radius = bodyRadius(family);
    // A shrinking family keeps its small buttons in a darker band that is
    // exactly the minimised window, so minimising leaves that band alone.
    const QRectF band(QPointF(0, 0), minSize);

    if (shrinks && minimised) {
        drawShell(painter, body, radius, colours.spineTop, colours.spineBottom, colours);
    } else {
        drawShell(painter, body, radius, colours.shellTop, colours.shellBottom, colours);
        if (shrinks) {
            QPainterPath inside;
            inside.addRoundedRect(body.adjusted(Style::pixel, Style::pixel, -Style::pixel,
                                                -Style::pixel),
                                  radius - Style::pixel, radius - Style::pixel);
            painter.save();
            painter.setClipPath(inside);
            painter.fillRect(band.adjusted(0, Style::pixel, 0, 0),
                             vertical(band, colours.spineTop, colours.spineBottom));
            // The seam: a dark line and a lit one beside it.
            const bool vertical = band.height() >= body.height();
            const QRectF seam = vertical ? QRectF(band.right() - Style::pixel, 0, Style::pixel,
                                                  body.height())
                                         : QRectF(0, band.bottom() - Style::pixel, body.width(),
                                                  Style::pixel);
            painter.fillRect(seam, colours.shellEdge);
            painter.fillRect(seam.translated(vertical ? Style::pixel : 0,
                                             vertical ? 0 : Style::pixel),
                             colours.shellShine);
            painter.restore();
        }
    }

    if (!minimised || !shrinks) {
        drawDecoration(painter, family, colours);
        const QRectF art = artWindow(layout);
        const QRectF text = textBand(layout, body);
        const bool stacked = !art.isEmpty() && !text.isEmpty() && text.top() >= art.bottom() - 1
            && text.top() - art.bottom() < 10;
        QRectF glass;
        if (stacked) {
            // Art above text: one pane of glass for both.
            glass = art.united(text);
            drawScreen(painter, glass, Style::screenRadius, colours);
        } else {
            if (!art.isEmpty())
                drawScreen(painter, art, Style::screenRadius, colours);
            if (!text.isEmpty())
                drawScreen(painter, text, Style::screenRadius, colours);
        }
        const QRectF groove = grooveRect(layout, body);
        drawGroove(painter, groove, colours, glass.contains(groove));
        drawRecess(painter, transportWell(layout), Style::keyRadius + Style::wellMargin, colours);
    } else {
        drawDecoration(painter, family, colours);
    }
    for (const QRectF& well : smallWells(layout)) {
        if (body.contains(well))
            drawRecess(painter, well, Style::smallRadius + Style::wellMargin, colours);
    }
    return image;
}
