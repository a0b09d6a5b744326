#include "settings/trackdropdelegate.h"

#include "playback/soundplayer.h"
#include "store/config.h"

TrackDropDelegate::TrackDropDelegate(QList<Track>& tracks, Config& config,
                                     std::optional<Track>& draggedTrack, std::function<void()> onCommit)
    : m_tracks(tracks)
    , m_config(config)
    , m_draggedTrack(draggedTrack)
    , m_onCommit(std::move(onCommit))
{
}

TrackDropDelegate::Move TrackDropDelegate::moveOnto(qsizetype from, qsizetype to)
{
    return {from, from < to ? to + 1 : to};
}

std::optional<TrackDropDelegate::Move> TrackDropDelegate::plannedMove(const Track& item) const
{
    if (!m_draggedTrack)
        return std::nullopt;
    // Rows are told apart by all their fields; with two equal rows the first
    // one is the one that moves.
    const qsizetype from = m_tracks.indexOf(*m_draggedTrack);
    const qsizetype to = m_tracks.indexOf(item);
    if (from < 0 || to < 0 || from == to)
        return std::nullopt;
    return moveOnto(from, to);
}

void TrackDropDelegate::dropEntered(const Track& item)
{
    if (const std::optional<Move> move = plannedMove(item))
        apply(m_tracks, *move);
}

bool TrackDropDelegate::performDrop()
{
    if (m_config.playsSounds())
        m_config.soundPlayer().playSound(QStringLiteral("drag"));
    m_draggedTrack.reset();
    if (m_onCommit)
        m_onCommit();
    return true;
}
