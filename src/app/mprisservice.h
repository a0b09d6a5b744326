#pragma once

#include "player/transport.h"

#include <QDBusObjectPath>
#include <QList>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <utility>

class AudioPlayer;
class Config;

// Publishes the player on the session bus as org.mpris.MediaPlayer2.plinkbox,
// so that media keys, the desktop's media controls and playerctl work. Every
// command goes through the same Transport as the skin and the command menu,
// with one rule of the desktop's own: Next and Previous at the end of a list
// that does not loop stop playback rather than wrap or restart.
class MprisService : public QObject
{
    Q_OBJECT

public:
    static constexpr const char* serviceName = "org.mpris.MediaPlayer2.plinkbox";
    static constexpr const char* objectPath = "/org/mpris/MediaPlayer2";

    // open: what OpenUri does with the file it is given (as a file on the command line).
    MprisService(Config& config, AudioPlayer& audioPlayer, Transport& transport, std::function<void()> raise,
                 std::function<void(const QList<QUrl>&)> open = {}, QObject* parent = nullptr);
    ~MprisService() override;

    // Registers the object, then the name. False when there is no session bus
    // or the name is taken.
    bool registerOnSessionBus();

    // Values the two adaptors publish.
    QString playbackStatus() const;
    QString loopStatus() const;
    void setLoopStatus(const QString& status);
    bool shuffle() const;
    void setShuffle(bool on);
    QVariantMap metadata() const { return m_metadata; }
    qint64 position() const; // microseconds
    double volume() const;
    void setVolume(double volume);
    void setRate(double rate);
    bool canGoNext() const { return canStep(Transport::Direction::next, m_trackCount); }
    bool canGoPrevious() const { return canStep(Transport::Direction::previous, m_trackCount); }
    bool canPlay() const { return m_trackCount > 0; } // also CanPause: both need a track
    bool canSeek() const;

    // Commands
    void raise() { m_raise(); }
    void openUri(const QString& uri);
    void quit();
    void next();
    void previous();
    void play();
    void pause();
    void playPause();
    void stop();
    void seek(qint64 offset);
    void setPosition(const QDBusObjectPath& trackId, qint64 position);
    // One of the commands without arguments by its Player method name
    // (Play, PlayPause, Next, ...), as the command line names them.
    void perform(const QString& method);

signals:
    void seeked(qint64 position);

private:
    void refreshMetadata(); // reads the playlist file: only when the track may have changed
    void publish();         // announces what changed since the last announcement
    QVariantMap currentMetadata(); // also notes the playlist's size and the current track's URL
    bool canStep(Transport::Direction direction, qint64 trackCount) const;
    void step(Transport::Direction direction);
    bool currentTrackIsOpen() const;
    qint64 lengthOf(const QUrl& url); // microseconds, 0 when unknown
    void notePosition();
    void seekTo(qint64 position);

    Config& m_config;
    AudioPlayer& m_audioPlayer;
    Transport& m_transport;
    std::function<void()> m_raise;
    std::function<void(const QList<QUrl>&)> m_open;
    QVariantMap m_published; // the Player properties as last announced
    QVariantMap m_metadata;
    qint64 m_trackCount = 0; // in the current playlist
    QUrl m_currentUrl;       // of the current track; empty without one
    std::pair<QUrl, qint64> m_probed; // the last length read from a file that was not open
    qint64 m_lastPosition = 0;
    qint64 m_lastPositionAt = 0;
    bool m_seeking = false;
    QString m_coverPath;
    qint64 m_coverKey = 0;
};
