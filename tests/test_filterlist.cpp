#include "player/filterlist.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QCursor>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>

class FilterListTest : public QObject
{
    Q_OBJECT

    QWidget m_owner; // deletes the lists left open

    // Blue 1, 4, 7 and 10 among reds; the even ones by Bob.
    FilterList* open(qsizetype current, int count = 12)
    {
        QList<FilterEntry> entries;
        for (int i = 0; i < count; ++i)
            entries.append({(i % 3 == 1 ? QStringLiteral("Blue %1") : QStringLiteral("Red %1")).arg(i),
                            i % 2 ? QStringLiteral("Ann") : QStringLiteral("Bob")});
        auto* list = new FilterList(entries, current, 240, QStringLiteral("Edit playlists"), &m_owner);
        list->popup(QPoint(10, 10));
        return list;
    }

private slots:
    void wordsMatchFoldedTitleOrDetail_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("matches");
        QTest::newRow("nothing typed") << " " << true;
        QTest::newRow("capitals with accents") << "ete" << true;
        QTest::newRow("any order, either text") << "  beyonce CRAZY ete" << true;
        QTest::newRow("a word in neither") << "crazy adele" << false;
        QTest::newRow("not across the two") << "etebeyonce" << false;
    }
    void wordsMatchFoldedTitleOrDetail()
    {
        QFETCH(QString, typed);
        QFETCH(bool, matches);
        QCOMPARE(matchesFilter({QStringLiteral("Crazy in ÉTÉ"), QStringLiteral("Beyoncé")}, typed), matches);
    }

    void keysChooseAnEntryOfTheWholeList_data()
    {
        QTest::addColumn<qsizetype>("current");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QKeySequence>("keys");
        QTest::addColumn<qsizetype>("chosen"); // -1: none
        QTest::newRow("first shown, then down") << qsizetype(-1) << "blue" << QKeySequence("Down") << qsizetype(4);
        QTest::newRow("title and detail words") << qsizetype(-1) << "bob blue" << QKeySequence("Down") << qsizetype(10);
        QTest::newRow("control end to the last") << qsizetype(-1) << "blue" << QKeySequence("Ctrl+End") << qsizetype(10);
        QTest::newRow("home is the field's") << qsizetype(4) << "blue" << QKeySequence("Down, Home") << qsizetype(7);
        QTest::newRow("escape") << qsizetype(-1) << "" << QKeySequence("Esc") << qsizetype(-1);
        QTest::newRow("nothing shown") << qsizetype(-1) << "green" << QKeySequence() << qsizetype(-1);
    }
    void keysChooseAnEntryOfTheWholeList()
    {
        QFETCH(qsizetype, current);
        QFETCH(QString, typed);
        QFETCH(QKeySequence, keys);
        QFETCH(qsizetype, chosen);
        FilterList* list = open(current);
        QSignalSpy choices(list, &FilterList::chosen);
        QTest::keyClicks(list->filterField(), typed);
        QTest::keySequence(list->filterField(), keys);
        if (list->isVisible())
            QTest::keyClick(list->filterField(), Qt::Key_Return);
        QCOMPARE(choices.isEmpty() ? -1 : choices.at(0).at(0).value<qsizetype>(), chosen);
        QCOMPARE(list->isVisible(), typed == "green");
        list->close();
    }

    void aClickChoosesTheRowsEntry()
    {
        FilterList* list = open(7);
        QSignalSpy choices(list, &FilterList::chosen);
        QTest::keyClicks(list->filterField(), QStringLiteral("BLUE"));
        QCOMPARE(list->shownEntries(), (QList<qsizetype>{1, 4, 7, 10}));
        QListView* rows = list->findChildren<QListView*>().first();
        QCOMPARE(rows->model()->index(2, 0).data(Qt::CheckStateRole), QVariant(Qt::Checked));
        QTest::mouseClick(rows->viewport(), Qt::LeftButton, {}, rows->visualRect(rows->model()->index(3, 0)).center());
        QCOMPARE(choices.value(0).value(0).value<qsizetype>(), 10);

        // Opened under a resting pointer, it keeps the current entry until the pointer moves.
        list = open(7);
        rows = list->findChildren<QListView*>().first();
        emit rows->entered(rows->model()->index(2, 0));
        QCOMPARE(rows->currentIndex().row(), 7);
        QCursor::setPos(QCursor::pos() + QPoint(1, 1));
        emit rows->entered(rows->model()->index(2, 0));
        QCOMPARE(rows->currentIndex().row(), 2);
        QSignalSpy footer(list, &FilterList::footerChosen);
        QTest::mouseClick(list->findChildren<QListView*>().last()->viewport(), Qt::LeftButton, {}, QPoint(20, 5));
        QCOMPARE(footer.size(), 1);
    }

    void opensCentredOnTheCurrentOfTenThousand()
    {
        QListView* rows = open(6000, 10000)->findChildren<QListView*>().first();
        const QModelIndex current = rows->currentIndex();
        QCOMPARE(current.row(), 6000);
        QVERIFY(rows->selectionModel()->isSelected(current));
        const QRect shown = rows->visualRect(current);
        QCOMPARE(rows->viewport()->height() / shown.height(), 20);
        QVERIFY(qAbs(shown.center().y() - rows->viewport()->rect().center().y()) <= shown.height());
    }
};

PLINK_TEST_MAIN_WITH(QApplication, FilterListTest)
#include "test_filterlist.moc"
