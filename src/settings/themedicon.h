#pragma once

#include <QIcon>

class QWidget;

// An icon of the desktop's icon theme (a freedesktop name), or our own
// drawing of it where the theme has none, so that a playlist looks like a
// playlist and a trash can like a trash can on every desktop.
QIcon themedIcon(const QString& name, const QWidget* widget);
