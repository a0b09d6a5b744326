#include "player/skingeometry.h"

#include <QtMath>

#include <algorithm>

namespace {

struct Box {
    double x, y, width, height;
};

// The theme's centre and size of an element, unscaled.
Box themeBox(const ThemeData& t, Element element)
{
    switch (element) {
    case Element::close: return {t.closePosX, t.closePosY, t.closeWidth, t.closeHeight};
    case Element::minimise: return {t.minPosX, t.minPosY, t.minWidth, t.minHeight};
    case Element::rewind: return {t.rrPosX, t.rrPosY, t.rrWidth, t.rrHeight};
    case Element::playPause: return {t.playPosX, t.playPosY, t.playWidth, t.playHeight};
    case Element::fastForward: return {t.ffPosX, t.ffPosY, t.ffWidth, t.ffHeight};
    case Element::playlistMenu:
        return {t.playlistMenuPosX, t.playlistMenuPosY, t.playlistMenuWidth, t.playlistMenuHeight};
    case Element::trackMenu: return {t.trackMenuPosX, t.trackMenuPosY, t.trackMenuWidth, t.trackMenuHeight};
    case Element::scrubber: return {t.scrubberMinPosX, t.scrubberMinPosY, t.scrubberWidth, t.scrubberHeight};
    case Element::albumArt: return {t.trackArtPosX, t.trackArtPosY, t.trackArtWidth, t.trackArtHeight};
    case Element::trackTitle: return {t.trackNamePosX, t.trackNamePosY, t.trackTextWidth, 0};
    case Element::artist: return {t.trackArtistPosX, t.trackArtistPosY, t.trackTextWidth, 0};
    }
    return {};
}

QRectF centredRect(double x, double y, double width, double height)
{
    return QRectF(x - width / 2, y - height / 2, width, height);
}

} // namespace

double skinScale(bool superSized)
{
    return superSized ? 1.5 : 1.0;
}

QSizeF frameSize(const ThemeData& theme, bool minimised, double scale)
{
    return minimised ? QSizeF(theme.playerMinWidth * scale, theme.playerMinHeight * scale)
                     : QSizeF(theme.playerWidth * scale, theme.playerHeight * scale);
}

QSize windowSize(QSizeF frame)
{
    // Theme sizes are checked when read, so only the fraction is left to round.
    return QSize(qCeil(frame.width()), qCeil(frame.height()));
}

bool elementShown(const ThemeData& theme, Element element, bool isPlaying)
{
    switch (element) {
    case Element::minimise: return theme.minWidth > 0;
    case Element::playlistMenu: return theme.playlistMenuWidth > 0;
    case Element::trackMenu: return theme.trackMenuWidth > 0;
    case Element::scrubber: return isPlaying;
    case Element::albumArt: return theme.trackArtWidth > 0;
    case Element::trackTitle: return theme.trackTextSize >= 1;
    case Element::artist: return theme.artistTextSize >= 1;
    default: return true;
    }
}

QRectF elementRect(const ThemeData& theme, Element element, double scale, double textHeight)
{
    const Box box = themeBox(theme, element);
    if (element == Element::trackTitle || element == Element::artist)
        return centredRect(box.x * scale, box.y * scale, box.width, textHeight);
    return centredRect(box.x * scale, box.y * scale, box.width * scale, box.height * scale);
}

ScrubBounds scrubBounds(const ThemeData& theme, double scale)
{
    return {theme.scrubberMinPosX * scale, theme.scrubberMaxPosX * scale, theme.scrubberMinPosY * scale};
}

QRectF thumbRect(const ThemeData& theme, double scale, double centreX)
{
    return centredRect(centreX, theme.scrubberMinPosY * scale, theme.scrubberWidth * scale,
                       theme.scrubberHeight * scale);
}

double thumbCentreX(const ScrubBounds& bounds, double progress)
{
    return bounds.minX + bounds.range() * progress;
}

double clampedDragX(const ScrubBounds& bounds, double pointerX)
{
    return std::min(std::max(pointerX, bounds.minX), bounds.maxX);
}

std::optional<double> seekFraction(const ScrubBounds& bounds, double x)
{
    if (bounds.range() == 0)
        return std::nullopt;
    return (x - bounds.minX) / bounds.range();
}

std::optional<Element> controlAt(const ThemeData& theme, double scale, bool isPlaying,
                                 double thumbX, QPointF point)
{
    // Later elements lie on top, so they are asked first.
    static constexpr Element controls[] = {Element::scrubber, Element::trackMenu, Element::playlistMenu,
                                           Element::fastForward, Element::playPause, Element::rewind,
                                           Element::minimise, Element::close};
    for (Element element : controls) {
        if (!elementShown(theme, element, isPlaying))
            continue;
        const QRectF box = element == Element::scrubber ? thumbRect(theme, scale, thumbX)
                                                        : elementRect(theme, element, scale);
        if (box.contains(point))
            return element;
    }
    return std::nullopt;
}
