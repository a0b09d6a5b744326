#include "player/menuentry.h"

#include "player/filterlist.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QTimer>

#include <malloc.h>

QAction* addMenuEntry(QMenu* menu, const QString& title, bool current)
{
    QAction* action = menu->addAction(title);
    if (current) {
        action->setCheckable(true);
        action->setChecked(true);
    }
    return action;
}

QList<FilterEntry> filterEntries(const QList<Track>& tracks)
{
    QList<FilterEntry> entries;
    entries.reserve(tracks.size());
    for (const Track& track : tracks)
        entries.append({track.trackName, track.artist});
    return entries;
}

QList<FilterEntry> filterEntries(const QList<Playlist>& playlists)
{
    QList<FilterEntry> entries;
    entries.reserve(playlists.size());
    for (const Playlist& playlist : playlists)
        entries.append({playlist.name, {}});
    return entries;
}

namespace {

int menuRowHeight()
{
    static int height = 0;
    if (height == 0) {
        QMenu probe;
        QAction* entry = probe.addAction(QStringLiteral("Xy"));
        probe.sizeHint(); // lays the entries out
        height = std::max(1, probe.actionGeometry(entry).height());
    }
    return height;
}

} // namespace

qsizetype menuEntriesOnScreen(const QScreen* screen)
{
    const int height = screen ? screen->availableGeometry().height() : 600;
    // Room for the menu's frame and its last entry ("Edit playlists").
    return std::max(1, height / menuRowHeight() - 2);
}

void openEntryList(const QList<FilterEntry>& entries, qsizetype current, const QPoint& at, int above,
                   const std::function<void(qsizetype)>& choose, const QString& footer,
                   const std::function<void()>& footerChosen)
{
    const qsizetype wholeRows = menuEntriesOnScreen(QGuiApplication::screenAt(at));
    auto* list = new FilterList(entries, current, wholeRows, footer);
    QObject::connect(list, &FilterList::chosen, list, choose);
    if (footerChosen)
        QObject::connect(list, &FilterList::footerChosen, list, footerChosen);
    // A long list leaves thousands of small freed blocks behind: give the
    // memory back once it is gone (its children go after this signal).
    if (entries.size() > 1000)
        QObject::connect(list, &QObject::destroyed, qApp, [] { QTimer::singleShot(0, [] { malloc_trim(0); }); });
    list->popup(at, above);
}
