// ContentView's two pull-down menus: choose a playlist, choose a track.
#include "player/contentview.h"

#include "player/menuentry.h"
#include "player/transport.h"

#include <QMenu>

QAction* addMenuEntry(QMenu* menu, const QString& title, bool current)
{
    QAction* action = menu->addAction(title);
    if (current) {
        action->setCheckable(true);
        action->setChecked(true);
    }
    return action;
}

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
    const QRectF box = elementRect(m_config.geometry(), at, scale());
    menu->popup(mapToGlobal(box.bottomLeft().toPoint()));
}

void ContentView::openPlaylistMenu()
{
    QMenu* menu = freshMenu();
    const QList<Playlist> catalogue = m_config.playlists();
    for (qint64 i = 0; i < catalogue.size(); ++i) {
        QAction* entry = addMenuEntry(menu, catalogue.at(i).name, i == m_config.currentPlaylistIndex());
        connect(entry, &QAction::triggered, this, [this, i] { m_transport.selectPlaylistFromSkin(i); });
    }
    popUp(menu, Element::playlistMenu);
}

void ContentView::openTrackMenu()
{
    QMenu* menu = freshMenu();
    // Read afresh: the editor may have just changed the file.
    const auto tracks = m_transport.currentTracks();
    for (qint64 i = 0; tracks && i < tracks->size(); ++i) {
        QAction* entry = addMenuEntry(menu, tracks->at(i).trackName, i == m_config.currentTrackIndex());
        connect(entry, &QAction::triggered, this, [this, i] { m_transport.selectTrackFromSkin(i); });
    }
    popUp(menu, Element::trackMenu);
}
