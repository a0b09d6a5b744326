#include "settings/tracktable.h"

#include "settings/trackdropdelegate.h"
#include "settings/tracktablemodel.h"
#include "store/jsonreader.h"
#include "store/trackfiles.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>

TrackTable::TrackTable(TrackTableModel& model, TrackDropDelegate& delegate,
                       std::optional<Track>& draggedTrack, QWidget* parent)
    : QTableView(parent)
    , m_model(model)
    , m_delegate(delegate)
    , m_draggedTrack(draggedTrack)
{
    setModel(&model);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    // The rows themselves move while the drag passes over them.
    setDropIndicatorShown(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setWordWrap(false);
    // Tab leaves the table for the buttons below; the arrows move within it.
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    horizontalHeader()->setHighlightSections(false);
}

void TrackTable::setPlaceholderText(const QString& text)
{
    if (text == m_placeholderText)
        return;
    m_placeholderText = text;
    viewport()->update();
}

void TrackTable::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (m_model.rowCount() > 0 || m_placeholderText.isEmpty())
        return;
    // An empty table says how to fill it.
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap,
                     m_placeholderText);
}

void TrackTable::keyPressEvent(QKeyEvent* event)
{
    if ((event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) && event->modifiers() == Qt::NoModifier
        && selectionModel()->hasSelection()) {
        emit removeRequested();
        return;
    }
    QTableView::keyPressEvent(event);
}

void TrackTable::startDrag(Qt::DropActions)
{
    const int row = currentIndex().row();
    if (row < 0 || row >= m_model.tracks().size())
        return;
    const Track& track = m_model.tracks().at(row);
    m_draggedTrack = track;
    m_enteredRow = -1;

    // Only the type of the payload matters to the rows it is dropped on.
    auto* mime = new QMimeData;
    mime->setText(uuidText(track.id));
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    const QRect rowRect = visualRect(m_model.index(row, 0)).united(
        visualRect(m_model.index(row, TrackTableModel::ArtistColumn)));
    if (rowRect.isValid()) {
        drag->setPixmap(viewport()->grab(rowRect));
        drag->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) - rowRect.topLeft());
    }
    m_droppedOnRows = false;
    drag->exec(Qt::MoveAction);
    if (!m_droppedOnRows)
        emit dragAbandoned();
}

bool TrackTable::acceptsDrag(QDropEvent* event)
{
    const QMimeData* mime = event->mimeData();
    if (mime->hasUrls()) {
        if (droppedLocalUrls(mime).isEmpty())
            return false;
        event->setDropAction(Qt::CopyAction);
        return true;
    }
    if (mime->hasText()) {
        event->setDropAction(Qt::MoveAction);
        return true;
    }
    return false;
}

void TrackTable::dragEnterEvent(QDragEnterEvent* event)
{
    m_enteredRow = -1;
    if (acceptsDrag(event))
        event->accept();
    else
        event->ignore();
}

void TrackTable::dragMoveEvent(QDragMoveEvent* event)
{
    if (!acceptsDrag(event)) {
        event->ignore();
        return;
    }
    event->accept();
    if (event->mimeData()->hasUrls())
        return;
    const QPoint position = event->position().toPoint();
    enterRow(rowAt(position.y()));
    const int margin = autoScrollMargin();
    if (hasAutoScroll() && (position.y() < margin || position.y() > viewport()->height() - margin))
        startAutoScroll();
}

void TrackTable::enterRow(int row)
{
    // The delegate acts when the drag enters a row, not on every move over it.
    if (row == m_enteredRow)
        return;
    m_enteredRow = row;
    if (row < 0)
        return;
    const Track item = m_model.tracks().at(row);
    if (const auto move = m_delegate.plannedMove(item)) {
        m_model.beginMove(*move);
        m_delegate.dropEntered(item);
        m_model.endMove();
    }
}

void TrackTable::dragLeaveEvent(QDragLeaveEvent* event)
{
    m_enteredRow = -1;
    stopAutoScroll();
    event->accept();
}

void TrackTable::dropEvent(QDropEvent* event)
{
    m_enteredRow = -1;
    stopAutoScroll();
    if (!acceptsDrag(event)) {
        event->ignore();
        return;
    }
    event->accept();
    if (event->mimeData()->hasUrls()) {
        emit filesDropped(droppedLocalUrls(event->mimeData()));
        return;
    }
    m_droppedOnRows = true;
    m_delegate.performDrop();
}
