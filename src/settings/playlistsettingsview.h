#pragma once

#include "playback/tagreader.h"
#include "settings/trackdropdelegate.h"
#include "settings/tracktablemodel.h"
#include "store/config.h"

#include <QList>
#include <QTimer>
#include <QUrl>
#include <QUuid>
#include <QWidget>

#include <optional>

class QComboBox;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QToolButton;
class TrackTable;

// The "Playlists" tab: pick a playlist, create, rename, import, export and
// delete one, add, remove and reorder its tracks. The catalogue lives in Config; the tracks
// shown are the selected playlist's file as read when it was selected, and
// every change to them is written back at once.
class PlaylistSettingsView : public QWidget
{
    Q_OBJECT

public:
    explicit PlaylistSettingsView(Config& config, QWidget* parent = nullptr);
    ~PlaylistSettingsView() override;

    std::optional<QUuid> selectedPlaylistID() const { return m_selectedPlaylistID; }
    // What choosing an entry of the picker does; nullopt clears the choice.
    void selectPlaylist(const std::optional<QUuid>& id);
    const QList<Track>& tracks() const { return m_model.tracks(); }
    bool deletePlaylistWarning() const { return m_deletePlaylistWarning; }

    // How long "Are you sure?" waits for its second press.
    static constexpr int deleteWarningMilliseconds = 5000;

    // How long an addition runs before its progress is shown.
    static constexpr int progressDelayMilliseconds = 400;

public slots:
    // Adds files, folders and playlist files (from the file dialogs or a
    // drop) at the end of the selected playlist, once the folders have been
    // walked and the tags read off the user-interface thread.
    void addFiles(const QList<QUrl>& urls);

signals:
    // An addition has been applied and written.
    void tracksAdded(const QUuid& playlistID, int count);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void showCatalogue();
    void showSavedTracks();
    std::optional<QUuid> fallbackPlaylist() const;
    std::optional<Playlist> selectedPlaylist() const;
    void updateControls();
    void onConfigChanged(Config::Property property);

    void createPlaylist();
    void commitName();
    void removeSelectedTracks();
    void chooseFiles();
    void chooseFolder();
    void importPlaylist();
    void exportSelectedPlaylist();
    QString startFolder();
    void applyReadyAdditions();
    void applyAddedTracks(const QUuid& playlistID, const CollectedTracks& found);
    void showProgress(int read, int total);
    void commitOrder();
    void onDeletePressed();
    void setDeleteWarning(bool on);

    Config& m_config;
    std::optional<QUuid> m_selectedPlaylistID;
    std::optional<Track> m_draggedTrack;
    bool m_deletePlaylistWarning = false;
    TrackTableModel m_model;
    TrackDropDelegate m_dropDelegate;
    QTimer m_deleteWarningTimer;
    QTimer m_progressDelay;
    QString m_lastFolder;
    // Additions in the order they were asked for. Their tags are read in the
    // background, and one waits for those before it, so that two quick drops
    // land in the order they were made.
    struct Addition {
        quint64 ticket;
        QUuid playlistID;
        std::optional<CollectedTracks> found;
    };
    QList<Addition> m_additions;
    quint64 m_nextTicket = 0;

    QComboBox* m_picker = nullptr;
    QToolButton* m_newButton = nullptr;
    QLineEdit* m_nameField = nullptr;
    TrackTable* m_table = nullptr;
    QToolButton* m_trashButton = nullptr;
    QPushButton* m_addButton = nullptr;
    QPushButton* m_addFolderButton = nullptr;
    QPushButton* m_importButton = nullptr;
    QPushButton* m_exportButton = nullptr;
    QProgressBar* m_progress = nullptr;
    QPushButton* m_deleteButton = nullptr;
};
