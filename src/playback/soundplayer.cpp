#include "playback/soundplayer.h"

#include "store/console.h"

#include <QAudioOutput>
#include <QFile>
#include <QMediaPlayer>
#include <QUrl>

namespace {

QString couldNotPlay(const QString& name, const QString& description)
{
    return QStringLiteral("Error: Could not play sound file ") + name + QStringLiteral(". Error: ") + description;
}

} // namespace

SoundPlayer::SoundPlayer(QObject* parent)
    : QObject(parent)
{
}

SoundPlayer::~SoundPlayer() = default;

void SoundPlayer::playSound(const QString& name)
{
    if (!QFile::exists(QStringLiteral(":/sounds/") + name + QStringLiteral(".m4a"))) {
        printLine(QStringLiteral("Error: Sound file ") + name + QStringLiteral(".m4a not found."));
        return;
    }
    QMediaPlayer* player = load(name);
    if (!player)
        return;
    // Only a sound still sounding is stopped: stopping one that has ended
    // makes the FFmpeg backend load it again for nothing.
    if (m_current && m_current != player && m_current->playbackState() == QMediaPlayer::PlayingState)
        m_current->stop();
    m_current = player;
    // A replay opens the (in-memory) file afresh: with the FFmpeg backend a
    // short sound restarted by stop() and play() after its end mostly went
    // unheard at the test sink, while a reopened one played in full, within
    // ~20 ms. Reopening also starts a sound still sounding from the top.
    if (player->mediaStatus() != QMediaPlayer::LoadedMedia) {
        const QUrl source = player->source();
        player->setSource(QUrl());
        player->setSource(source);
    }
    player->play();
}

// The sound's loaded player, made on first use. A sound the backend refuses
// is reported and not kept, so the previous player stays the current one.
QMediaPlayer* SoundPlayer::load(const QString& name)
{
    if (QMediaPlayer* loaded = m_loaded.value(name))
        return loaded;
    auto* player = new QMediaPlayer(this);
    player->setAudioOutput(new QAudioOutput(player));
    // Later errors are printed as they come; one found while opening (the
    // FFmpeg backend may signal it from inside setSource) is printed below.
    connect(player, &QMediaPlayer::errorOccurred, this, [this, name, player](QMediaPlayer::Error, const QString& text) {
        if (m_loaded.value(name) == player)
            printLine(couldNotPlay(name, text));
    });
    // The FFmpeg backend reads qrc: URLs itself.
    player->setSource(QUrl(QStringLiteral("qrc:/sounds/") + name + QStringLiteral(".m4a")));
    if (player->error() != QMediaPlayer::NoError || player->mediaStatus() == QMediaPlayer::InvalidMedia) {
        printLine(couldNotPlay(name, player->errorString()));
        delete player;
        return nullptr;
    }
    m_loaded.insert(name, player);
    return player;
}
