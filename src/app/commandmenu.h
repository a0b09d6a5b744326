#pragma once

#include "store/config.h"

#include <QObject>

#include <memory>

class AudioPlayer;
class QAction;
class QMenu;
class QWidget;
class Transport;

// The "Player" command menu: play/pause, loop, shuffle, volume, the
// playlist and track choices, then Settings… and Quit. Titles and check
// marks follow the state they show. The same menu is the skin's context menu
// and the tray icon's menu; its shortcuts work while any of our windows has
// focus.
class CommandMenu : public QObject
{
    Q_OBJECT

public:
    CommandMenu(Config& config, AudioPlayer& audioPlayer, Transport& transport, QObject* parent = nullptr);
    ~CommandMenu() override;

    QMenu* menu() const { return m_menu.get(); }
    // The shortcuts need a widget to live in; any window of ours will do.
    void addShortcutsTo(QWidget* window);

signals:
    void settingsRequested();

private slots:
    void onConfigChanged(Config::Property property);
    void updateStates();
    void rebuildPlaylists();
    void rebuildTracks();
    void openPlaylistList();
    void openTrackList();

private:
    // Rebuilt from the event loop: a submenu may be changed from inside one
    // of its own entries.
    void scheduleRebuild();
    bool m_rebuildPending = false;

    Config& m_config;
    AudioPlayer& m_audioPlayer;
    Transport& m_transport;
    std::unique_ptr<QMenu> m_menu;
    QMenu* m_playlists = nullptr;
    QMenu* m_tracks = nullptr;
    QAction* m_playlistList = nullptr;
    QAction* m_trackList = nullptr;
    QAction* m_playPause = nullptr;
    QAction* m_loop = nullptr;
    QAction* m_shuffle = nullptr;
    QList<QAction*> m_shortcutActions;
};
