#pragma once

#include "store/records.h"

#include <QList>
#include <QTableView>
#include <QUrl>

#include <optional>

class TrackDropDelegate;
class TrackTableModel;

// The playlist editor's track table. Its rows are drag sources (a plain-text
// payload) and drop targets that reorder the tracks live through the
// TrackDropDelegate; it also takes local files dropped from a file manager.
class TrackTable : public QTableView
{
    Q_OBJECT

public:
    TrackTable(TrackTableModel& model, TrackDropDelegate& delegate, std::optional<Track>& draggedTrack,
               QWidget* parent = nullptr);

    // The line an empty table shows in its middle; none when empty.
    QString placeholderText() const { return m_placeholderText; }
    void setPlaceholderText(const QString& text);

signals:
    void filesDropped(const QList<QUrl>& urls);
    // Delete or Backspace: the selected rows are to go.
    void removeRequested();
    // A row drag ended anywhere but on the table's rows.
    void dragAbandoned();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool acceptsDrag(QDropEvent* event);
    void enterRow(int row);

    TrackTableModel& m_model;
    QString m_placeholderText;
    TrackDropDelegate& m_delegate;
    std::optional<Track>& m_draggedTrack;
    int m_enteredRow = -1;
    bool m_droppedOnRows = false;
};
