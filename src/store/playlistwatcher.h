#pragma once

#include "store/fileio.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QTimer>
#include <QUuid>

// Notices playlist files changed on disk by another program (an editor, a
// sync tool). It watches the Playlists folder, which an atomic replacement
// changes, and each file, which a write in place changes, and compares the
// files' stamps with the last ones it knew.
class PlaylistWatcher : public QObject
{
    Q_OBJECT

public:
    explicit PlaylistWatcher(QObject* parent = nullptr);

    // The playlists to watch: their folder and each one's file.
    void watch(const QString& folder, const QHash<QUuid, QString>& files);
    // The program wrote this file itself and has said so already.
    void noteWritten(const QUuid& id);

signals:
    void fileChanged(const QUuid& id);

private:
    void rescan();
    void watchFiles();

    QFileSystemWatcher m_watcher;
    QTimer m_settle; // one rescan for a burst of notifications
    QHash<QUuid, QString> m_files;
    QHash<QUuid, FileStamp> m_stamps;
};
