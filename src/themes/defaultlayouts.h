#pragma once

#include "themes/themedata.h"

#include <QStringList>

#include <optional>

enum class ThemeFamily { mini, neo, max, nano };

// The families and colours a theme name is made of ("mini-blueberry"), in
// the order the default-layout lookup tries them.
const QStringList& themeFamilyNames();
const QStringList& themeColourNames();

// The sixteen pictures every theme has, in installation order.
const QStringList& themePictureNames();

// The built-in layout of a family.
const ThemeData& familyLayout(ThemeFamily family);

// The family of one of the 28 known theme names (exact, case-sensitive).
std::optional<ThemeFamily> familyOfTheme(const QString& themeName);
