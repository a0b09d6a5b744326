#pragma once

#include <QIcon>
#include <QStyle>

class QWidget;

// An icon of the desktop's icon theme (a freedesktop name), or the widget
// style's own picture where the theme has none, so that something always shows.
QIcon themedIcon(const QString& name, QStyle::StandardPixmap fallback, const QWidget* widget);
