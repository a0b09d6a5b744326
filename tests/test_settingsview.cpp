#include "app/commandmenu.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "settings/settingsview.h"
#include "store/config.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QTabWidget>
#include <QToolButton>

class SettingsViewTest : public QObject
{
    Q_OBJECT

private slots:
    // The player window 269 × 96 on a 1280 × 800 screen, the settings frame 648 × 672.
    void opensBesideThePlayer_data()
    {
        QTest::addColumn<QRect>("player");
        QTest::addColumn<QRect>("expected");
        const QSize frame(648, 672);
        QTest::newRow("right of it") << QRect(20, 50, 269, 96) << QRect(QPoint(301, 50), frame);
        QTest::newRow("left of it") << QRect(1000, 50, 269, 96) << QRect(QPoint(340, 50), frame);
        QTest::newRow("pushed up onto the screen") << QRect(20, 700, 269, 96) << QRect(QPoint(301, 128), frame);
        QTest::newRow("below a wide player") << QRect(0, 0, 1280, 100) << QRect(QPoint(0, 112), QSize(648, 672));
        QTest::newRow("narrowed to the room beside it") << QRect(505, 352, 269, 96) << QRect(786, 128, 494, 672);
        QTest::newRow("covered least where nothing fits") << QRect(300, 300, 700, 200) << QRect(0, 128, 648, 672);
    }
    void opensBesideThePlayer()
    {
        QFETCH(QRect, player);
        QFETCH(QRect, expected);
        QCOMPARE(SettingsView::placeBeside(player, QSize(648, 672), QSize(420, 300), QRect(0, 0, 1280, 800)),
                 expected);
    }

    // Space plays or pauses, except where the focused control uses it.
    void spaceGoesToTheFocusedControl()
    {
        Config config;
        AudioPlayer player;
        Transport transport(config, player);
        CommandMenu commands(config, player, transport);
        SettingsView window(config);
        commands.addShortcutsTo(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy playPause(commands.menu()->actions().first(), &QAction::triggered);
        auto* box = window.findChild<QCheckBox*>(QStringLiteral("loopTracksSwitch"));
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Space);
        QCOMPARE(config.loopTracks(), false);
        QCOMPARE(playPause.count(), 0);
        auto* tabs = window.findChild<QTabWidget*>();
        tabs->setFocus();
        QTest::keyClick(tabs, Qt::Key_Space);
        QCOMPARE(playPause.count(), 1);
    }

    // Without an icon theme that has them, our own drawings show.
    void iconsWithoutAnIconTheme()
    {
        QIcon::setThemeName(QStringLiteral("no-such-theme"));
        Config config;
        SettingsView window(config);
        const auto same = [](const QIcon& icon, const char* name) {
            const QImage drawn(QStringLiteral(":/icons/ui/%1-32.png").arg(QLatin1String(name)));
            return !drawn.isNull() && icon.pixmap(32).toImage().convertToFormat(drawn.format()) == drawn;
        };
        auto* tabs = window.findChild<QTabWidget*>();
        QVERIFY(same(tabs->tabIcon(0), "preferences-system"));
        QVERIFY(same(tabs->tabIcon(1), "view-media-playlist"));
        QVERIFY(same(window.findChild<QToolButton*>(QStringLiteral("removeTracksButton"))->icon(), "user-trash"));
    }
};

PLINK_TEST_MAIN_WITH(QApplication, SettingsViewTest)
#include "test_settingsview.moc"
