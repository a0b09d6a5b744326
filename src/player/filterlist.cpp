#include "player/filterlist.h"

#include <QAbstractListModel>
#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QScreen>
#include <QStyleOptionMenuItem>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>

namespace {

constexpr int mostRows = 20;

QStringList filterWords(const QString& typed)
{
    return foldForFilter(typed.simplified()).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// Title and detail folded into one text; no word holds a line break, so a word found in it lies within
// one of the two.
QString foldedEntry(const FilterEntry& entry)
{
    QString joined = entry.title + QLatin1Char('\n') + entry.detail;
    // Plain ASCII, the common case, is folded in place: one text per entry,
    // not six, for lists of thousands.
    if (std::all_of(joined.cbegin(), joined.cend(), [](QChar c) { return c.unicode() < 0x80; })) {
        for (QChar& c : joined)
            c = c.toLower();
        return joined;
    }
    return foldForFilter(joined);
}

bool containsAll(const QString& folded, const QStringList& words)
{
    return std::all_of(words.cbegin(), words.cend(), [&](const QString& word) { return folded.contains(word); });
}

QStyleOptionMenuItem menuRow(const QWidget* view, const QFont& font)
{
    QStyleOptionMenuItem row;
    row.initFrom(view);
    row.font = font;
    row.fontMetrics = QFontMetrics(font);
    row.menuItemType = QStyleOptionMenuItem::Normal;
    row.checkType = QStyleOptionMenuItem::NotCheckable;
    row.menuHasCheckableItems = true;
    row.maxIconWidth = 0;
    row.reservedShortcutWidth = 0;
    return row;
}

// What a menu row adds around its text. Measured around a wide text, as a style may give short rows a
// least width.
QSize menuRowChrome(const QWidget* view, const QFont& font)
{
    const QStyleOptionMenuItem row = menuRow(view, font);
    const QSize text(1000, row.fontMetrics.height());
    return view->style()->sizeFromContents(QStyle::CT_MenuItem, &row, text, view) - QSize(text.width(), 0);
}

// Draws rows as the style draws a menu's entries, check mark and highlight included, so that the list
// reads as the menu it stands in for.
class MenuRowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionMenuItem row = menuRow(option.widget, option.font);
        row.rect = option.rect;
        row.state = QStyle::State_Enabled;
        if (option.state & (QStyle::State_Selected | QStyle::State_HasFocus))
            row.state |= QStyle::State_Selected;
        // As in the menus, only the current entry is checkable: the others show no empty box.
        if (index.data(Qt::CheckStateRole) == Qt::Checked) {
            row.checkType = QStyleOptionMenuItem::NonExclusive;
            row.checked = true;
        }
        const int room = option.rect.width() - menuRowChrome(option.widget, option.font).width();
        // A menu reads & as a mnemonic and a tab as the start of a shortcut; titles mean neither.
        row.text = row.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, room)
                       .replace(QLatin1Char('&'), QLatin1String("&&"))
                       .replace(QLatin1Char('\t'), QLatin1Char(' '));
        option.widget->style()->drawControl(QStyle::CE_MenuItem, &row, painter, option.widget);
    }

    // As wide as nothing, so that rows take the view's width: long titles are elided, never scrolled to.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
    {
        return {0, menuRowChrome(option.widget, option.font).height()};
    }
};

void dressAsMenu(QListView* view)
{
    view->setUniformItemSizes(true);
    view->setItemDelegate(new MenuRowDelegate(view));
    view->setFrameShape(QFrame::NoFrame);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setMouseTracking(true);
}

} // namespace

QString foldForFilter(const QString& text)
{
    QString folded = text.toCaseFolded().normalized(QString::NormalizationForm_D);
    folded.removeIf([](QChar c) { return c.isMark(); });
    return folded;
}

bool matchesFilter(const FilterEntry& entry, const QString& typed)
{
    return containsAll(foldedEntry(entry), filterWords(typed));
}

// The entries the filter lets through, in their order; the current one checked.
class FilterModel : public QAbstractListModel
{
public:
    FilterModel(QList<FilterEntry> entries, qsizetype current, QObject* parent)
        : QAbstractListModel(parent)
        , m_entries(std::move(entries))
        , m_current(current)
    {
        m_shown.resize(m_entries.size());
        std::iota(m_shown.begin(), m_shown.end(), 0);
    }

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : int(m_shown.size()); }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid))
            return {};
        const qsizetype entry = m_shown.at(index.row());
        const QString& detail = m_entries.at(entry).detail;
        if (role == Qt::DisplayRole)
            return m_entries.at(entry).title;
        if (role == Qt::ToolTipRole && !detail.isEmpty())
            return detail;
        if (role == Qt::CheckStateRole && entry == m_current)
            return Qt::Checked;
        return {};
    }

    void filter(const QString& typed)
    {
        // Folded on the first keystroke rather than at opening, which stays quick.
        if (m_folded.size() != m_entries.size()) {
            m_folded.reserve(m_entries.size());
            for (const FilterEntry& entry : m_entries)
                m_folded.append(foldedEntry(entry));
        }
        const QStringList words = filterWords(typed);
        beginResetModel();
        m_shown.clear();
        for (qsizetype i = 0; i < m_entries.size(); ++i) {
            if (containsAll(m_folded.at(i), words))
                m_shown.append(i);
        }
        endResetModel();
    }

    const QList<qsizetype>& shown() const { return m_shown; }
    // The row to select: the current entry's while shown, else the first.
    int preferredRow() const
    {
        const auto found = std::lower_bound(m_shown.cbegin(), m_shown.cend(), m_current);
        return found != m_shown.cend() && *found == m_current ? int(found - m_shown.cbegin()) : 0;
    }

private:
    QList<FilterEntry> m_entries;
    qsizetype m_current;
    QStringList m_folded;     // foldedEntry() of each entry, once filtering starts
    QList<qsizetype> m_shown; // ascending
};

FilterList::FilterList(QList<FilterEntry> entries, qsizetype current, qsizetype wholeRows, const QString& footer,
                       QWidget* parent)
    : QFrame(parent, Qt::Popup)
    , m_model(new FilterModel(std::move(entries), current, this))
    , m_field(new QLineEdit(this))
    , m_list(new QListView(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setPalette(QApplication::palette("QMenu"));
    setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    // Menus are drawn on the base colour, as the list's rows are.
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);

    m_field->setPlaceholderText(tr("Filter"));
    m_field->setAccessibleName(tr("Filter"));
    m_field->installEventFilter(this);
    connect(m_field, &QLineEdit::textChanged, this, &FilterList::refilter);
    layout->addWidget(m_field);

    dressAsMenu(m_list);
    m_list->setModel(m_model);
    m_list->setAccessibleName(tr("Entries"));
    // The field keeps the keys; the list follows the mouse as a menu does.
    m_list->setFocusPolicy(Qt::NoFocus);
    connect(m_list, &QListView::entered, this, [this](const QModelIndex& index) {
        // A list that opens under a resting pointer keeps the current entry
        // selected until the pointer moves, as a menu does.
        if (QCursor::pos() != m_openedUnder)
            selectRow(index.row());
    });
    connect(m_list, &QListView::clicked, this, [this](const QModelIndex& index) { choose(index.row()); });
    const int rows = int(std::clamp<qsizetype>(m_model->rowCount(), 1, mostRows));
    m_list->setFixedHeight(rows * menuRowChrome(m_list, m_list->font()).height());
    layout->addWidget(m_list);

    if (!footer.isEmpty()) {
        m_footer = new QListView(this);
        dressAsMenu(m_footer);
        m_footer->setModel(new FilterModel({{footer, {}}}, -1, m_footer));
        m_footer->setAccessibleName(footer);
        QFont italic = m_footer->font();
        italic.setItalic(true);
        m_footer->setFont(italic);
        m_footer->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        // Reached with Tab from the field.
        m_footer->setFocusPolicy(Qt::TabFocus);
        m_footer->setFixedHeight(menuRowChrome(m_footer, italic).height());
        m_footer->installEventFilter(this);
        m_footer->viewport()->installEventFilter(this);
        connect(m_footer, &QListView::entered, m_footer,
                [this](const QModelIndex& index) { m_footer->setCurrentIndex(index); });
        connect(m_footer, &QListView::clicked, this, &FilterList::chooseFooter);
        layout->addWidget(m_footer);
    }
    // As wide as a menu of the first rows: their titles and the footer whole,
    // beside the check column and the scroll bar.
    int text = m_footer ? m_footer->fontMetrics().horizontalAdvance(footer) : 0;
    for (qsizetype i = 0; i < std::min<qsizetype>(wholeRows, m_model->rowCount()); ++i)
        text = std::max(text, m_list->fontMetrics().horizontalAdvance(m_model->index(int(i), 0).data().toString()));
    setFixedWidth(text + menuRowChrome(m_list, m_list->font()).width()
                  + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, m_list)
                  + layout->contentsMargins().left() + layout->contentsMargins().right() + 2 * frameWidth());
}

void FilterList::popup(const QPoint& at, std::optional<int> above)
{
    adjustSize();
    m_openedUnder = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(at);
    const QRect room = screen ? screen->availableGeometry() : QGuiApplication::primaryScreen()->availableGeometry();
    // As a menu does, it opens upwards from above when there is no room below.
    int y = at.y();
    if (above && y + height() > room.bottom() + 1 && *above - height() >= room.top())
        y = *above - height();
    move(std::clamp(at.x(), room.left(), std::max(room.left(), room.right() + 1 - width())),
         std::clamp(y, room.top(), std::max(room.top(), room.bottom() + 1 - height())));
    show();
    m_field->setFocus(Qt::PopupFocusReason);
    selectRow(m_model->preferredRow(), QAbstractItemView::PositionAtCenter);
}

QList<qsizetype> FilterList::shownEntries() const
{
    return m_model->shown();
}

bool FilterList::eventFilter(QObject* watched, QEvent* event)
{
    if (m_footer && watched == m_footer->viewport() && event->type() == QEvent::Leave)
        m_footer->selectionModel()->clear();
    if (event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    const bool choosing = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (watched == m_footer && choosing) {
        chooseFooter();
        return true;
    }
    if (watched != m_field)
        return QFrame::eventFilter(watched, event);
    switch (key->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        // The list moves as it would under its own keys, stopping at its ends.
        QCoreApplication::sendEvent(m_list, event);
        return true;
    case Qt::Key_Home:
    case Qt::Key_End: {
        // Without Control these move the field's cursor.
        if (!key->modifiers().testFlag(Qt::ControlModifier))
            return false;
        QKeyEvent plain(QEvent::KeyPress, key->key(), Qt::NoModifier);
        QCoreApplication::sendEvent(m_list, &plain);
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_list->selectionModel()->isSelected(m_list->currentIndex()))
            choose(m_list->currentIndex().row());
        return true;
    case Qt::Key_Escape:
        close();
        return true;
    default:
        return false;
    }
}

void FilterList::refilter()
{
    m_model->filter(m_field->text());
    selectRow(m_model->preferredRow(), QAbstractItemView::PositionAtCenter);
}

void FilterList::selectRow(int row, QAbstractItemView::ScrollHint scroll)
{
    const QModelIndex index = m_model->index(row, 0); // invalid when nothing is shown
    m_list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    if (index.isValid())
        m_list->scrollTo(index, scroll);
}

// Closed before telling, so that what is chosen may open the next popup.
void FilterList::choose(int row)
{
    const qsizetype entry = m_model->shown().at(row);
    close();
    emit chosen(entry);
}

void FilterList::chooseFooter()
{
    close();
    emit footerChosen();
}
