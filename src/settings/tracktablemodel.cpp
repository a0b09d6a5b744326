#include "settings/tracktablemodel.h"

TrackTableModel::TrackTableModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

void TrackTableModel::setTracks(const QList<Track>& tracks)
{
    beginResetModel();
    m_tracks = tracks;
    endResetModel();
}

void TrackTableModel::appendTracks(const QList<Track>& tracks)
{
    if (tracks.isEmpty())
        return;
    const int first = int(m_tracks.size());
    beginInsertRows({}, first, first + int(tracks.size()) - 1);
    m_tracks.append(tracks);
    endInsertRows();
}

void TrackTableModel::removeTracks(const QList<int>& rows)
{
    QList<bool> removed(m_tracks.size(), false);
    for (const int row : rows) {
        if (row >= 0 && row < m_tracks.size())
            removed[row] = true;
    }
    QList<Track> kept;
    kept.reserve(m_tracks.size());
    for (qsizetype row = 0; row < m_tracks.size(); ++row) {
        if (!removed.at(row))
            kept.append(m_tracks.at(row));
    }
    // One reset rather than a signal per row: removing a thousand rows stays quick.
    setTracks(kept);
}

void TrackTableModel::beginMove(TrackDropDelegate::Move move)
{
    beginMoveRows({}, int(move.from), int(move.from), {}, int(move.offset));
}

void TrackTableModel::endMove()
{
    endMoveRows();
}

int TrackTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_tracks.size());
}

int TrackTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TrackTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_tracks.size())
        return {};
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const Track& track = m_tracks.at(index.row());
    return index.column() == NameColumn ? track.trackName : track.artist;
}

QVariant TrackTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == NameColumn ? tr("Name") : tr("Artist");
}

Qt::ItemFlags TrackTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
}
