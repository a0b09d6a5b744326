#pragma once

#include "glyphs.h"
#include "palette.h"

#include "themes/defaultlayouts.h"

#include <QImage>
#include <QSizeF>

// The pictures drawn over the background, each filling a frame of the given
// size in points.

// A button: transport glyphs get the tall key, the others the small one.
QImage renderKey(QSizeF frame, Glyph glyph, bool lit, const Palette& colours);

// The scrubber knob, drawn on a grid of one cell per point so that it scales
// cleanly by whole pixels (2 at normal size, 3 at one and a half).
QImage renderKnob(ThemeFamily family, QSizeF frame, const Palette& colours);

// The placeholder shown where a track has no cover picture.
QImage renderAlbum(QSizeF frame, const Palette& colours);
