#include "settings/settingsview.h"
#include "store/config.h"
#include "support/testenvironment.h"

#include <QAccessible>
#include <QApplication>
#include <QStyleHints>

class SettingsKeysTest : public QObject
{
    Q_OBJECT

private slots:
    // Each control tells a screen reader what it is (a picker, which reads out its entry, through a label). Tab
    // leaves the track table with one press and reaches every control as laid out, tool buttons too where the
    // desktop lets Tab skip them; Shift+Tab walks back. Escape takes back "Are you sure?", a typed name, then closes.
    void controlsAreNamedAndReachedByTabAndEscapeCloses()
    {
        QGuiApplication::styleHints()->setTabFocusBehavior(Qt::TabFocusTextControls);
        Config config;
        config.writePlaylistTracks(config.playlists().first().id, {Track::make("file:///a.mp3", "A", "Band")});
        SettingsView window(config);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        std::function<QStringList(QAccessibleInterface*)> unnamed = [&](QAccessibleInterface* node) {
            const auto labels = node->relations(QAccessible::Label);
            const QAccessibleInterface* named = node->role() != QAccessible::ComboBox ? node
                : labels.isEmpty() ? nullptr : labels.first().first;
            QStringList found;
            if ((node->state().focusable || node->valueInterface()) && !(named && !named->text(QAccessible::Name).isEmpty()))
                found.append(node->object() ? node->object()->objectName() : QString::number(node->role()));
            for (int i = 0; i < node->childCount(); ++i)
                found += unnamed(node->child(i));
            return found;
        };
        QCOMPARE(unnamed(QAccessible::queryAccessibleInterface(&window)), QStringList());

        const auto press = [](Qt::Key key, int times = 1) {
            QStringList seen;
            for (int i = 0; i < times; ++i) {
                QTest::keyClick(QApplication::focusWidget(), key);
                seen.append(QApplication::focusWidget()->objectName());
            }
            return seen;
        };
        press(Qt::Key_Right); // from the tabs to "Playlists"
        QStringList order = QString("playlistPicker newPlaylistButton importButton exportButton playlistNameField "
                                    "trackTable removeTracksButton addTracksButton addFolderButton deletePlaylistButton")
                                .split(' ');
        QCOMPARE(press(Qt::Key_Tab, 6), order.mid(0, 6));
        press(Qt::Key_Space); // selects the row, which the trash button needs
        QCOMPARE(press(Qt::Key_Tab, 5), order.mid(6) << "qt_tabwidget_tabbar");
        std::reverse(order.begin(), order.end());
        QCOMPARE(press(Qt::Key_Backtab, 11), order << "qt_tabwidget_tabbar");

        press(Qt::Key_Backtab);
        press(Qt::Key_Space); // "Delete playlist..." asks "Are you sure?"
        const auto escapeLeavesOpen = [&] { QTest::keyClick(qApp->focusWidget(), Qt::Key_Escape); return window.isVisible(); };
        QVERIFY(escapeLeavesOpen());
        press(Qt::Key_Backtab, 5);
        QTest::keyClicks(QApplication::focusWidget(), "x");
        QVERIFY(escapeLeavesOpen() && !escapeLeavesOpen());
    }
};

PLINK_TEST_MAIN_WITH(QApplication, SettingsKeysTest)
#include "test_settingskeys.moc"
