#include "app/commandmenu.h"

#include "playback/audioplayer.h"
#include "player/filterlist.h"
#include "player/menuentry.h"
#include "player/transport.h"

#include <QCoreApplication>
#include <QCursor>
#include <QMenu>
#include <QWidget>

CommandMenu::CommandMenu(Config& config, AudioPlayer& audioPlayer, Transport& transport, QObject* parent)
    : QObject(parent)
    , m_config(config)
    , m_audioPlayer(audioPlayer)
    , m_transport(transport)
    , m_menu(std::make_unique<QMenu>(tr("Player")))
{
    QMenu* menu = m_menu.get();
    m_playPause = menu->addAction(tr("Play"), &m_transport, &Transport::playPauseCommand);
    m_playPause->setShortcut(Qt::Key_Space);
    m_loop = menu->addAction(tr("Loop tracks"), &m_transport, &Transport::toggleLoopTracks);
    m_loop->setShortcut(Qt::CTRL | Qt::Key_L);
    m_loop->setCheckable(true);
    m_shuffle = menu->addAction(tr("Shuffle tracks"), &m_transport, &Transport::toggleShuffleTracks);
    m_shuffle->setShortcut(Qt::CTRL | Qt::Key_S);
    m_shuffle->setCheckable(true);
    menu->addSeparator();
    QAction* up = menu->addAction(tr("Volume Up"), &m_transport, &Transport::volumeUp);
    up->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    QAction* down = menu->addAction(tr("Volume Down"), &m_transport, &Transport::volumeDown);
    down->setShortcut(Qt::CTRL | Qt::Key_Minus);
    menu->addSeparator();
    m_playlists = menu->addMenu(tr("Playlists"));
    // Beyond a screenful, the same choices open as a filter list.
    m_playlistList = menu->addAction(tr("Playlists…"), this, &CommandMenu::openPlaylistList);
    m_tracks = menu->addMenu(tr("Tracks"));
    m_trackList = menu->addAction(tr("Tracks…"), this, &CommandMenu::openTrackList);
    m_playlistList->setVisible(false);
    m_trackList->setVisible(false);
    menu->addSeparator();
    QAction* settings = menu->addAction(tr("Settings…"), this, &CommandMenu::settingsRequested);
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    QAction* quit = menu->addAction(tr("Quit"), qApp, &QCoreApplication::quit);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    m_shortcutActions = {m_playPause, m_loop, m_shuffle, up, down, settings, quit};
    for (QAction* action : m_shortcutActions)
        action->setShortcutContext(Qt::ApplicationShortcut);

    connect(&m_config, &Config::changed, this, &CommandMenu::onConfigChanged);
    connect(&m_audioPlayer, &AudioPlayer::isPlayingChanged, this, &CommandMenu::updateStates);
    // Built when shown, not at start: the track list lives in a file the
    // editor may rewrite at any time, and may be long.
    connect(menu, &QMenu::aboutToShow, this, [this] {
        rebuildPlaylists();
        rebuildTracks();
    });
    updateStates();
}

CommandMenu::~CommandMenu() = default;

void CommandMenu::addShortcutsTo(QWidget* window)
{
    window->addActions(m_shortcutActions);
}

void CommandMenu::onConfigChanged(Config::Property property)
{
    using P = Config::Property;
    switch (property) {
    case P::loopTracks:
    case P::shuffleTracks:
        updateStates();
        break;
    case P::playlists:
    case P::currentPlaylistIndex:
    case P::currentTrackIndex:
        if (m_menu->isVisible())
            scheduleRebuild();
        break;
    default:
        break;
    }
}

void CommandMenu::scheduleRebuild()
{
    if (m_rebuildPending)
        return;
    m_rebuildPending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_rebuildPending = false;
            rebuildPlaylists();
            rebuildTracks();
        },
        Qt::QueuedConnection);
}

void CommandMenu::updateStates()
{
    m_playPause->setText(m_audioPlayer.isPlaying() ? tr("Pause") : tr("Play"));
    m_loop->setChecked(m_config.loopTracks());
    m_shuffle->setChecked(m_config.shuffleTracks());
}

void CommandMenu::rebuildPlaylists()
{
    m_playlists->clear();
    const QList<Playlist> catalogue = m_config.playlists();
    const bool fits = catalogue.size() <= menuEntriesOnScreen(m_menu->screen());
    m_playlists->menuAction()->setVisible(fits);
    m_playlistList->setVisible(!fits);
    for (qint64 i = 0; fits && i < catalogue.size(); ++i) {
        QAction* entry = addMenuEntry(m_playlists, catalogue.at(i).name, i == m_config.currentPlaylistIndex());
        connect(entry, &QAction::triggered, this, [this, i] { m_transport.selectPlaylistCommand(i); });
    }
}

void CommandMenu::rebuildTracks()
{
    // Present only when the current playlist's file could be read.
    const auto tracks = m_transport.currentTracks();
    const bool fits = tracks && tracks->size() <= menuEntriesOnScreen(m_menu->screen());
    m_tracks->clear();
    m_tracks->menuAction()->setVisible(tracks && fits);
    m_trackList->setVisible(tracks && !fits);
    for (qint64 i = 0; fits && i < tracks->size(); ++i) {
        QAction* entry = addMenuEntry(m_tracks, tracks->at(i).trackName, i == m_config.currentTrackIndex());
        connect(entry, &QAction::triggered, this, [this, i] { m_transport.selectTrackCommand(i); });
    }
}

// Both open where the menu was left, upwards when there is no room below.
void CommandMenu::openPlaylistList()
{
    const QPoint at = QCursor::pos();
    openEntryList(filterEntries(m_config.playlists()), m_config.currentPlaylistIndex(), at, at.y(),
                  [this](qsizetype i) { m_transport.selectPlaylistCommand(i); });
}

void CommandMenu::openTrackList()
{
    const QPoint at = QCursor::pos();
    openEntryList(filterEntries(m_transport.currentTracks().value_or(QList<Track>())), m_config.currentTrackIndex(),
                  at, at.y(), [this](qsizetype i) { m_transport.selectTrackCommand(i); });
}
