#pragma once

#include "store/records.h"

#include <QObject>
#include <QUrl>

#include <optional>

class AudioPlayer;
class Config;

// What the skin's buttons and menus, the "Player" command menu and the
// desktop's media controls do to the store and the player. No widgets here:
// every front end calls the same operations. Interface sounds are played only
// where a press neither starts nor keeps music playing.
class Transport : public QObject
{
    Q_OBJECT

public:
    enum class Direction { previous, next };

    // Takes the player's end-of-track and next-track callbacks.
    Transport(Config& config, AudioPlayer& audioPlayer, QObject* parent = nullptr);
    ~Transport() override;

    // The current playlist's tracks read afresh, with both indexes brought
    // into range first; none when the playlist cannot be read (the reason is
    // printed) or there is no playlist at all.
    std::optional<QList<Track>> currentTracks();
    // Plays the track at currentTrackIndex; false when nothing was started.
    bool playCurrentTrack();

    // The skin's buttons
    void playPausePressed();
    void skip(Direction direction);
    void minimiseToggled(); // the "min" sound; the view swaps its size itself
    void trackFinished();
    // The track that trackFinished() would play next, for a gapless join;
    // none where it would stop.
    std::optional<QUrl> successor();

    // The skin's menus
    void selectPlaylistFromSkin(qint64 index);
    void selectTrackFromSkin(qint64 index);
    // The skin's keys and wheel: moves the open track's place by seconds,
    // held within the track (past its end is its end, as a drag of the scrub
    // bar past it is). Nothing without an open track of known length.
    void seekBy(double seconds);

    // The command menu
    void playPauseCommand();
    void toggleLoopTracks();
    void toggleShuffleTracks();
    void volumeUp();
    void volumeDown();
    void selectPlaylistCommand(qint64 index);
    void selectTrackCommand(qint64 index);

private:
    bool play(const Track& track);
    void playSound(const char* name);
    void stepVolume(float step);
    // Current playlist and track become this playlist: shared by skin and command.
    bool choosePlaylist(qint64 index);

    Config& m_config;
    AudioPlayer& m_audioPlayer;
    qint64 m_successor = 0; // the index successor() chose
};
