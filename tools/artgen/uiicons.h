#pragma once

#include <QImage>
#include <QList>
#include <QString>

// The settings window's few icons, for desktops whose icon theme lacks them
// (or that have none): a freedesktop name each, drawn in our own ink.
QStringList uiIconNames();
QList<int> uiIconSizes(); // pixels
QImage renderUiIcon(const QString& name, int pixels);

// The application icon at the sizes panels and menus ask for.
QList<int> appIconSizes();
QImage renderAppIcon(int pixels);
