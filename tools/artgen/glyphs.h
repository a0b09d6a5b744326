#pragma once

#include <QColor>
#include <QPainterPath>
#include <QPointF>

class QPainter;

enum class Glyph { close, minimise, rewind, play, pause, fastForward, playlistMenu, trackMenu };

// The glyph's outline in points, centred on (0, 0).
QPainterPath glyphPath(Glyph glyph);

// Draws the glyph at centre, with an emboss one pixel below it.
void drawGlyph(QPainter& painter, Glyph glyph, QPointF centre, double scale, const QColor& ink,
               const QColor& emboss);
