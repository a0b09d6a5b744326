#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Thin file-system wrappers. Each returns an empty string on success and a
// one-line, human-readable description of what failed otherwise.

QString makeFolder(const QString& path);                   // with missing parents
QString removeFile(const QString& path);

// Every file the program writes goes through here: the bytes are written
// beside the file, checked, synced and renamed over it, and its folder is
// synced, so that a full disk, a crash or a power cut leaves the old file or
// the new one, whole.
QString writeFileAtomic(const QString& path, const QByteArray& bytes);
// For tests: the nth write or sync from now on fails as on a full disk (0: none).
void failNthWrite(int n);

struct FileBytes {
    std::optional<QByteArray> bytes;
    QString error;
};
FileBytes readWholeFile(const QString& path);

// What tells a file's versions apart without reading it: any write, an atomic
// replacement or a copy that keeps the old times moves the change time.
// Null (size -1) when nothing is at path.
struct FileStamp {
    qint64 modified = 0; // nanoseconds since the epoch
    qint64 changed = 0;
    qint64 size = -1;
    bool operator==(const FileStamp&) const = default;
};
FileStamp fileStamp(const QString& path);

// True when anything (file, folder, symbolic link to something) is at path.
bool existsAt(const QString& path);

// Copies a broken file beside itself ("name.broken", "name.broken-2", ...)
// before it gets overwritten, so that nothing the user made is lost.
// Returns the copy's path, or an empty string when nothing was kept.
QString keepBrokenCopy(const QString& path);
