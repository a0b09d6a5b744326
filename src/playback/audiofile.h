#pragma once

#include <QUrl>

#include <functional>
#include <utility>

// The file AudioPlayer has open, as it plays: its place, length and volume.
// A new one is made for every file opened or joined, so a new file starts at
// full volume.
class AudioFile
{
public:
    AudioFile(const QUrl& url, double duration, quint64 token, std::function<double(quint64)> heard)
        : m_url(url), m_duration(duration), m_token(token), m_heard(std::move(heard)) {}

    QUrl url() const { return m_url; }
    double duration() const { return m_duration; } // seconds
    quint64 token() const { return m_token; }      // tells the engine's tracks apart
    float volume() const { return m_volume; }
    // True the first time only: a file read again (played anew, rewound by
    // a stop) reaches the same damage again, and it is told once.
    bool firstFault() { return !std::exchange(m_faultTold, true); }
    void setVolume(float volume) { m_volume = volume; }
    // Milliseconds into the file that the listener hears now.
    qint64 position() const
    {
        const double seconds = m_heard(m_token);
        return seconds < 0 ? m_lastPosition : (m_lastPosition = qint64(seconds * 1000));
    }

private:
    QUrl m_url;
    double m_duration;
    quint64 m_token;
    std::function<double(quint64)> m_heard;
    float m_volume = 1.0f;
    bool m_faultTold = false;
    mutable qint64 m_lastPosition = 0;
};
