#include "playback/soundplayer.h"

#include "store/console.h"

#include <QFile>
#include <QMediaPlayer>
#include <QAudioOutput>
#include <QUrl>

SoundPlayer::SoundPlayer(QObject* parent)
    : QObject(parent)
{
}

SoundPlayer::~SoundPlayer() = default;

void SoundPlayer::playSound(const QString& name)
{
    const QString resource = QStringLiteral(":/sounds/") + name + QStringLiteral(".m4a");
    if (!QFile::exists(resource)) {
        printLine(QStringLiteral("Error: Sound file ") + name + QStringLiteral(".m4a not found."));
        return;
    }
    if (m_current)
        m_current->stop();
    delete m_current;
    m_current = new QMediaPlayer(this);
    m_current->setAudioOutput(new QAudioOutput(m_current));
    m_current->setSource(QUrl(QStringLiteral("qrc") + resource));
    m_current->play();
}
