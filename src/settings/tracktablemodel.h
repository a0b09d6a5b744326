#pragma once

#include "settings/trackdropdelegate.h"
#include "store/records.h"

#include <QAbstractTableModel>
#include <QList>

// The tracks of the playlist being edited, as the rows of the track table
// ("Name", "Artist"). The model owns the list; the drop delegate reorders it
// in place between beginMove() and endMove().
class TrackTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { NameColumn, ArtistColumn, ColumnCount };

    explicit TrackTableModel(QObject* parent = nullptr);

    const QList<Track>& tracks() const { return m_tracks; }
    // For the drop delegate, which edits the list in place.
    QList<Track>& trackList() { return m_tracks; }

    void setTracks(const QList<Track>& tracks);
    void appendTracks(const QList<Track>& tracks);
    // rows need not be sorted or unique.
    void removeTracks(const QList<int>& rows);
    void beginMove(TrackDropDelegate::Move move);
    void endMove();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    QList<Track> m_tracks;
};
