#pragma once

#include "palette.h"

#include <QBrush>
#include <QImage>
#include <QRectF>

class QPainter;

// The building blocks of every picture: flat fills with hard one-pixel edges,
// lit from above. All rectangles are in points; a picture has two pixels per
// point.

QImage canvas(QSizeF points);                      // transparent, two pixels per point
void beginPainting(QPainter& painter, QImage& image); // antialiased, drawing in points

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QBrush& brush);
QBrush vertical(const QRectF& rect, const QColor& top, const QColor& bottom);

// A raised surface: outline, shine along the top, a gradient face and a darker
// side of `depth` points below it.
void drawRaised(QPainter& painter, const QRectF& rect, double radius, const QColor& edge,
                const QColor& shine, const QColor& top, const QColor& bottom, double depth);

// A body shell: like a raised surface, without the side.
void drawShell(QPainter& painter, const QRectF& rect, double radius, const QColor& top,
               const QColor& bottom, const Palette& colours);

// A recess in the body for a button: dark rim, shadow under its top edge and
// a lit lip along its bottom edge.
void drawRecess(QPainter& painter, const QRectF& rect, double radius, const Palette& colours);

// Dark glass behind cover art and text.
void drawScreen(QPainter& painter, const QRectF& rect, double radius, const Palette& colours);

// The scrub track: a groove in the body, or a faint lit line on dark glass.
void drawGroove(QPainter& painter, const QRectF& rect, const Palette& colours, bool onGlass);

// A grid of small round speaker holes filling `area`.
void drawHoles(QPainter& painter, const QRectF& area, int columns, int rows, double radius,
               const Palette& colours);
