// Config owns the interface sound player; it is made here so that the store's
// own code needs nothing from playback.
#include "store/config.h"

#include "playback/soundplayer.h"

void Config::createSoundPlayer()
{
    m_soundPlayer = new SoundPlayer(this);
}
