#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Thin file-system wrappers. Each returns an empty string on success and a
// one-line, human-readable description of what failed otherwise.

QString makeFolder(const QString& path);                   // with missing parents
QString writeFilePlain(const QString& path, const QByteArray& bytes);
QString writeFileAtomic(const QString& path, const QByteArray& bytes);
QString removeFile(const QString& path);

struct FileBytes {
    std::optional<QByteArray> bytes;
    QString error;
};
FileBytes readWholeFile(const QString& path);

// True when anything (file, folder, symbolic link to something) is at path.
bool existsAt(const QString& path);

// Copies a broken file beside itself ("name.broken", "name.broken-2", ...)
// before it gets overwritten, so that nothing the user made is lost.
// Returns the copy's path, or an empty string when nothing was kept.
QString keepBrokenCopy(const QString& path);
