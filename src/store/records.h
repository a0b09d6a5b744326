#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

// One audio file in a playlist.
struct Track {
    QUuid id;
    QString urlString; // absolute, percent-encoded file URL
    QString trackName;
    QString artist;

    // A track made in memory gets a fresh random id.
    static Track make(QString urlString, QString trackName, QString artist);

    bool operator==(const Track&) const = default;
};

// An entry of the playlist catalogue; its tracks live in their own file.
struct Playlist {
    QUuid id;
    QString name;

    bool operator==(const Playlist&) const = default;
};

// The content of one playlist file.
struct PlaylistData {
    QList<Track> tracks;

    bool operator==(const PlaylistData&) const = default;
};

// The content of the settings file.
struct SettingsData {
    QString currentTheme;
    QStringList availableThemes;
    bool playsSounds = false;
    bool superSized = false;
    bool isFloating = false;
    bool shuffleTracks = false;
    bool loopTracks = false;
    std::optional<qint64> lastSelectedPlaylistID; // a position in playlists, not an id
    QList<Playlist> playlists;

    bool operator==(const SettingsData&) const = default;
};

// The outcome of decoding a file: a value, or the reason there is none.
template <class T>
struct Decoded {
    std::optional<T> value;
    QString error;

    explicit operator bool() const { return value.has_value(); }
};

QByteArray toJson(const PlaylistData& data);
QByteArray toJson(const SettingsData& data);

Decoded<PlaylistData> playlistDataFromJson(const QByteArray& bytes);
// One element of a playlist file's "tracks", the index-th.
Decoded<Track> trackFromJson(const QJsonObject& object, qsizetype index);
Decoded<SettingsData> settingsDataFromJson(const QByteArray& bytes);
