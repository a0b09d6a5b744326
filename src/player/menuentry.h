#pragma once

#include "store/records.h"

#include <QList>
#include <QString>

#include <functional>

class QAction;
class QMenu;
class QPoint;
class QScreen;
struct FilterEntry;

// An entry of a playlist or track menu. Only the current entry is checkable,
// so only it shows a mark; the others keep their place in the check column.
QAction* addMenuEntry(QMenu* menu, const QString& title, bool current);

// A filter list's entries: tracks by title and artist, playlists by name.
QList<FilterEntry> filterEntries(const QList<Track>& tracks);
QList<FilterEntry> filterEntries(const QList<Playlist>& playlists);

// How many entries a menu holds in one column on screen; a longer menu would
// break into columns as wide as the screen, so longer lists open a filter
// list instead.
qsizetype menuEntriesOnScreen(const QScreen* screen);

// Opens entries as a filter list at a global point (upwards from above when
// there is no room below), as wide as a menu of its first screenful would be;
// choose gets the index of the entry chosen, and footer, when given, is its
// last row (footerChosen is called for it).
void openEntryList(const QList<FilterEntry>& entries, qsizetype current, const QPoint& at, int above,
                   const std::function<void(qsizetype)>& choose, const QString& footer = {},
                   const std::function<void()>& footerChosen = {});
