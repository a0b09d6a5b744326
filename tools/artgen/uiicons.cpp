#include "uiicons.h"

#include "icon.h"
#include "palette.h"

#include <QPainter>
#include <QPainterPath>

namespace {

// Drawn on a 16-unit square, like the desktop's own small icons: a dark ink
// that reads on light and mid-grey window backgrounds, the theme's blueberry
// for the one accent.
const QColor ink(QStringLiteral("#3b4048"));

QPen pen(double width, const QColor& colour = ink)
{
    QPen pen(colour, width);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

void drawPlaylist(QPainter& painter, const QColor& accent)
{
    painter.setPen(pen(1.6));
    for (const double y : {3.5, 7.0, 10.5})
        painter.drawLine(QPointF(1.5, y), QPointF(8.0, y));
    // A quaver beside the list.
    painter.setPen(pen(1.4, accent));
    painter.drawLine(QPointF(13.0, 3.0), QPointF(13.0, 12.0));
    painter.drawLine(QPointF(13.0, 3.0), QPointF(15.0, 4.5));
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(11.4, 12.3), 2.1, 1.7);
}

void drawTrash(QPainter& painter, const QColor& accent)
{
    painter.setPen(pen(1.4));
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(QPointF(2.0, 4.0), QPointF(14.0, 4.0));
    painter.drawPolyline(QPolygonF{QPointF(6.0, 4.0), QPointF(6.5, 2.0), QPointF(9.5, 2.0), QPointF(10.0, 4.0)});
    QPainterPath can(QPointF(3.5, 4.0));
    can.lineTo(4.5, 14.5);
    can.lineTo(11.5, 14.5);
    can.lineTo(12.5, 4.0);
    painter.drawPath(can);
    painter.setPen(pen(1.1, accent));
    for (const double x : {6.3, 8.0, 9.7})
        painter.drawLine(QPointF(x, 6.5), QPointF(x, 12.5));
}

void drawSettings(QPainter& painter, const QColor& accent)
{
    // Three sliders, the knobs at different places.
    const double knobs[] = {10.5, 5.0, 8.5};
    for (int i = 0; i < 3; ++i) {
        const double y = 3.0 + 5.0 * i;
        painter.setPen(pen(1.4));
        painter.drawLine(QPointF(1.5, y), QPointF(14.5, y));
        painter.setPen(pen(1.2));
        painter.setBrush(accent);
        painter.drawEllipse(QPointF(knobs[i], y), 1.9, 1.9);
    }
}

void drawNewDocument(QPainter& painter, const QColor& accent)
{
    painter.setPen(pen(1.3));
    painter.setBrush(Qt::white);
    painter.drawPolygon(QPolygonF{QPointF(2.5, 1.5), QPointF(9.0, 1.5), QPointF(12.5, 5.0), QPointF(12.5, 14.5),
                                  QPointF(2.5, 14.5)});
    painter.drawPolyline(QPolygonF{QPointF(9.0, 1.5), QPointF(9.0, 5.0), QPointF(12.5, 5.0)});
    painter.setPen(pen(1.8, accent));
    painter.drawLine(QPointF(12.0, 9.5), QPointF(12.0, 15.0));
    painter.drawLine(QPointF(9.25, 12.25), QPointF(14.75, 12.25));
}

} // namespace

QStringList uiIconNames()
{
    return {QStringLiteral("view-media-playlist"), QStringLiteral("user-trash"),
            QStringLiteral("preferences-system"), QStringLiteral("document-new")};
}

QList<int> uiIconSizes()
{
    return {16, 22, 32, 48, 64};
}

QImage renderUiIcon(const QString& name, int pixels)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / 16.0, pixels / 16.0);
    const QColor accent = palette(QStringLiteral("blueberry")).shellBottom;
    if (name == QLatin1String("view-media-playlist"))
        drawPlaylist(painter, accent);
    else if (name == QLatin1String("user-trash"))
        drawTrash(painter, accent);
    else if (name == QLatin1String("preferences-system"))
        drawSettings(painter, accent);
    else if (name == QLatin1String("document-new"))
        drawNewDocument(painter, accent);
    else
        return {};
    return image;
}

QList<int> appIconSizes()
{
    return {16, 22, 24, 32, 48, 64, 128, 256};
}

QImage renderAppIcon(int pixels)
{
    const QImage full = renderIcon();
    return pixels == full.width() ? full
                                  : full.scaled(pixels, pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
