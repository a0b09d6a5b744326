#include "settings/playlistsettingsview.h"

#include "settings/themedicon.h"
#include "settings/tracktable.h"
#include "store/console.h"
#include "store/trackfiles.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

PlaylistSettingsView::PlaylistSettingsView(Config& config, QWidget* parent)
    : QWidget(parent)
    , m_config(config)
    , m_dropDelegate(m_model.trackList(), config, m_draggedTrack, [this] { commitOrder(); })
{
    m_picker = new QComboBox(this);
    m_picker->setObjectName(QStringLiteral("playlistPicker"));
    m_picker->view()->setAccessibleName(tr("Playlists"));
    // A picker reads out its entry as its name; this label says what it picks.
    auto* pickerLabel = new QLabel(tr("Playlist"), this);
    pickerLabel->setBuddy(m_picker);
    m_picker->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_newButton = new QToolButton(this);
    m_newButton->setObjectName(QStringLiteral("newPlaylistButton"));
    m_newButton->setIcon(themedIcon(QStringLiteral("document-new"), this));
    m_newButton->setToolTip(tr("New playlist"));
    m_newButton->setAccessibleName(m_newButton->toolTip());

    m_nameField = new QLineEdit(this);
    m_nameField->setObjectName(QStringLiteral("playlistNameField"));
    m_nameField->setPlaceholderText(tr("Playlist name"));
    auto* nameLabel = new QLabel(tr("Name"), this);
    nameLabel->setBuddy(m_nameField);

    m_table = new TrackTable(m_model, m_dropDelegate, m_draggedTrack, this);
    m_table->setObjectName(QStringLiteral("trackTable"));
    m_table->setAccessibleName(tr("Tracks"));

    m_trashButton = new QToolButton(this);
    m_trashButton->setObjectName(QStringLiteral("removeTracksButton"));
    m_trashButton->setIcon(themedIcon(QStringLiteral("user-trash"), this));
    m_trashButton->setToolTip(tr("Remove the selected tracks"));
    m_trashButton->setAccessibleName(m_trashButton->toolTip());
    m_addButton = new QPushButton(tr("Add tracks..."), this);
    m_addButton->setObjectName(QStringLiteral("addTracksButton"));
    m_addFolderButton = new QPushButton(tr("Add folder..."), this);
    m_addFolderButton->setObjectName(QStringLiteral("addFolderButton"));
    m_importButton = new QPushButton(tr("Import..."), this);
    m_importButton->setObjectName(QStringLiteral("importButton"));
    m_importButton->setToolTip(tr("Make a new playlist from an M3U, M3U8 or PLS file"));
    m_exportButton = new QPushButton(tr("Export..."), this);
    m_exportButton->setObjectName(QStringLiteral("exportButton"));
    m_exportButton->setToolTip(tr("Save this playlist as an M3U8 file for other players"));
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("additionProgress"));
    m_progress->setFormat(tr("Adding %v of %m"));
    m_progress->setAccessibleName(tr("Adding tracks"));
    m_progress->setRange(0, 0);
    m_progress->hide();
    m_deleteButton = new QPushButton(this);
    m_deleteButton->setObjectName(QStringLiteral("deletePlaylistButton"));

    auto* pickerRow = new QHBoxLayout;
    pickerRow->addWidget(pickerLabel);
    pickerRow->addWidget(m_picker);
    pickerRow->addWidget(m_newButton);
    pickerRow->addWidget(m_importButton);
    pickerRow->addWidget(m_exportButton);
    auto* nameRow = new QHBoxLayout;
    nameRow->addWidget(nameLabel);
    nameRow->addWidget(m_nameField);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addWidget(m_trashButton);
    buttonRow->addWidget(m_addButton);
    buttonRow->addWidget(m_addFolderButton);
    buttonRow->addWidget(m_progress, 1);
    buttonRow->addStretch();
    buttonRow->addWidget(m_deleteButton);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(pickerRow);
    layout->addLayout(nameRow);
    layout->addWidget(m_table, 1);
    layout->addLayout(buttonRow);

    // Tab goes through the rows as they are laid out, the tool buttons too,
    // which some desktops otherwise leave out of it.
    m_newButton->setFocusPolicy(Qt::StrongFocus);
    m_trashButton->setFocusPolicy(Qt::StrongFocus);
    QWidget* const tabOrder[] = {m_picker,    m_newButton,   m_importButton, m_exportButton,    m_nameField,
                                 m_table,     m_trashButton, m_addButton,    m_addFolderButton, m_deleteButton};
    for (size_t i = 1; i < std::size(tabOrder); ++i)
        setTabOrder(tabOrder[i - 1], tabOrder[i]);

    m_deleteWarningTimer.setSingleShot(true);
    m_deleteWarningTimer.setInterval(deleteWarningMilliseconds);
    connect(&m_deleteWarningTimer, &QTimer::timeout, this, [this] { setDeleteWarning(false); });
    // A quick addition shows nothing; a long one (a whole library) its progress.
    m_progressDelay.setSingleShot(true);
    m_progressDelay.setInterval(progressDelayMilliseconds);
    connect(&m_progressDelay, &QTimer::timeout, m_progress, &QWidget::show);

    connect(m_picker, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            selectPlaylist(m_picker->itemData(index).toUuid());
    });
    connect(m_newButton, &QToolButton::clicked, this, &PlaylistSettingsView::createPlaylist);
    // Return commits, and so does leaving the field: a typed name is not lost
    // by clicking elsewhere.
    connect(m_nameField, &QLineEdit::editingFinished, this, &PlaylistSettingsView::commitName);
    connect(m_trashButton, &QToolButton::clicked, this, &PlaylistSettingsView::removeSelectedTracks);
    connect(m_addButton, &QPushButton::clicked, this, &PlaylistSettingsView::chooseFiles);
    connect(m_addFolderButton, &QPushButton::clicked, this, &PlaylistSettingsView::chooseFolder);
    connect(m_importButton, &QPushButton::clicked, this, &PlaylistSettingsView::importPlaylist);
    connect(m_exportButton, &QPushButton::clicked, this, &PlaylistSettingsView::exportSelectedPlaylist);
    connect(m_deleteButton, &QPushButton::clicked, this, &PlaylistSettingsView::onDeletePressed);
    connect(m_table, &TrackTable::filesDropped, this, &PlaylistSettingsView::addFiles);
    connect(m_table, &TrackTable::removeRequested, this, &PlaylistSettingsView::removeSelectedTracks);
    // Rows moved by a drag that was dropped elsewhere go back to the order on disk.
    connect(m_table, &TrackTable::dragAbandoned, this, &PlaylistSettingsView::showSavedTracks);
    // The selected playlist's file rewritten elsewhere (another program, a sync tool).
    connect(&m_config, &Config::playlistTracksWritten, this, [this](const QUuid& id) {
        if (id == m_selectedPlaylistID)
            showSavedTracks();
    });
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PlaylistSettingsView::updateControls);
    connect(&m_model, &QAbstractItemModel::modelReset, this, &PlaylistSettingsView::updateControls);
    connect(&m_config, &Config::changed, this, &PlaylistSettingsView::onConfigChanged);

    selectPlaylist(fallbackPlaylist());
    setDeleteWarning(false);
    updateControls();
}

PlaylistSettingsView::~PlaylistSettingsView() = default;

std::optional<QUuid> PlaylistSettingsView::fallbackPlaylist() const
{
    // The player's current playlist, else the first one.
    const QList<Playlist> catalogue = m_config.playlists();
    if (catalogue.isEmpty())
        return std::nullopt;
    const qint64 current = m_config.currentPlaylistIndex();
    return catalogue.at(current >= 0 && current < catalogue.size() ? current : 0).id;
}

std::optional<Playlist> PlaylistSettingsView::selectedPlaylist() const
{
    if (!m_selectedPlaylistID)
        return std::nullopt;
    for (const Playlist& playlist : m_config.playlists()) {
        if (playlist.id == *m_selectedPlaylistID)
            return playlist;
    }
    return std::nullopt;
}

void PlaylistSettingsView::selectPlaylist(const std::optional<QUuid>& id)
{
    if (id == m_selectedPlaylistID)
        return;
    m_selectedPlaylistID = id;
    setDeleteWarning(false);
    showCatalogue();
    m_nameField->setText(selectedPlaylist() ? selectedPlaylist()->name : QString());
    showSavedTracks();
}

void PlaylistSettingsView::showSavedTracks()
{
    const std::optional<QUuid> id = m_selectedPlaylistID;
    // An unreadable file has already been reported by the store; nothing to show.
    const std::optional<QList<Track>> tracks = id ? m_config.readPlaylistTracks(*id) : std::nullopt;
    if (!tracks || *tracks != m_model.tracks())
        m_model.setTracks(tracks.value_or(QList<Track>()));
    updateControls();
}

void PlaylistSettingsView::showCatalogue()
{
    const QList<Playlist> catalogue = m_config.playlists();
    const QSignalBlocker blocker(m_picker);
    m_picker->clear();
    int selectedRow = -1;
    for (const Playlist& playlist : catalogue) {
        if (m_selectedPlaylistID && playlist.id == *m_selectedPlaylistID)
            selectedRow = m_picker->count();
        m_picker->addItem(playlist.name, playlist.id);
    }
    m_picker->setCurrentIndex(selectedRow);
}

void PlaylistSettingsView::updateControls()
{
    const bool hasPlaylist = m_selectedPlaylistID.has_value();
    m_nameField->setEnabled(hasPlaylist);
    m_addButton->setEnabled(hasPlaylist);
    m_addFolderButton->setEnabled(hasPlaylist);
    m_exportButton->setEnabled(hasPlaylist);
    m_deleteButton->setEnabled(hasPlaylist);
    m_trashButton->setEnabled(hasPlaylist && m_table->selectionModel()->hasSelection());
    m_table->setPlaceholderText(hasPlaylist ? tr("Drop files or folders here, or use the buttons below.") : QString());
}

void PlaylistSettingsView::onConfigChanged(Config::Property property)
{
    if (property == Config::Property::currentPlaylistIndex) {
        // The player moved to another playlist: show that one.
        const qint64 current = m_config.currentPlaylistIndex();
        const QList<Playlist> catalogue = m_config.playlists();
        if (current >= 0 && current < catalogue.size())
            selectPlaylist(catalogue.at(current).id);
        return;
    }
    if (property != Config::Property::playlists)
        return;
    const std::optional<Playlist> selected = selectedPlaylist();
    if (!selected) {
        // The playlist being edited is gone.
        selectPlaylist(fallbackPlaylist());
        return;
    }
    showCatalogue();
    // A name changed elsewhere is shown unless the user is typing one.
    if (!(m_nameField->hasFocus() && m_nameField->isModified()))
        m_nameField->setText(selected->name);
}

void PlaylistSettingsView::createPlaylist()
{
    setDeleteWarning(false);
    m_config.createPlaylist();
    // The new playlist is what the user wants to edit next, starting with its name.
    const QList<Playlist> catalogue = m_config.playlists();
    if (!catalogue.isEmpty())
        selectPlaylist(catalogue.last().id);
    m_nameField->setFocus();
    m_nameField->selectAll();
}

void PlaylistSettingsView::commitName()
{
    if (!m_selectedPlaylistID)
        return;
    QList<Playlist> catalogue = m_config.playlists();
    for (Playlist& playlist : catalogue) {
        if (playlist.id != *m_selectedPlaylistID)
            continue;
        if (playlist.name == m_nameField->text())
            return;
        // A playlist needs a name to be found by in the menus: a blank one
        // brings the name it had back.
        if (m_nameField->text().trimmed().isEmpty()) {
            m_nameField->setText(playlist.name);
            return;
        }
        setDeleteWarning(false);
        playlist.name = m_nameField->text();
        m_config.setPlaylists(catalogue);
        m_config.saveSettings();
        return;
    }
}

void PlaylistSettingsView::removeSelectedTracks()
{
    setDeleteWarning(false);
    if (!m_selectedPlaylistID)
        return;
    QList<int> rows;
    for (const QModelIndex& index : m_table->selectionModel()->selectedRows())
        rows.append(index.row());
    if (rows.isEmpty())
        return;
    m_model.removeTracks(rows);
    m_config.writePlaylistTracks(*m_selectedPlaylistID, m_model.tracks());
}

QString PlaylistSettingsView::startFolder()
{
    if (m_lastFolder.isEmpty()) {
        m_lastFolder = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
        if (!QFileInfo(m_lastFolder).isDir())
            m_lastFolder = QDir::homePath();
    }
    return m_lastFolder;
}

void PlaylistSettingsView::chooseFiles()
{
    setDeleteWarning(false);
    if (!m_selectedPlaylistID)
        return;
    // Files only, several at once, any type: the audio player judges what it can play.
    const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Add track to playlist"), startFolder());
    if (paths.isEmpty())
        return;
    m_lastFolder = QFileInfo(paths.first()).absolutePath();
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    addFiles(urls);
}

void PlaylistSettingsView::chooseFolder()
{
    setDeleteWarning(false);
    if (!m_selectedPlaylistID)
        return;
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Add folder to playlist"), startFolder());
    if (folder.isEmpty())
        return;
    m_lastFolder = QFileInfo(folder).absolutePath();
    addFiles({QUrl::fromLocalFile(folder)});
}

void PlaylistSettingsView::importPlaylist()
{
    setDeleteWarning(false);
    const QString path = QFileDialog::getOpenFileName(this, tr("Import playlist"), startFolder(),
                                                      tr("Playlists (*.m3u *.m3u8 *.pls)"));
    if (path.isEmpty())
        return;
    m_lastFolder = QFileInfo(path).absolutePath();
    m_config.createPlaylist();
    QList<Playlist> catalogue = m_config.playlists();
    // Named after its file, as the user knows it.
    catalogue.last().name = QFileInfo(path).completeBaseName();
    m_config.setPlaylists(catalogue);
    m_config.saveSettings();
    selectPlaylist(catalogue.last().id);
    addFiles({QUrl::fromLocalFile(path)});
}

void PlaylistSettingsView::exportSelectedPlaylist()
{
    setDeleteWarning(false);
    const std::optional<Playlist> playlist = selectedPlaylist();
    if (!playlist)
        return;
    QString name = playlist->name;
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    QString path = QFileDialog::getSaveFileName(this, tr("Export playlist"), startFolder() + QLatin1Char('/') + name
                                                + QStringLiteral(".m3u8"), tr("M3U8 playlists (*.m3u8)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".m3u8");
    m_lastFolder = QFileInfo(path).absolutePath();
    exportPlaylist(m_model.tracks(), path);
}

void PlaylistSettingsView::addFiles(const QList<QUrl>& urls)
{
    setDeleteWarning(false);
    if (!m_selectedPlaylistID || urls.isEmpty())
        return;
    const quint64 ticket = m_nextTicket++;
    m_additions.append({ticket, *m_selectedPlaylistID, std::nullopt});
    if (!m_progressDelay.isActive() && m_progress->isHidden())
        m_progressDelay.start();
    collectTracksAsync(
        urls, this,
        [this, ticket](const CollectedTracks& found) {
            for (Addition& addition : m_additions) {
                if (addition.ticket == ticket)
                    addition.found = found;
            }
            applyReadyAdditions();
        },
        [this, ticket](int read, int total) {
            if (!m_additions.isEmpty() && m_additions.first().ticket == ticket)
                showProgress(read, total);
        });
}

void PlaylistSettingsView::showProgress(int read, int total)
{
    // No total yet: the folders are still walked.
    m_progress->setRange(0, total);
    m_progress->setValue(read);
}

void PlaylistSettingsView::applyReadyAdditions()
{
    while (!m_additions.isEmpty() && m_additions.first().found) {
        const Addition addition = m_additions.takeFirst();
        applyAddedTracks(addition.playlistID, *addition.found);
    }
    if (m_additions.isEmpty()) {
        m_progressDelay.stop();
        m_progress->setRange(0, 0);
    m_progress->hide();
        showProgress(0, 0);
    }
}

void PlaylistSettingsView::applyAddedTracks(const QUuid& playlistID, const CollectedTracks& found)
{
    PLINK_CHECK(found.tags.size() == found.files.size(), "the tag reader gave a result per file");
    if (found.files.isEmpty())
        return;
    QList<Track> added;
    added.reserve(found.files.size());
    for (qsizetype i = 0; i < found.files.size(); ++i) {
        const QString urlString = found.files.at(i).toString(QUrl::FullyEncoded);
        added.append(Track::make(urlString, found.tags.at(i).title, found.tags.at(i).artist));
    }
    if (m_selectedPlaylistID == playlistID) {
        m_model.appendTracks(added);
        m_config.writePlaylistTracks(playlistID, m_model.tracks());
    } else {
        // The user moved on while the tags were read: the files still go
        // where they were dropped, if that playlist is still there.
        const QList<Playlist> catalogue = m_config.playlists();
        const bool exists = std::any_of(catalogue.cbegin(), catalogue.cend(),
                                        [&](const Playlist& playlist) { return playlist.id == playlistID; });
        if (!exists)
            return;
        std::optional<QList<Track>> tracks = m_config.readPlaylistTracks(playlistID);
        if (!tracks)
            return;
        tracks->append(added);
        m_config.writePlaylistTracks(playlistID, *tracks);
    }
    emit tracksAdded(playlistID, int(added.size()));
}

void PlaylistSettingsView::commitOrder()
{
    setDeleteWarning(false);
    if (m_selectedPlaylistID)
        m_config.writePlaylistTracks(*m_selectedPlaylistID, m_model.tracks());
}

void PlaylistSettingsView::onDeletePressed()
{
    if (!m_selectedPlaylistID)
        return;
    if (!m_deletePlaylistWarning) {
        setDeleteWarning(true);
        return;
    }
    setDeleteWarning(false);
    m_config.deletePlaylist(*m_selectedPlaylistID);
    // The player's index may now point past the catalogue's end.
    m_config.bringCurrentPlaylistIntoRange();
}

void PlaylistSettingsView::setDeleteWarning(bool on)
{
    m_deletePlaylistWarning = on;
    m_deleteButton->setText(on ? tr("Are you sure?") : tr("Delete playlist..."));
    if (on)
        m_deleteWarningTimer.start();
    else
        m_deleteWarningTimer.stop();
}

void PlaylistSettingsView::keyPressEvent(QKeyEvent* event)
{
    // Escape first takes back what is under way, a pending "Are you sure?" or
    // a name typed but not committed; only an Escape with nothing to take
    // back goes on to close the window.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        if (m_deletePlaylistWarning) {
            setDeleteWarning(false);
            return;
        }
        const std::optional<Playlist> playlist = selectedPlaylist();
        if (playlist && m_nameField->hasFocus() && m_nameField->text() != playlist->name) {
            m_nameField->setText(playlist->name);
            return;
        }
    }
    QWidget::keyPressEvent(event);
}

void PlaylistSettingsView::hideEvent(QHideEvent* event)
{
    setDeleteWarning(false);
    QWidget::hideEvent(event);
}
