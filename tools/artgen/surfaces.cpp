#include "surfaces.h"

#include "style.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr double px = Style::pixel;

QColor withAlpha(QColor colour, double alpha)
{
    colour.setAlphaF(float(alpha));
    return colour;
}
} // namespace

QImage canvas(QSizeF points)
{
    QImage image(qRound(points.width() * 2), qRound(points.height() * 2),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void beginPainting(QPainter& painter, QImage& image)
{
    painter.begin(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.scale(2, 2);
}

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QBrush& brush)
{
    if (rect.width() <= 0 || rect.height() <= 0)
        return;
    QPainterPath path;
    const double r = qMax(0.0, qMin(radius, qMin(rect.width(), rect.height()) / 2));
    path.addRoundedRect(rect, r, r);
    painter.fillPath(path, brush);
}

QBrush vertical(const QRectF& rect, const QColor& top, const QColor& bottom)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0, top);
    gradient.setColorAt(1, bottom);
    return gradient;
}

void drawRaised(QPainter& painter, const QRectF& rect, double radius, const QColor& edge,
                const QColor& shine, const QColor& top, const QColor& bottom, double depth)
{
    fillRounded(painter, rect, radius, edge);
    const QRectF inner = rect.adjusted(px, px, -px, -px);
    const double r = radius - px;
    fillRounded(painter, inner, r, bottom.darker(135));
    const QRectF face = inner.adjusted(0, 0, 0, -depth);
    fillRounded(painter, face, r, shine);
    fillRounded(painter, face.adjusted(0, px, 0, 0), r, vertical(face, top, bottom));
}

void drawShell(QPainter& painter, const QRectF& rect, double radius, const QColor& top,
               const QColor& bottom, const Palette& colours)
{
    fillRounded(painter, rect, radius, colours.shellEdge);
    const QRectF inner = rect.adjusted(px, px, -px, -px);
    fillRounded(painter, inner, radius - px, colours.shellShine);
    fillRounded(painter, inner.adjusted(0, px, 0, 0), radius - px, vertical(inner, top, bottom));
}

void drawRecess(QPainter& painter, const QRectF& rect, double radius, const Palette& colours)
{
    fillRounded(painter, rect.translated(0, px), radius, withAlpha(colours.shellShine, 0.55));
    fillRounded(painter, rect, radius, colours.shellEdge);
    const QRectF inner = rect.adjusted(px, px, -px, -px);
    fillRounded(painter, inner, radius - px, colours.well.darker(140));
    fillRounded(painter, inner.adjusted(0, 1.0, 0, 0), radius - px,
                vertical(inner, colours.well, colours.well.lighter(112)));
}

void drawScreen(QPainter& painter, const QRectF& rect, double radius, const Palette& colours)
{
    fillRounded(painter, rect.translated(0, px), radius, withAlpha(colours.shellShine, 0.55));
    fillRounded(painter, rect, radius, colours.shellEdge);
    const QRectF inner = rect.adjusted(px, px, -px, -px);
    fillRounded(painter, inner, radius - px, colours.screenTop.lighter(160));
    fillRounded(painter, inner.adjusted(0, px, 0, 0), radius - px,
                vertical(inner, colours.screenTop, colours.screenBottom));
}

void drawGroove(QPainter& painter, const QRectF& rect, const Palette& colours, bool onGlass)
{
    const double r = rect.height() / 2;
    if (onGlass) {
        fillRounded(painter, rect, r, QColor(0, 0, 0, 150));
        fillRounded(painter, rect.adjusted(px, px, -px, 0), r - px, QColor(255, 255, 255, 40));
        return;
    }
    fillRounded(painter, rect.translated(0, px), r, withAlpha(colours.shellShine, 0.6));
    fillRounded(painter, rect, r, colours.shellEdge);
    fillRounded(painter, rect.adjusted(px, 2 * px, -px, -px), r - px, colours.well.darker(125));
}

void drawHoles(QPainter& painter, const QRectF& area, int columns, int rows, double radius,
               const Palette& colours)
{
    const double stepX = columns > 1 ? (area.width() - 2 * radius) / (columns - 1) : 0;
    const double stepY = rows > 1 ? (area.height() - 2 * radius) / (rows - 1) : 0;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const QPointF centre(area.left() + radius + column * stepX,
                                 area.top() + radius + row * stepY);
            const QRectF hole(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
            painter.setBrush(withAlpha(colours.shellShine, 0.6));
            painter.drawEllipse(hole.translated(0, px));
            painter.setBrush(colours.grille);
            painter.drawEllipse(hole);
        }
    }
    painter.setBrush(Qt::NoBrush);
}
