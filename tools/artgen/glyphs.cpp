#include "glyphs.h"

#include <QPainter>
#include <QPainterPathStroker>
#include <QPolygonF>

namespace {

QPainterPath triangle(QPointF a, QPointF b, QPointF c)
{
    QPainterPath path;
    path.addPolygon(QPolygonF{a, b, c, a});
    path.closeSubpath();
    return path;
}

// Rounds the corners of a filled shape a little by growing it with a round
// join, so that small triangles do not look like spikes.
QPainterPath softened(const QPainterPath& shape, double by)
{
    QPainterPathStroker stroker;
    stroker.setWidth(by * 2);
    stroker.setJoinStyle(Qt::RoundJoin);
    stroker.setCapStyle(Qt::RoundCap);
    return shape.united(stroker.createStroke(shape)).simplified();
}

QPainterPath stroked(const QPainterPath& line, double width)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(line).simplified();
}

QPainterPath line(QPointF from, QPointF to)
{
    QPainterPath path(from);
    path.lineTo(to);
    return path;
}

} // namespace

QPainterPath glyphPath(Glyph glyph)
{
    switch (glyph) {
    case Glyph::close: {
        QPainterPath cross = line({-2.4, -2.4}, {2.4, 2.4});
        cross.addPath(line({-2.4, 2.4}, {2.4, -2.4}));
        return stroked(cross, 1.5);
    }
    case Glyph::minimise:
        return stroked(line({-3.0, 0}, {3.0, 0}), 1.5);
    case Glyph::play:
        // Nudged left of its box so that its weight, not its box, is centred.
        return softened(triangle({-4.0, -6.0}, {6.0, 0}, {-4.0, 6.0}), 0.6);
    case Glyph::pause: {
        QPainterPath bars;
        bars.addRoundedRect(QRectF(-4.5, -6.0, 3.2, 12.0), 0.8, 0.8);
        bars.addRoundedRect(QRectF(1.3, -6.0, 3.2, 12.0), 0.8, 0.8);
        return bars;
    }
    case Glyph::fastForward: {
        QPainterPath both = triangle({-6.5, -5.0}, {0, 0}, {-6.5, 5.0});
        both.addPath(triangle({0, -5.0}, {6.5, 0}, {0, 5.0}));
        return softened(both, 0.5);
    }
    case Glyph::rewind: {
        QPainterPath both = triangle({6.5, -5.0}, {0, 0}, {6.5, 5.0});
        both.addPath(triangle({0, -5.0}, {-6.5, 0}, {0, 5.0}));
        return softened(both, 0.5);
    }
    case Glyph::playlistMenu: {
        // A list: three rows, each a dot and a line.
        QPainterPath rows;
        for (double y : {-2.5, 0.0, 2.5}) {
            rows.addEllipse(QPointF(-3.4, y), 0.65, 0.65);
            rows.addPath(stroked(line({-1.7, y}, {3.6, y}), 1.1));
        }
        return rows;
    }
    case Glyph::trackMenu: {
        // A single note: head, stem and flag.
        QPainterPath note;
        QPainterPath head;
        head.addEllipse(QPointF(0, 0), 1.9, 1.4);
        QTransform tilt;
        tilt.translate(-1.0, 2.4);
        tilt.rotate(-22);
        note.addPath(tilt.map(head));
        note.addRect(QRectF(0.35, -4.6, 1.0, 7.0));
        QPainterPath flag(QPointF(0.35, -4.6));
        flag.lineTo(QPointF(1.35, -4.6));
        flag.cubicTo(QPointF(1.6, -3.0), QPointF(3.9, -2.6), QPointF(3.1, 0.2));
        flag.cubicTo(QPointF(2.8, -1.4), QPointF(2.0, -2.0), QPointF(0.35, -2.2));
        flag.closeSubpath();
        note.addPath(flag);
        return note.simplified();
    }
    }
    return {};
}

void drawGlyph(QPainter& painter, Glyph glyph, QPointF centre, double scale, const QColor& ink,
               const QColor& emboss)
{
    QTransform place;
    place.translate(centre.x(), centre.y());
    place.scale(scale, scale);
    const QPainterPath path = place.map(glyphPath(glyph));
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(emboss);
    painter.drawPath(path.translated(0, 0.5));
    painter.setBrush(ink);
    painter.drawPath(path);
    painter.restore();
}
