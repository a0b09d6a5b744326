#include "settings/generalsettingsview.h"
#include "settings/settingsview.h"
#include "settingsfixtures.h"
#include "store/config.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"
#include "themes/defaultlayouts.h"
#include "themes/themedata.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QSignalSpy>
#include <QTabWidget>

using namespace SettingsFixtures;
using TestFiles::settingsPath;
using TestFiles::storedSettings;

namespace {

const struct {
    const char* name;
    const char* label;
    bool SettingsData::*stored;
    void (Config::*set)(const bool&);
} switches[] = {
    {"playSoundsSwitch", "Play sounds", &SettingsData::playsSounds, &Config::setPlaysSounds},
    {"largeSizedSwitch", "Large-sized", &SettingsData::superSized, &Config::setSuperSized},
    {"floatingWindowSwitch", "Floating window", &SettingsData::isFloating, &Config::setIsFloating},
    {"loopTracksSwitch", "Loop tracks", &SettingsData::loopTracks, &Config::setLoopTracks},
    {"shuffleTracksSwitch", "Shuffle tracks", &SettingsData::shuffleTracks, &Config::setShuffleTracks},
};

// As a user picks: open the list, move to the entry, press Return.
void chooseEntry(QComboBox* picker, int row)
{
    picker->showPopup();
    picker->view()->setCurrentIndex(picker->view()->model()->index(row, 0));
    QTest::keyClick(picker->view(), Qt::Key_Return);
}

} // namespace

class GeneralSettingsViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void switchesSaveEachClickAndOnlyMirrorTheStore_data();
    void switchesSaveEachClickAndOnlyMirrorTheStore();
    void windowsThemeChoiceSavesThenLoadsUnlessAlreadyCurrent();
};

void GeneralSettingsViewTest::switchesSaveEachClickAndOnlyMirrorTheStore_data()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < int(std::size(switches)); ++row)
        QTest::newRow(switches[row].name) << row;
}

void GeneralSettingsViewTest::switchesSaveEachClickAndOnlyMirrorTheStore()
{
    QFETCH(int, row);
    const auto& entry = switches[row];
    Config config;
    const bool initial = storedSettings().*entry.stored;
    QFile::remove(settingsPath());
    GeneralSettingsView view(config);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* box = view.findChild<QCheckBox*>(entry.name);
    QCOMPARE(box->text(), QString(entry.label));
    QCOMPARE(box->isChecked(), initial);
    QVERIFY2(!QFile::exists(settingsPath()), "showing the view saves nothing");
    for (const bool expected : {!initial, initial}) { // each click is written
        QTest::mouseClick(box, Qt::LeftButton, {}, box->rect().center());
        QCOMPARE(storedSettings().*entry.stored, expected);
        QVERIFY(QFile::remove(settingsPath()));
    }
    // Changed in the store, as the "Player" menu does (and saves itself): shown, not saved.
    (config.*entry.set)(!initial);
    QCOMPARE(box->isChecked(), !initial);
    QVERIFY(!QFile::exists(settingsPath()));
}

void GeneralSettingsViewTest::windowsThemeChoiceSavesThenLoadsUnlessAlreadyCurrent()
{
    Config config;
    SettingsView window(config);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.windowTitle(), QStringLiteral("Settings"));
    QCOMPARE(window.size(), QSize(640, 640));
    auto* tabs = window.findChild<QTabWidget*>();
    QCOMPARE(tabs->count(), 2);
    QCOMPARE((QStringList{tabs->tabText(0), tabs->tabText(1)}), (QStringList{"General", "Playlists"}));
    auto* picker = window.findChild<QComboBox*>("themePicker");

    QFile::remove(settingsPath());
    QSignalSpy changes(&config, &Config::changed);
    QSignalSpy activations(picker, &QComboBox::activated);
    chooseEntry(picker, picker->currentIndex());
    QCOMPARE(activations.count(), 1);
    QCOMPARE(changes.count(), 0);
    QVERIFY(!QFile::exists(settingsPath()));

    // When the new layout arrives, the settings file must already name its theme.
    QString savedWhenLayoutArrived;
    connect(&config, &Config::changed, this, [&](Config::Property property) {
        if (property == Config::Property::playerWidth && savedWhenLayoutArrived.isEmpty())
            savedWhenLayoutArrived = storedSettings().currentTheme;
    });
    const QString chosen = QStringLiteral("max-graphite");
    chooseEntry(picker, int(config.availableThemes().indexOf(chosen)));
    QCOMPARE(savedWhenLayoutArrived, chosen);
    QCOMPARE(config.geometry(), familyLayout(ThemeFamily::max));
    QCOMPARE(picker->currentText(), chosen);

    config.setCurrentTheme(QStringLiteral("no-such-theme"));
    QCOMPARE(picker->count(), config.availableThemes().size());
    QCOMPARE(picker->currentIndex(), -1);
}

PLINK_TEST_MAIN_WITH(QApplication, GeneralSettingsViewTest)
#include "test_generalsettingsview.moc"
