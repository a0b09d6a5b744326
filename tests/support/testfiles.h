#pragma once

#include "store/records.h"
#include "support/testenvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace TestFiles {

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes bytes, making missing folders; false when that cannot be done.
inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

inline QString settingsPath()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/plinkBox-settings.json");
}

// The settings file as it is on disk now (empty when it does not decode).
inline SettingsData storedSettings()
{
    return settingsDataFromJson(readFile(settingsPath())).value.value_or(SettingsData{});
}

} // namespace TestFiles
