#pragma once

#include "store/configproperties.h"
#include "store/fileio.h"
#include "store/records.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QPointF>
#include <QSet>
#include <QStringList>

#include <optional>

class PlaylistWatcher;
class QFileSystemWatcher;
class SoundPlayer;
struct ThemeData;

// The one live store: settings, the playlist catalogue, the current playlist
// and track positions and the current theme's geometry. Every property setter
// notifies through changed() only when the value really differs. Nothing is
// saved on its own: whoever makes a change worth keeping calls saveSettings()
// or writePlaylistTracks().
class Config : public QObject
{
    Q_OBJECT

public:
#define PLINK_ENUM_ROW(Type, name, Setter, value) name,
#define PLINK_ENUM_POINT(name, Setter, px, py) name,
    enum class Property {
        PLINK_SETTINGS_PROPERTIES(PLINK_ENUM_ROW)
        PLINK_GEOMETRY_PROPERTIES(PLINK_ENUM_ROW, PLINK_ENUM_POINT)
    };
#undef PLINK_ENUM_ROW
#undef PLINK_ENUM_POINT
    static constexpr int propertyCount = int(Property::trackArtHeight) + 1;
    static const char* propertyName(Property property);
    static bool isGeometry(Property property) { return property >= Property::playerWidth; }

    // Runs the whole start-up: defaults, Documents folder (fatal when it
    // cannot be had), sound player, then the settings and the current theme,
    // or on a first start the default settings, themes and first playlist.
    explicit Config(QObject* parent = nullptr);
    ~Config() override;

    // Typed accessors, one pair per row of the property table.
#define PLINK_ACCESSORS(Type, name, Setter, value)                                          \
    Type name() const { return m_##name; }                                                  \
    void Setter(const Type& newValue) { assign(m_##name, newValue, Property::name); }
#define PLINK_POINT_ACCESSORS(name, Setter, px, py) PLINK_ACCESSORS(QPointF, name, Setter, _)
    PLINK_SETTINGS_PROPERTIES(PLINK_ACCESSORS)
    PLINK_GEOMETRY_PROPERTIES(PLINK_ACCESSORS, PLINK_POINT_ACCESSORS)
#undef PLINK_ACCESSORS
#undef PLINK_POINT_ACCESSORS

    static QStringList defaultThemeCatalogue();

    const QString& documentDirectory() const { return m_documentDirectory; }
    SoundPlayer& soundPlayer() const { return *m_soundPlayer; }

    // Settings file
    QString settingsFileURL();
    void loadSettings();
    void saveSettings();
    void writeDefaultSettings();

    // Playlist files
    QString playlistFileURL(const QUuid& id) const;
    void ensurePlaylistsFolder();
    void createPlaylist();
    void deletePlaylist(const QUuid& id);
    // A file last found unreadable is first kept beside itself (".broken"), so
    // that its tracks can be recovered by hand.
    void writePlaylistTracks(const QUuid& id, const QList<Track>& tracks);
    // A playlist's tracks, decoded once per change of its file (what we wrote
    // ourselves is kept as written); a failure prints its description once per change.
    std::optional<QList<Track>> readPlaylistTracks(const QUuid& id) const;
    // One track of a playlist (none when out of range or unreadable): while the
    // whole list has not been decoded, only that track is, so that the start-up
    // costs the same with ten tracks or ten thousand.
    std::optional<Track> playlistTrack(const QUuid& id, qint64 index) const;
    // How many times a playlist file was decoded whole.
    int playlistReads() const { return m_playlistReads; }
    // The tracks of the playlist at currentPlaylistIndex, read afresh. The
    // index must be in range (a programming error otherwise).
    std::optional<QList<Track>> currentPlaylistTracks() const;
    // Values read from files may point past the catalogue: brings
    // currentPlaylistIndex back to 0 then. Returns whether a playlist exists.
    bool bringCurrentPlaylistIntoRange();

    // Track sequencing within the current playlist
    void nextTrack();
    // The index nextTrack() would move to, drawn now (shuffle too) but not
    // applied; none where nextTrack() would leave the index as it is.
    std::optional<qint64> nextTrackIndex() const;
    void previousTrack();

    // Themes (defined with the themes code)
    QString themeFileURL() const;
    QString themesFolder() const;
    void loadTheme();
    void writeDefaultTheme(const QString& themeName);
    void installThemes();
    QImage themePicture(const QString& picture) const;
    ThemeData geometry() const;
    void applyGeometry(const ThemeData& theme);

signals:
    void changed(Config::Property property);
    // A playlist's file was rewritten, by us or by another program: what it
    // holds at the current track may differ.
    void playlistTracksWritten(const QUuid& id);
    // A picture of a theme was replaced, added or removed on disk.
    void themePicturesChanged();

private:
    template <class T>
    void assign(T& member, const T& newValue, Property property)
    {
        if (sameValue(member, newValue))
            return;
        member = newValue;
        emit changed(property);
    }
    template <class T>
    static bool sameValue(const T& a, const T& b) { return a == b; }
    // QPointF's operator== is fuzzy; a change is any change.
    static bool sameValue(const QPointF& a, const QPointF& b) { return a.x() == b.x() && a.y() == b.y(); }

    void createSoundPlayer();
    void watchPlaylistFiles();
    QString applicationFolder() const;
    QString playlistsFolder() const;
    void startUp();
    void firstStart();
    SettingsData settingsForSaving() const;
    void writeSettings(const SettingsData& data);

#define PLINK_MEMBER(Type, name, Setter, value) Type m_##name = value;
#define PLINK_POINT_MEMBER(name, Setter, px, py) QPointF m_##name = QPointF(px, py);
    PLINK_SETTINGS_PROPERTIES(PLINK_MEMBER)
    PLINK_GEOMETRY_PROPERTIES(PLINK_MEMBER, PLINK_POINT_MEMBER)
#undef PLINK_MEMBER
#undef PLINK_POINT_MEMBER

    // Theme pictures by path (the built-in ones too), kept until the watcher
    // sees a theme's folder or picture change.
    mutable QHash<QString, QImage> m_pictureCache;
    mutable QFileSystemWatcher* m_pictureWatcher = nullptr; // a child QObject

    QString m_documentDirectory;
    SoundPlayer* m_soundPlayer = nullptr; // a child QObject
    PlaylistWatcher* m_playlistWatcher = nullptr; // a child QObject
    mutable QSet<QUuid> m_unreadablePlaylists; // as the last read of each found them
    struct TracksRead {
        QUuid id;
        FileStamp stamp;
        std::optional<QList<Track>> tracks;
    };
    mutable QList<TracksRead> m_tracksRead; // the last few playlists read, latest first
    struct TrackRead {
        QUuid id;
        qint64 index = -1;
        FileStamp stamp;
        std::optional<Track> track;
    };
    mutable std::optional<TrackRead> m_trackRead;
    mutable int m_playlistReads = 0;
    void keepTracksRead(TracksRead read) const;
    const TracksRead* tracksReadAt(const QUuid& id, const FileStamp& stamp) const; // none when stale
};
