#pragma once

#include "playback/audiofile.h"

#include <QImage>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

class PlaybackStream;

// Why play() could not open a file.
struct PlayError {
    QString domain;      // "AudioPlayer" for our own failures
    int code = 0;        // -1 for a missing file
    QString description; // "File does not exist"
};

// The playback engine: one open file at a time, decoded with FFmpeg and
// played through the sound server. Every observable value notifies only when
// it really changes.
//
// A file that cannot be opened, or no sound server, makes play() return the
// error, and the caller reports it. A failure found later (the server gone,
// the device taken away) is printed here as one line and announced by
// playFailed(): playback stops, the timer goes, onTrackFinished is not
// called, and the next play() connects again. A file that turns out to be
// cut short or unreadable part-way is printed as one line, and its track
// ends where the readable audio ends, as if that were its end.
//
// Gapless: shortly before a track's last sample is played, the player asks
// nextTrackUrl for the track that will follow, queues it in the same stream,
// and when its first sample is heard calls onTrackJoined and shows the new
// file, as if play() had opened it. Without a next track the track ends as
// usual: isPlaying false, then onTrackFinished.
class AudioPlayer : public QObject
{
    Q_OBJECT

public:
    explicit AudioPlayer(QObject* parent = nullptr);
    ~AudioPlayer() override;

    // The open file, or null before the first file is opened.
    const AudioFile* player() const { return m_file.get(); }
    bool hasTimer() const { return m_timer.isActive(); }
    double progress() const { return m_progress; } // 0 … 1
    double duration() const { return m_duration; } // seconds
    bool isPlaying() const { return m_isPlaying; }
    QImage albumArt() const { return m_albumArt; } // null when the open file has none
    QUrl currentUrl() const;                        // the open file

    // Called when a track plays to its natural end.
    std::function<void()> onTrackFinished;
    // Asked for the track to join after the open one; none to end there.
    std::function<std::optional<QUrl>()> nextTrackUrl;
    // Called when the track from nextTrackUrl is heard, before it is shown.
    std::function<void()> onTrackJoined;

    // Opens url unless it is the open file, and plays it.
    std::optional<PlayError> play(const QUrl& url);
    void pause();
    void stop();
    void seek(double fraction);
    // Forgets the queued next track: what decided it has changed.
    void dropQueuedTrack();

    // The 0.1-second progress timer, also driven by the scrub bar.
    void invalidateTimer();
    void restartTimer();
    void tick();

    // 0 … 1; only meaningful while a file is open.
    float volume() const;
    void setVolume(float volume);

signals:
    void playerChanged();
    void timerChanged();
    void progressChanged();
    void durationChanged();
    void isPlayingChanged();
    void albumArtChanged();
    void volumeChanged();
    void playFailed(const PlayError& error);

private:
    // A moment the listener will reach: the queued track's first frame, or
    // the end.
    struct Waypoint {
        bool isEnd = false;
        quint64 epoch = 0;
        qint64 frame = 0;
    };

    void setProgress(double value);
    void setDuration(double value);
    void setIsPlaying(bool value);
    void setAlbumArt(const QImage& value);
    bool openStream(QString* error);
    std::unique_ptr<AudioFile> makeFile(const QUrl& url, double duration);
    void show(std::unique_ptr<AudioFile> file);
    void loadAlbumArt();
    void queueSuccessor(quint64 epoch);
    void arrive();
    void armWaypoint();
    void endOfTrack();
    void fail(const QString& reason);

    std::unique_ptr<PlaybackStream> m_stream; // made at the first play
    std::unique_ptr<AudioFile> m_file, m_queuedFile;
    QTimer m_timer;
    QTimer m_waypointTimer;
    std::optional<Waypoint> m_waypoint;
    double m_progress = 0;
    double m_duration = 0;
    bool m_isPlaying = false;
    bool m_ended = false;         // the open file played to its end
    bool m_endWaitsForTimer = false; // reached while the scrub bar holds the timer
    std::optional<double> m_resumeAt; // after a failure: where the next play resumes
    QImage m_albumArt;
    float m_volume = 1.0f;
    quint64 m_openCount = 0; // tells the files apart, and a late album picture from the current one
};
