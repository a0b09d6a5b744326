#include "pictures.h"

#include "backgrounds.h"
#include "elements.h"
#include "palette.h"

#include <QHash>

namespace {

QSizeF elementSize(const ThemeData& layout, const QString& picture)
{
    const QString base = picture.endsWith(QLatin1String("-on")) ? picture.chopped(3) : picture;
    if (base == QLatin1String("close"))
        return {layout.closeWidth, layout.closeHeight};
    if (base == QLatin1String("min"))
        return {layout.minWidth, layout.minHeight};
    if (base == QLatin1String("rr"))
        return {layout.rrWidth, layout.rrHeight};
    if (base == QLatin1String("play") || base == QLatin1String("pause"))
        return {layout.playWidth, layout.playHeight};
    if (base == QLatin1String("ff"))
        return {layout.ffWidth, layout.ffHeight};
    if (base == QLatin1String("playlist-menu"))
        return {layout.playlistMenuWidth, layout.playlistMenuHeight};
    if (base == QLatin1String("track-menu"))
        return {layout.trackMenuWidth, layout.trackMenuHeight};
    if (base == QLatin1String("track-scrubber"))
        return {layout.scrubberWidth, layout.scrubberHeight};
    if (base == QLatin1String("track-album"))
        return {layout.trackArtWidth, layout.trackArtHeight};
    if (base == QLatin1String("player"))
        return {layout.playerWidth, layout.playerHeight};
    if (base == QLatin1String("player-min"))
        return {layout.playerMinWidth, layout.playerMinHeight};
    return {};
}

} // namespace

QSizeF pictureSize(ThemeFamily family, const QString& picture)
{
    const QSizeF size = elementSize(familyLayout(family), picture);
    if (size.width() > 0 && size.height() > 0)
        return size;
    return elementSize(familyLayout(ThemeFamily::mini), picture);
}

QImage renderPicture(const QString& themeName, const QString& picture)
{
    const std::optional<ThemeFamily> family = familyOfTheme(themeName);
    if (!family || !themePictureNames().contains(picture))
        return {};
    const Palette& colours = palette(themeName.section(QLatin1Char('-'), 1));
    const QSizeF size = pictureSize(*family, picture);
    const bool lit = picture.endsWith(QLatin1String("-on"));
    const QString base = lit ? picture.chopped(3) : picture;

    if (base == QLatin1String("player"))
        return renderPlayer(*family, colours, false);
    if (base == QLatin1String("player-min"))
        return renderPlayer(*family, colours, true);
    if (base == QLatin1String("track-scrubber"))
        return renderKnob(*family, size, colours);
    if (base == QLatin1String("track-album"))
        return renderAlbum(size, colours);

    static const QHash<QString, Glyph> glyphs{
        {QStringLiteral("close"), Glyph::close},
        {QStringLiteral("min"), Glyph::minimise},
        {QStringLiteral("rr"), Glyph::rewind},
        {QStringLiteral("play"), Glyph::play},
        {QStringLiteral("pause"), Glyph::pause},
        {QStringLiteral("ff"), Glyph::fastForward},
        {QStringLiteral("playlist-menu"), Glyph::playlistMenu},
        {QStringLiteral("track-menu"), Glyph::trackMenu},
    };
    return renderKey(size, glyphs.value(base), lit, colours);
}
