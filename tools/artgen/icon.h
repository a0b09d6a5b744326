#pragma once

#include <QImage>

// The application icon, 256 × 256: a small player face in the default
// theme's colours.
QImage renderIcon();
