#pragma once

#include <QFuture>
#include <QHash>
#include <QObject>
#include <QString>

#include <memory>
#include <vector>

class PulseConnection;
struct pa_stream;

// Plays the short interface sounds ("click", "min", "pop", "drag") shipped as
// resources, one at a time: a new sound ends the one before. Callers check
// Config::playsSounds first; this class does not look at it.
//
// Making one costs nothing: the sounds are read into memory by preload(),
// all at once, as the build decoded them, and the sound server is reached
// the first time one is played. Every press then gets a short stream of its
// own, written whole at once, so that it starts within milliseconds and its
// stream goes as soon as it has been heard.
class SoundPlayer : public QObject
{
    Q_OBJECT

public:
    // The sounds' own rate; the server converts, if its output runs at another.
    static constexpr int rate = 48000;

    explicit SoundPlayer(QObject* parent = nullptr);
    ~SoundPlayer() override;

    void playSound(const QString& name);
    // Reads every shipped sound, once, off this thread (decoding any that the
    // build did not); a press before it is done waits for it.
    QFuture<void> preload();

private:
    struct Sound {
        std::vector<float> samples; // interleaved stereo
        QString error;              // why there are none
    };
    struct Playing; // a stream and the sound it writes

    void decodeSounds();
    void endPlaying();
    static void writeRequested(pa_stream* stream, size_t bytes, void* playing);

    std::unique_ptr<PulseConnection> m_connection;
    QFuture<void> m_preload;
    bool m_preloadStarted = false;
    QHash<QString, std::shared_ptr<const Sound>> m_sounds; // written by the preload only
    Playing* m_playing = nullptr; // under the connection's lock
};
