#pragma once

#include "themes/defaultlayouts.h"

#include <QImage>
#include <QSizeF>
#include <QString>

// The size in points of one of the sixteen pictures of a family: its
// element's size in the family's default layout. Where the family has no such
// element (neo's minimise button, nano's menus and art) the picture still
// ships, at the mini family's size, so that a theme edited to show the
// element has something sensible to draw.
QSizeF pictureSize(ThemeFamily family, const QString& picture);

// One picture of one of the 28 theme names, at two pixels per point; a null
// image for an unknown theme or picture name.
QImage renderPicture(const QString& themeName, const QString& picture);
