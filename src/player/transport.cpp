#include "player/transport.h"

#include "playback/audioplayer.h"
#include "playback/soundplayer.h"
#include "store/config.h"
#include "store/console.h"

#include <QUrl>

Transport::Transport(Config& config, AudioPlayer& audioPlayer, QObject* parent)
    : QObject(parent)
    , m_config(config)
    , m_audioPlayer(audioPlayer)
{
    m_audioPlayer.onTrackFinished = [this] { trackFinished(); };
    m_audioPlayer.nextTrackUrl = [this] { return successor(); };
    m_audioPlayer.onTrackJoined = [this] { m_config.setCurrentTrackIndex(m_successor); };
    // A queued track was chosen by these: when one changes, it is dropped
    // and the end of the track takes the ordinary path.
    connect(&m_config, &Config::changed, this, [this](Config::Property property) {
        using P = Config::Property;
        if (property == P::loopTracks || property == P::shuffleTracks || property == P::playlists ||
            property == P::currentPlaylistIndex || property == P::currentTrackIndex)
            m_audioPlayer.dropQueuedTrack();
    });
    connect(&m_config, &Config::playlistTracksWritten, this, [this] { m_audioPlayer.dropQueuedTrack(); });
}

Transport::~Transport()
{
    m_audioPlayer.onTrackFinished = nullptr;
    m_audioPlayer.nextTrackUrl = nullptr;
    m_audioPlayer.onTrackJoined = nullptr;
}

std::optional<QList<Track>> Transport::currentTracks()
{
    // Indexes come from files and from playlists that shrank: bring them
    // into range rather than trust them.
    if (!m_config.bringCurrentPlaylistIntoRange())
        return QList<Track>();
    auto tracks = m_config.currentPlaylistTracks();
    if (tracks && !tracks->isEmpty()) {
        const qint64 index = m_config.currentTrackIndex();
        if (index < 0 || index >= tracks->size())
            m_config.setCurrentTrackIndex(0);
    }
    return tracks;
}

bool Transport::playCurrentTrack()
{
    const auto tracks = currentTracks();
    if (!tracks || tracks->isEmpty())
        return false;
    return play(tracks->at(m_config.currentTrackIndex()));
}

bool Transport::play(const Track& track)
{
    if (const auto error = m_audioPlayer.play(QUrl(track.urlString))) {
        printLine(error->description);
        return false;
    }
    return true;
}

void Transport::playSound(const char* name)
{
    if (m_config.playsSounds())
        m_config.soundPlayer().playSound(QString::fromLatin1(name));
}

void Transport::playPausePressed()
{
    if (m_audioPlayer.isPlaying()) {
        m_audioPlayer.pause();
        return;
    }
    const auto tracks = currentTracks();
    if (!tracks)
        return;
    if (tracks->isEmpty())
        playSound("click");
    else
        play(tracks->at(m_config.currentTrackIndex()));
}

void Transport::skip(Direction direction)
{
    if (m_config.bringCurrentPlaylistIntoRange()) {
        if (direction == Direction::next)
            m_config.nextTrack();
        else
            m_config.previousTrack();
    }
    if (!m_audioPlayer.isPlaying()) {
        playSound("click");
        return;
    }
    m_audioPlayer.stop();
    playCurrentTrack();
}

void Transport::minimiseToggled()
{
    if (!m_audioPlayer.isPlaying())
        playSound("min");
}

void Transport::trackFinished()
{
    // Advance; at the end of a list that does not loop, stop and rewind the
    // list so that the next play starts from the first track.
    if (!m_config.bringCurrentPlaylistIntoRange()) {
        m_audioPlayer.stop();
        return;
    }
    const qint64 before = m_config.currentTrackIndex();
    m_config.nextTrack();
    if (m_config.currentTrackIndex() == before && !m_config.loopTracks()) {
        m_audioPlayer.stop();
        if (m_config.currentTrackIndex() != 0)
            m_config.setCurrentTrackIndex(0);
        return;
    }
    playCurrentTrack();
}

std::optional<QUrl> Transport::successor()
{
    // trackFinished()'s rule, decided ahead: the index stays until the
    // track is heard (a shuffle draw is made now and kept).
    if (!m_config.bringCurrentPlaylistIntoRange())
        return std::nullopt;
    const std::optional<qint64> next = m_config.nextTrackIndex();
    if (!next || (*next == m_config.currentTrackIndex() && !m_config.loopTracks()))
        return std::nullopt;
    const auto tracks = m_config.currentPlaylistTracks();
    if (!tracks || *next >= tracks->size())
        return std::nullopt;
    m_successor = *next;
    return QUrl(tracks->at(*next).urlString);
}

bool Transport::choosePlaylist(qint64 index)
{
    PLINK_CHECK(index >= 0 && index < m_config.playlists().size(), "chosen playlist is outside the playlists");
    if (index == m_config.currentPlaylistIndex())
        return false;
    m_config.setCurrentPlaylistIndex(index);
    m_config.setLastSelectedPlaylistID(index);
    // The track reset comes after the save, so only the next save writes it.
    m_config.saveSettings();
    m_config.setCurrentTrackIndex(0);
    if (m_audioPlayer.isPlaying())
        m_audioPlayer.stop();
    return true;
}

void Transport::selectPlaylistFromSkin(qint64 index)
{
    if (choosePlaylist(index))
        playSound("pop");
}

void Transport::selectTrackFromSkin(qint64 index)
{
    // Choosing the current track again restarts it.
    m_config.setCurrentTrackIndex(index);
    if (m_audioPlayer.isPlaying())
        m_audioPlayer.stop();
    playCurrentTrack();
    playSound("pop");
}

void Transport::seekBy(double seconds)
{
    const double length = m_audioPlayer.duration();
    if (!m_audioPlayer.player() || length <= 0)
        return;
    m_audioPlayer.seek(m_audioPlayer.progress() + seconds / length); // held within the track there
}

void Transport::playPauseCommand()
{
    if (m_audioPlayer.isPlaying())
        m_audioPlayer.pause();
    else
        playCurrentTrack();
}

void Transport::toggleLoopTracks()
{
    m_config.setLoopTracks(!m_config.loopTracks());
    m_config.saveSettings();
}

void Transport::toggleShuffleTracks()
{
    m_config.setShuffleTracks(!m_config.shuffleTracks());
    m_config.saveSettings();
}

void Transport::stepVolume(float step)
{
    if (!m_audioPlayer.player())
        return;
    float volume = m_audioPlayer.volume() + step;
    if (volume > 1)
        volume = 1;
    if (volume <= 0)
        volume = 0;
    m_audioPlayer.setVolume(volume);
}

void Transport::volumeUp()
{
    stepVolume(0.1f);
}

void Transport::volumeDown()
{
    stepVolume(-0.1f);
}

void Transport::selectPlaylistCommand(qint64 index)
{
    choosePlaylist(index);
}

void Transport::selectTrackCommand(qint64 index)
{
    // While paused only the index moves; the next Play takes it up.
    m_config.setCurrentTrackIndex(index);
    if (!m_audioPlayer.isPlaying())
        return;
    m_audioPlayer.stop();
    playCurrentTrack();
}
