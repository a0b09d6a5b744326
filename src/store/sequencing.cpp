// Config's next/previous track rules.
#include "store/sequencing.h"

#include "store/config.h"
#include "store/console.h"

#include <QRandomGenerator>

namespace {
__extension__ typedef unsigned __int128 Wide; // GCC and Clang both have it
}

quint64 uniformBelow(quint64 n, const std::function<quint64()>& randomWord)
{
    PLINK_CHECK(n > 0, "uniformBelow needs a positive bound");
    const quint64 biasedZone = (0 - n) % n; // 2^64 mod n
    for (;;) {
        const Wide product = static_cast<Wide>(randomWord()) * n;
        if (static_cast<quint64>(product) >= biasedZone)
            return static_cast<quint64>(product >> 64);
    }
}

std::optional<qint64> Config::nextTrackIndex() const
{
    const auto tracks = currentPlaylistTracks();
    if (!tracks || tracks->isEmpty())
        return std::nullopt;
    const qint64 n = tracks->size();
    const qint64 current = currentTrackIndex();
    qint64 next = 0;
    if (shuffleTracks()) {
        // Never the current track again, each other one equally likely.
        if (n > 1) {
            const auto word = [] { return QRandomGenerator::system()->generate64(); };
            do
                next = qint64(uniformBelow(quint64(n), word));
            while (next == current);
        }
    } else if (current + 1 < n) {
        next = current + 1;
    } else if (loopTracks()) {
        next = 0;
    } else {
        return std::nullopt;
    }
    return next;
}

void Config::nextTrack()
{
    if (const auto next = nextTrackIndex())
        setCurrentTrackIndex(*next);
}

void Config::previousTrack()
{
    const auto tracks = currentPlaylistTracks();
    if (!tracks || tracks->isEmpty())
        return;
    const qint64 n = tracks->size();
    // C++'s % truncates, so a far-out index keeps the sign of the dividend.
    setCurrentTrackIndex((currentTrackIndex() - 1 + n) % n);
}
