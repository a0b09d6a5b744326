#pragma once

#include <QString>

class QAction;
class QMenu;

// An entry of a playlist or track menu. Only the current entry is checkable,
// so only it shows a mark; the others keep their place in the check column.
QAction* addMenuEntry(QMenu* menu, const QString& title, bool current);
