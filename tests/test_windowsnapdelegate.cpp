#include "app/windowsnapdelegate.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

class WindowSnapDelegateTest : public QObject
{
    Q_OBJECT

private slots:
    void snapsToTheNearEdges_data()
    {
        // The usable area lies below a 30-point panel: 0,30 to 1280,800.
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QPoint>("expected"); // (-1, -1): left alone
        const QPoint none(-1, -1);
        QTest::newRow("10 from the left snaps") << QRect(10, 300, 269, 96) << QPoint(0, 300);
        QTest::newRow("11 from the left stays") << QRect(11, 300, 269, 96) << none;
        QTest::newRow("partly off the left") << QRect(-7, 300, 269, 96) << QPoint(0, 300);
        QTest::newRow("past the right edge") << QRect(1280 - 269 + 10, 300, 269, 96) << QPoint(1280 - 269, 300);
        QTest::newRow("4 below the top and 6 from the right") << QRect(1005, 34, 269, 96) << QPoint(1011, 30);
        QTest::newRow("below the bottom") << QRect(500, 800 - 96 + 3, 269, 96) << QPoint(500, 800 - 96);
        QTest::newRow("both sides near: left wins over a nearer right") << QRect(7, 300, 1276, 96) << QPoint(0, 300);
        QTest::newRow("top and bottom near: bottom wins over a nearer top") << QRect(500, 33, 269, 760) << QPoint(500, 40);
    }
    void snapsToTheNearEdges()
    {
        QFETCH(QRect, window);
        QFETCH(QPoint, expected);
        const QRect area(0, 30, 1280, 770);
        const auto place = snapped(window, area);
        QCOMPARE(place.value_or(QPoint(-1, -1)), expected);
        if (place) // snapping again from there changes nothing more
            QCOMPARE(snapped(QRect(*place, window.size()), area), place);
    }

    void movedWindowEndsFlush()
    {
        QWidget window(nullptr, Qt::FramelessWindowHint);
        window.setFixedSize(269, 96);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        WindowSnapDelegate delegate;
        delegate.attach(&window);
        const QRect area = window.screen()->availableGeometry();
        window.move(area.x() + 8, area.y() + 200);
        QTRY_COMPARE(window.frameGeometry().topLeft(), QPoint(area.x(), area.y() + 200));
        window.move(area.x() + 300, area.y() + 300);
        QTRY_COMPARE(window.frameGeometry().topLeft(), QPoint(area.x() + 300, area.y() + 300));
    }
};

PLINK_TEST_MAIN_WITH(QApplication, WindowSnapDelegateTest)
#include "test_windowsnapdelegate.moc"
