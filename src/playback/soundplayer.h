#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class QMediaPlayer;

// Plays the short interface sounds ("click", "min", "pop", "drag") shipped as
// resources, one at a time: a new sound ends the one before. Callers check
// Config::playsSounds first; this class does not look at it.
//
// Making one costs nothing: each sound gets its player the first time it is
// played and keeps it, loaded, so that a replay starts at once.
class SoundPlayer : public QObject
{
    Q_OBJECT

public:
    explicit SoundPlayer(QObject* parent = nullptr);
    ~SoundPlayer() override;

    void playSound(const QString& name);

    // The player of the sound playing or played last; null before the first.
    QMediaPlayer* player() const { return m_current; }

private:
    QMediaPlayer* load(const QString& name);

    QHash<QString, QMediaPlayer*> m_loaded; // children, one per sound
    QMediaPlayer* m_current = nullptr;
};
