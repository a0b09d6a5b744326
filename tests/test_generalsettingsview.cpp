#include "settings/generalsettingsview.h"
#include "settings/settingsview.h"
#include "store/config.h"
#include "themes/defaultlayouts.h"
#include "themes/themedata.h"
#include "support/testenvironment.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QSignalSpy>
#include <QTabWidget>

namespace {

QString settingsPath()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/plinkBox-settings.json");
}

// The settings file as last written; removing it first makes each later
// write visible on its own.
SettingsData storedSettings()
{
    QFile file(settingsPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return settingsDataFromJson(file.readAll()).value.value_or(SettingsData{});
}

bool settingsWritten()
{
    return QFile::exists(settingsPath());
}

void forgetSettingsFile()
{
    QFile::remove(settingsPath());
}

// Picks an entry the way a user does: open the list, move to the entry,
// press Return. Choosing the entry that is already current is possible too.
void chooseEntry(QComboBox* picker, int row)
{
    picker->showPopup();
    QAbstractItemView* list = picker->view();
    list->setCurrentIndex(list->model()->index(row, 0));
    QTest::keyClick(list, Qt::Key_Return);
}

bool storedSwitch(const SettingsData& data, const QString& name)
{
    if (name == QLatin1String("playSoundsSwitch"))
        return data.playsSounds;
    if (name == QLatin1String("largeSizedSwitch"))
        return data.superSized;
    if (name == QLatin1String("floatingWindowSwitch"))
        return data.isFloating;
    if (name == QLatin1String("loopTracksSwitch"))
        return data.loopTracks;
    return data.shuffleTracks;
}

} // namespace

class GeneralSettingsViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void settingsWindowHasBothTabsWithIcons();
    void switchesSaveEachUserChange_data();
    void switchesSaveEachUserChange();
    void switchesFollowTheStoreWithoutSaving();
    void choosingAThemeSavesThenLoadsItsLayout();
    void choosingTheCurrentThemeTriggersNothing();
    void unknownThemeLeavesThePickerEmpty();
};

void GeneralSettingsViewTest::settingsWindowHasBothTabsWithIcons()
{
    Config config;
    SettingsView window(config);
    QVERIFY(window.isWindow());
    QCOMPARE(window.size(), QSize(640, 640));
    auto* tabs = window.findChild<QTabWidget*>();
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(0), QStringLiteral("General"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Playlists"));
    // Whatever the desktop's icon theme holds, each tab shows some picture.
    for (int tab = 0; tab < tabs->count(); ++tab)
        QVERIFY(!tabs->tabIcon(tab).pixmap(16, 16).isNull());
}

void GeneralSettingsViewTest::switchesSaveEachUserChange_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    QTest::newRow("sounds") << "playSoundsSwitch" << "Play sounds";
    QTest::newRow("large") << "largeSizedSwitch" << "Large-sized";
    QTest::newRow("floating") << "floatingWindowSwitch" << "Floating window";
    QTest::newRow("loop") << "loopTracksSwitch" << "Loop tracks";
    QTest::newRow("shuffle") << "shuffleTracksSwitch" << "Shuffle tracks";
}

void GeneralSettingsViewTest::switchesSaveEachUserChange()
{
    QFETCH(QString, name);
    QFETCH(QString, label);
    Config config;
    const bool initial = storedSwitch(storedSettings(), name);
    forgetSettingsFile();

    GeneralSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* box = view.findChild<QCheckBox*>(name);
    QVERIFY(box);
    QCOMPARE(box->text(), label);
    QCOMPARE(box->isChecked(), initial);
    QVERIFY2(!settingsWritten(), "showing the view saves nothing");

    QTest::mouseClick(box, Qt::LeftButton, {}, box->rect().center());
    QCOMPARE(box->isChecked(), !initial);
    QVERIFY(settingsWritten());
    QCOMPARE(storedSwitch(storedSettings(), name), !initial);

    forgetSettingsFile();
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
    QVERIFY2(settingsWritten(), "the second toggle writes again");
    QCOMPARE(storedSwitch(storedSettings(), name), initial);
    QCOMPARE(box->isChecked(), initial);
}

void GeneralSettingsViewTest::switchesFollowTheStoreWithoutSaving()
{
    Config config;
    GeneralSettingsView view(config);
    auto* loop = view.findChild<QCheckBox*>(QStringLiteral("loopTracksSwitch"));
    auto* shuffle = view.findChild<QCheckBox*>(QStringLiteral("shuffleTracksSwitch"));
    auto* large = view.findChild<QCheckBox*>(QStringLiteral("largeSizedSwitch"));
    forgetSettingsFile();

    // As the "Player" menu does: the store changes, the menu saves on its own.
    config.setLoopTracks(!config.loopTracks());
    config.setShuffleTracks(!config.shuffleTracks());
    config.setSuperSized(true);
    QCOMPARE(loop->isChecked(), config.loopTracks());
    QCOMPARE(shuffle->isChecked(), config.shuffleTracks());
    QVERIFY(large->isChecked());
    QVERIFY2(!settingsWritten(), "mirroring the store must not save");
}

void GeneralSettingsViewTest::choosingAThemeSavesThenLoadsItsLayout()
{
    Config config;
    GeneralSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* picker = view.findChild<QComboBox*>(QStringLiteral("themePicker"));
    QVERIFY(picker);
    QCOMPARE(picker->count(), config.availableThemes().size());
    for (int row = 0; row < picker->count(); ++row)
        QCOMPARE(picker->itemText(row), config.availableThemes().at(row));
    QCOMPARE(picker->currentText(), config.currentTheme());

    // When the new layout arrives, the settings file must already name its theme.
    QString savedWhenLayoutArrived;
    connect(&config, &Config::changed, this, [&](Config::Property property) {
        if (property == Config::Property::playerWidth && savedWhenLayoutArrived.isEmpty())
            savedWhenLayoutArrived = storedSettings().currentTheme;
    });
    const QString chosen = QStringLiteral("max-graphite");
    chooseEntry(picker, int(config.availableThemes().indexOf(chosen)));

    QCOMPARE(config.currentTheme(), chosen);
    QCOMPARE(storedSettings().currentTheme, chosen);
    QCOMPARE(savedWhenLayoutArrived, chosen);
    QCOMPARE(config.geometry(), familyLayout(ThemeFamily::max));
    QCOMPARE(picker->currentText(), chosen);
}

void GeneralSettingsViewTest::choosingTheCurrentThemeTriggersNothing()
{
    Config config;
    GeneralSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* picker = view.findChild<QComboBox*>(QStringLiteral("themePicker"));
    forgetSettingsFile();
    QSignalSpy changes(&config, &Config::changed);
    QSignalSpy activations(picker, &QComboBox::activated);

    chooseEntry(picker, picker->currentIndex());

    QCOMPARE(activations.count(), 1); // the choice did reach the view
    QCOMPARE(changes.count(), 0);
    QVERIFY(!settingsWritten());
}

void GeneralSettingsViewTest::unknownThemeLeavesThePickerEmpty()
{
    Config config;
    config.setCurrentTheme(QStringLiteral("no-such-theme"));
    GeneralSettingsView view(config);
    auto* picker = view.findChild<QComboBox*>(QStringLiteral("themePicker"));
    QCOMPARE(picker->count(), config.availableThemes().size());
    QCOMPARE(picker->currentIndex(), -1);

    // A theme known again is shown again.
    config.setCurrentTheme(QStringLiteral("neo-lime"));
    QCOMPARE(picker->currentText(), QStringLiteral("neo-lime"));
}

PLINK_TEST_MAIN_WITH(QApplication, GeneralSettingsViewTest)
#include "test_generalsettingsview.moc"
