#pragma once

#include <QObject>
#include <QString>

class QMediaPlayer;

// Plays the short interface sounds ("click", "min", "pop", "drag") shipped as
// resources, one at a time: a new sound ends the one before. Callers check
// Config::playsSounds first; this class does not look at it.
class SoundPlayer : public QObject
{
    Q_OBJECT

public:
    explicit SoundPlayer(QObject* parent = nullptr);
    ~SoundPlayer() override;

    void playSound(const QString& name);

private:
    QMediaPlayer* m_current = nullptr;
};
