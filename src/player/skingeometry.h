#pragma once

#include "themes/themedata.h"

#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QSizeF>

#include <optional>

// The skin's controls and pictures, in drawing order (later ones lie on top).
enum class Element {
    close,
    minimise,
    rewind,
    playPause,
    fastForward,
    playlistMenu,
    trackMenu,
    scrubber,
    albumArt,
    trackTitle,
    artist,
};
constexpr int elementCount = int(Element::artist) + 1;

// Every theme value is scaled by this: 1.5 for the enlarged player.
double skinScale(bool superSized);

// The window's frame in points, unrounded.
QSizeF frameSize(const ThemeData& theme, bool minimised, double scale);
// The frame as a window size in whole points, rounded up.
QSize windowSize(QSizeF frame);

// Whether the theme keeps an optional element (a width of 0 removes it) and
// whether the element is visible in the present state. The text lines also
// need a track, which the caller knows.
bool elementShown(const ThemeData& theme, Element element, bool isPlaying);

// The element's box, centred at its theme position × scale. The scrubber's
// box sits at its resting place; thumbRect() places it by progress. The text
// boxes are trackTextWidth wide, unscaled, and textHeight high.
QRectF elementRect(const ThemeData& theme, Element element, double scale, double textHeight = 0);

// The scrub bar's travel, in window points.
struct ScrubBounds {
    double minX = 0;
    double maxX = 0;
    double y = 0;
    double range() const { return maxX - minX; }
};
ScrubBounds scrubBounds(const ThemeData& theme, double scale);
// The thumb's box with its centre at x.
QRectF thumbRect(const ThemeData& theme, double scale, double centreX);
double thumbCentreX(const ScrubBounds& bounds, double progress);
// The pointer's x held within the travel (lower bound first).
double clampedDragX(const ScrubBounds& bounds, double pointerX);
// The seek fraction for a thumb centre; none when the travel is empty.
std::optional<double> seekFraction(const ScrubBounds& bounds, double x);

// The control under a point, topmost first; none over the background. The
// scrubber counts only while it is drawn; the album art and the text lines
// are pictures, not controls.
std::optional<Element> controlAt(const ThemeData& theme, double scale, bool isPlaying,
                                 double thumbX, QPointF point);
