#pragma once

// The observed properties of Config, written once. Every row drives the
// member, its typed accessor and setter, its default and its change
// notification (Config::Property). The order is the declaration order.
//
//   S(Type, name, Setter, default)   a plain value
//   P(name, Setter, px, py)            a point; a theme file keeps it as nameX, nameY

#define PLINK_SETTINGS_PROPERTIES(S)                                                       \
    S(QString, currentTheme, setCurrentTheme, QStringLiteral("mini-blueberry"))            \
    S(QStringList, availableThemes, setAvailableThemes, defaultThemeCatalogue())           \
    S(bool, playsSounds, setPlaysSounds, true)                                             \
    S(bool, superSized, setSuperSized, false)                                              \
    S(bool, isFloating, setIsFloating, true)                                               \
    S(bool, shuffleTracks, setShuffleTracks, false)                                        \
    S(bool, loopTracks, setLoopTracks, true)                                               \
    S(QList<Playlist>, playlists, setPlaylists, QList<Playlist>())                         \
    S(qint64, currentPlaylistIndex, setCurrentPlaylistIndex, 0)                            \
    S(qint64, currentTrackIndex, setCurrentTrackIndex, 0)                                  \
    S(qint64, lastSelectedPlaylistID, setLastSelectedPlaylistID, 0)

// The skin geometry of the current theme, in theme.json's field order. The
// defaults are the mini family's layout, except the two text sizes (9, not 10).
#define PLINK_GEOMETRY_PROPERTIES(S, P)                                                    \
    S(double, playerWidth, setPlayerWidth, 269)                                            \
    S(double, playerHeight, setPlayerHeight, 96)                                           \
    S(double, playerMinWidth, setPlayerMinWidth, 20)                                       \
    S(double, playerMinHeight, setPlayerMinHeight, 96)                                     \
    S(int, trackTextSize, setTrackTextSize, 9)                                             \
    S(int, artistTextSize, setArtistTextSize, 9)                                           \
    S(bool, textReversed, setTextReversed, true)                                           \
    P(closePos, setClosePos, 9.5, 11)                                                      \
    S(double, closeWidth, setCloseWidth, 17)                                               \
    S(double, closeHeight, setCloseHeight, 14)                                             \
    P(playPos, setPlayPos, 192, 34)                                                        \
    S(double, playWidth, setPlayWidth, 34)                                                 \
    S(double, playHeight, setPlayHeight, 52)                                               \
    P(ffPos, setFfPos, 226, 34)                                                            \
    S(double, ffWidth, setFfWidth, 34)                                                     \
    S(double, ffHeight, setFfHeight, 52)                                                   \
    P(minPos, setMinPos, 9.5, 25)                                                          \
    S(double, minWidth, setMinWidth, 17)                                                   \
    S(double, minHeight, setMinHeight, 14)                                                 \
    P(rrPos, setRrPos, 158, 34)                                                            \
    S(double, rrWidth, setRrWidth, 34)                                                     \
    S(double, rrHeight, setRrHeight, 52)                                                   \
    P(trackMenuPos, setTrackMenuPos, 9.5, 87)                                              \
    S(double, trackMenuWidth, setTrackMenuWidth, 17)                                       \
    S(double, trackMenuHeight, setTrackMenuHeight, 14)                                     \
    P(playlistMenuPos, setPlaylistMenuPos, 9.5, 71)                                        \
    S(double, playlistMenuWidth, setPlaylistMenuWidth, 17)                                 \
    S(double, playlistMenuHeight, setPlaylistMenuHeight, 14)                               \
    P(scrubberMinPos, setScrubberMinPos, 117.5, 65.5)                                      \
    P(scrubberMaxPos, setScrubberMaxPos, 266.5, 65.5)                                      \
    S(double, scrubberWidth, setScrubberWidth, 14)                                         \
    S(double, scrubberHeight, setScrubberHeight, 14)                                       \
    P(trackNamePos, setTrackNamePos, 192, 75)                                              \
    P(trackArtistPos, setTrackArtistPos, 192, 89)                                          \
    S(double, trackTextWidth, setTrackTextWidth, 152)                                      \
    P(trackArtPos, setTrackArtPos, 67, 48)                                                 \
    S(double, trackArtWidth, setTrackArtWidth, 92)                                         \
    S(double, trackArtHeight, setTrackArtHeight, 92)
