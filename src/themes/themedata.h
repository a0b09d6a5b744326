#pragma once

#include "store/configproperties.h"
#include "store/records.h"

#include <QByteArray>

// A theme's layout as its theme.json holds it: 50 fields, each point split
// into its X and Y. Generated from the same table as Config's geometry, so the
// two can never drift apart.
struct ThemeData {
#define PLINK_THEME_FIELD(Type, name, Setter, value) Type name = value;
#define PLINK_THEME_POINT(name, Setter, px, py) double name##X = px; double name##Y = py;
    PLINK_GEOMETRY_PROPERTIES(PLINK_THEME_FIELD, PLINK_THEME_POINT)
#undef PLINK_THEME_FIELD
#undef PLINK_THEME_POINT

    bool operator==(const ThemeData&) const = default;
};

QByteArray toJson(const ThemeData& theme);
// Strict: all 50 keys present with the right type; unknown keys ignored.
Decoded<ThemeData> themeDataFromJson(const QByteArray& bytes);
