#include "store/playlistwatcher.h"

PlaylistWatcher::PlaylistWatcher(QObject* parent)
    : QObject(parent)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(50);
    connect(&m_settle, &QTimer::timeout, this, &PlaylistWatcher::rescan);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_settle, qOverload<>(&QTimer::start));
}

void PlaylistWatcher::watch(const QString& folder, const QHash<QUuid, QString>& files)
{
    // The first time every stamp is fresh; later ones may have gone stale.
    const bool first = m_files.isEmpty();
    QHash<QUuid, FileStamp> stamps;
    for (auto it = files.cbegin(); it != files.cend(); ++it)
        stamps.insert(it.key(), m_files.value(it.key()) == it.value() ? m_stamps.value(it.key()) : fileStamp(it.value()));
    m_files = files;
    m_stamps = stamps;
    if (!m_watcher.directories().contains(folder)) {
        if (!m_watcher.directories().isEmpty())
            m_watcher.removePaths(m_watcher.directories());
        m_watcher.addPath(folder);
    }
    if (first)
        watchFiles();
    else
        rescan();
}

void PlaylistWatcher::watchFiles()
{
    // A replaced file is a new file to the watcher: watch what is there now.
    if (!m_watcher.files().isEmpty())
        m_watcher.removePaths(m_watcher.files());
    QStringList present;
    for (auto it = m_files.cbegin(); it != m_files.cend(); ++it) {
        if (m_stamps.value(it.key()).size >= 0)
            present.append(it.value());
    }
    if (!present.isEmpty())
        m_watcher.addPaths(present);
}

void PlaylistWatcher::noteWritten(const QUuid& id)
{
    if (m_files.contains(id))
        m_stamps.insert(id, fileStamp(m_files.value(id)));
}

void PlaylistWatcher::rescan()
{
    QList<QUuid> changed;
    for (auto it = m_files.cbegin(); it != m_files.cend(); ++it) {
        const FileStamp stamp = fileStamp(it.value());
        if (stamp == m_stamps.value(it.key()))
            continue;
        m_stamps.insert(it.key(), stamp);
        changed.append(it.key());
    }
    watchFiles();
    for (const QUuid& id : changed)
        emit fileChanged(id);
}
