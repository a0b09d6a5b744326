// ContentView's two pull-down menus: choose a playlist, choose a track.
#include "player/contentview.h"

#include "player/filterlist.h"
#include "player/menuentry.h"
#include "player/transport.h"

#include <QMenu>

QMenu* ContentView::freshMenu()
{
    if (m_openMenu)
        m_openMenu->deleteLater();
    m_openMenu = new QMenu(this);
    return m_openMenu;
}

void ContentView::popUp(QMenu* menu, Element at)
{
    QAction* edit = menu->addAction(tr("Edit playlists"));
    QFont italic = edit->font();
    italic.setItalic(true);
    edit->setFont(italic);
    connect(edit, &QAction::triggered, this, &ContentView::settingsRequested);
    menu->popup(menuPoint(at));
}

QPoint ContentView::menuPoint(Element at) const
{
    return mapToGlobal(elementRect(m_config.geometry(), at, scale()).bottomLeft().toPoint());
}

bool ContentView::fitsAMenu(qsizetype entries) const
{
    return entries <= menuEntriesOnScreen(screen());
}

void ContentView::openList(const QList<FilterEntry>& entries, qsizetype current, Element at,
                           const std::function<void(qsizetype)>& choose)
{
    if (m_openMenu)
        m_openMenu->deleteLater();
    const int above = mapToGlobal(elementRect(m_config.geometry(), at, scale()).topLeft().toPoint()).y();
    openEntryList(entries, current, menuPoint(at), above, choose, tr("Edit playlists"), [this] { emit settingsRequested(); });
}

void ContentView::openPlaylistMenu()
{
    const QList<Playlist> catalogue = m_config.playlists();
    if (!fitsAMenu(catalogue.size())) {
        openList(filterEntries(catalogue), m_config.currentPlaylistIndex(), Element::playlistMenu,
                 [this](qsizetype i) { m_transport.selectPlaylistFromSkin(i); });
        return;
    }
    QMenu* menu = freshMenu();
    for (qint64 i = 0; i < catalogue.size(); ++i) {
        QAction* entry = addMenuEntry(menu, catalogue.at(i).name, i == m_config.currentPlaylistIndex());
        connect(entry, &QAction::triggered, this, [this, i] { m_transport.selectPlaylistFromSkin(i); });
    }
    popUp(menu, Element::playlistMenu);
}

void ContentView::openTrackMenu()
{
    const auto tracks = m_transport.currentTracks();
    if (tracks && !fitsAMenu(tracks->size())) {
        openList(filterEntries(*tracks), m_config.currentTrackIndex(), Element::trackMenu,
                 [this](qsizetype i) { m_transport.selectTrackFromSkin(i); });
        return;
    }
    QMenu* menu = freshMenu();
    for (qint64 i = 0; tracks && i < tracks->size(); ++i) {
        QAction* entry = addMenuEntry(menu, tracks->at(i).trackName, i == m_config.currentTrackIndex());
        connect(entry, &QAction::triggered, this, [this, i] { m_transport.selectTrackFromSkin(i); });
    }
    popUp(menu, Element::trackMenu);
}
