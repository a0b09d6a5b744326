#include "themes/defaultlayouts.h"

const QStringList& themeFamilyNames()
{
    static const QStringList names{QStringLiteral("mini"), QStringLiteral("neo"),
                                   QStringLiteral("max"), QStringLiteral("nano")};
    return names;
}

const QStringList& themeColourNames()
{
    static const QStringList names{
        QStringLiteral("graphite"), QStringLiteral("blueberry"), QStringLiteral("lime"),
        QStringLiteral("yuzu"), QStringLiteral("tangerine"), QStringLiteral("strawberry"),
        QStringLiteral("blackberry")};
    return names;
}

const QStringList& themePictureNames()
{
    static const QStringList names{
        QStringLiteral("close"), QStringLiteral("ff"), QStringLiteral("ff-on"),
        QStringLiteral("min"), QStringLiteral("pause"), QStringLiteral("pause-on"),
        QStringLiteral("play"), QStringLiteral("play-on"), QStringLiteral("player"),
        QStringLiteral("player-min"), QStringLiteral("playlist-menu"), QStringLiteral("rr"),
        QStringLiteral("rr-on"), QStringLiteral("track-album"), QStringLiteral("track-menu"),
        QStringLiteral("track-scrubber")};
    return names;
}

const ThemeData& familyLayout(ThemeFamily family)
{
    // Field order: player w h, min w h, text sizes, textReversed, then each
    // element's centre x y and size w h (scrubber: min x y, max x y, w h;
    // texts: name x y, artist x y, width; art x y w h).
    static const ThemeData mini{
        269, 96, 20, 96, 10, 10, true,
        9.5, 11, 17, 14,      // close
        192, 34, 34, 52,      // play
        226, 34, 34, 52,      // ff
        9.5, 25, 17, 14,      // min
        158, 34, 34, 52,      // rr
        9.5, 87, 17, 14,      // track menu
        9.5, 71, 17, 14,      // playlist menu
        117.5, 65.5, 266.5, 65.5, 14, 14,
        192, 75, 192, 89, 152,
        67, 48, 92, 92};
    static const ThemeData neo{
        130, 130, 130, 130, 0, 0, true,
        26, 27.5, 17, 14,
        65, 65, 34, 52,
        99, 65, 34, 52,
        0, 0, 0, 0,
        31, 65, 34, 52,
        73.5, 111.5, 17, 14,
        56.5, 111.5, 17, 14,
        17, 93, 113, 93, 14, 14,
        0, 0, 0, 0, 0,
        0, 0, 0, 0};
    static const ThemeData max{
        156, 260, 156, 19, 9, 9, true,
        8.5, 10, 17, 14,
        78, 230, 34, 52,
        112, 230, 34, 52,
        26.5, 10, 17, 14,
        44, 230, 34, 52,
        144.5, 11, 17, 14,
        127.5, 11, 17, 14,
        2, 175, 154, 175, 14, 14,
        78, 186, 78, 196, 150,
        78, 97, 153, 153};
    // nano's rewind sits one point lower than play and ff; that is intended.
    static const ThemeData nano{
        138, 64, 138, 64, 0, 0, false,
        9.5, 11, 17, 14,
        79, 32, 34, 52,
        113, 32, 34, 52,
        0, 0, 0, 0,
        42, 33, 34, 52,
        0, 0, 0, 0,
        0, 0, 0, 0,
        21, 62, 132, 62, 14, 14,
        0, 0, 0, 0, 0,
        0, 0, 0, 0};
    switch (family) {
    case ThemeFamily::mini: return mini;
    case ThemeFamily::neo: return neo;
    case ThemeFamily::max: return max;
    case ThemeFamily::nano: return nano;
    }
    return mini;
}

std::optional<ThemeFamily> familyOfTheme(const QString& themeName)
{
    static const ThemeFamily families[] = {ThemeFamily::mini, ThemeFamily::neo, ThemeFamily::max,
                                           ThemeFamily::nano};
    for (qsizetype f = 0; f < themeFamilyNames().size(); ++f) {
        for (const QString& colour : themeColourNames()) {
            if (themeName == themeFamilyNames().at(f) + QLatin1Char('-') + colour)
                return families[f];
        }
    }
    return std::nullopt;
}
