#pragma once

#include <QAbstractItemView>
#include <QFrame>
#include <QList>
#include <QString>

#include <optional>

class FilterModel;
class QLineEdit;
class QListView;

struct FilterEntry
{
    QString title;  // shown
    QString detail; // matched too and shown as the row's tooltip; may be empty
};

// Text as the filter compares it: case-folded, without accents (combining marks after decomposition).
QString foldForFilter(const QString& text);
// Whether every white-space separated word typed is found in the entry's title or detail, both folded;
// no word matches everything.
bool matchesFilter(const FilterEntry& entry, const QString& typed);

// A menu-like popup for choosing one entry among thousands: a filter field over a list that the typed
// words narrow. The keys stay with the field; the arrows and pages move the list's selection.
class FilterList : public QFrame
{
    Q_OBJECT

public:
    // current is the entry marked as the current one (-1 none); the first wholeRows titles fit whole, as
    // in a menu of them; footer is the text of a last entry below the list (none when empty).
    FilterList(QList<FilterEntry> entries, qsizetype current, qsizetype wholeRows, const QString& footer = {},
               QWidget* parent = nullptr);

    // Shows it with its top-left at a global point, kept on that point's screen, or with its bottom
    // at the height above when there is no room below; it deletes itself once closed.
    void popup(const QPoint& at, std::optional<int> above = {});
    QLineEdit* filterField() const { return m_field; }
    // Indexes into the constructor's entries, of the rows now shown, in order.
    QList<qsizetype> shownEntries() const;

signals:
    // Sent once the popup has closed; index is into the constructor's entries.
    void chosen(qsizetype index);
    void footerChosen();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refilter();
    void selectRow(int row, QAbstractItemView::ScrollHint scroll = QAbstractItemView::EnsureVisible);
    void choose(int row);
    void chooseFooter();

    FilterModel* m_model;
    QLineEdit* m_field;
    QPoint m_openedUnder; // where the pointer rested when it opened
    QListView* m_list;
    QListView* m_footer = nullptr; // the footer's one row, drawn as the list's are
};
