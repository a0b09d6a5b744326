#pragma once

#include "store/records.h"

#include <QList>

#include <functional>
#include <optional>

class Config;

// The reorder and commit logic of dragging one track row onto another, kept
// apart from the table so that it can be driven without a real drag. The
// track list and the dragged track belong to the playlist editor; the
// delegate works on them in place.
class TrackDropDelegate
{
public:
    // One move of a single row: the element at `from` is taken out and put
    // back before the element that was at `offset`.
    struct Move {
        qsizetype from = 0;
        qsizetype offset = 0;
        bool operator==(const Move&) const = default;
    };

    TrackDropDelegate(QList<Track>& tracks, Config& config, std::optional<Track>& draggedTrack,
                      std::function<void()> onCommit);

    // The move that letting the dragged row pass over item would make;
    // nothing when there is no drag, a row is missing or it is the same row.
    std::optional<Move> plannedMove(const Track& item) const;
    // The drag entered the row showing item: the dragged row moves there.
    void dropEntered(const Track& item);
    // The drop: sound, end of the drag, the new order committed. Always
    // accepts.
    bool performDrop();

    // Moving one row from `from` onto the row at `to`: below it when it comes
    // from above, above it when it comes from below.
    static Move moveOnto(qsizetype from, qsizetype to);
    // Applies a move to any list; the moved element ends at the row it was
    // dropped onto.
    template <class T>
    static void apply(QList<T>& list, Move move)
    {
        const qsizetype target = move.offset > move.from ? move.offset - 1 : move.offset;
        list.move(move.from, target);
    }

private:
    QList<Track>& m_tracks;
    Config& m_config;
    std::optional<Track>& m_draggedTrack;
    std::function<void()> m_onCommit;
};
