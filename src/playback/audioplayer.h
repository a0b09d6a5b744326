#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

class QAudioOutput;
class QMediaPlayer;
class QTimer;

// Why play() could not open a file.
struct PlayError {
    QString domain;      // "AudioPlayer" for our own failures
    int code = 0;        // -1 for a missing file
    QString description; // "File does not exist"
};

// The playback engine: one open file at a time. Every observable value
// notifies only when it really changes.
//
// A file that cannot be opened makes play() return the error, and the caller
// reports it. A file that fails only once it plays (the backend's late error,
// or a corrupt file that "ends" at its very start) is printed here as one
// line and announced by playFailed(): playback stops, the timer goes, and
// onTrackFinished is not called.
class AudioPlayer : public QObject
{
    Q_OBJECT

public:
    explicit AudioPlayer(QObject* parent = nullptr);
    ~AudioPlayer() override;

    // The open file's player, or null before the first file is opened.
    QMediaPlayer* player() const;
    bool hasTimer() const;
    double progress() const;  // 0 … 1
    double duration() const;  // seconds
    bool isPlaying() const;
    QImage albumArt() const;  // null when the open file has none
    QUrl currentUrl() const;  // the open file

    // Called when a track plays to its natural end.
    std::function<void()> onTrackFinished;

    // Opens url unless it is the open file, and plays it.
    std::optional<PlayError> play(const QUrl& url);
    void pause();
    void stop();
    void seek(double fraction);

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
    void setProgress(double value);
    void setDuration(double value);
    void setIsPlaying(bool value);
    void setAlbumArt(const QImage& value);
    std::optional<PlayError> open(const QUrl& file);
    void loadAlbumArt();
    void onMediaStatusChanged(QMediaPlayer* source, int status);
    void fail(const QString& description);

    QMediaPlayer* m_player = nullptr;
    QAudioOutput* m_output = nullptr;
    QTimer* m_timer = nullptr;
    QUrl m_url;
    double m_progress = 0;
    double m_duration = 0;
    bool m_isPlaying = false;
    QImage m_albumArt;
    float m_volume = 1.0f;
    quint64 m_openCount = 0; // tells a late album picture from the current one
};
