#include "settings/generalsettingsview.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

GeneralSettingsView::GeneralSettingsView(Config& config, QWidget* parent)
    : QWidget(parent)
    , m_config(config)
{
    auto* themeSection = new QGroupBox(this);
    auto* themeForm = new QFormLayout(themeSection);
    m_themePicker = new QComboBox(themeSection);
    m_themePicker->setObjectName(QStringLiteral("themePicker"));
    m_themePicker->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_themePicker->view()->setAccessibleName(tr("Themes"));
    themeForm->addRow(tr("Theme"), m_themePicker);

    auto* switchSection = new QGroupBox(this);
    auto* switchForm = new QFormLayout(switchSection);
    const struct {
        QString label;
        const char* objectName;
        Switch entry;
    } rows[] = {
        {tr("Play sounds"), "playSoundsSwitch",
         {Config::Property::playsSounds, &Config::playsSounds, &Config::setPlaysSounds}},
        {tr("Large-sized"), "largeSizedSwitch",
         {Config::Property::superSized, &Config::superSized, &Config::setSuperSized}},
        {tr("Floating window"), "floatingWindowSwitch",
         {Config::Property::isFloating, &Config::isFloating, &Config::setIsFloating}},
        {tr("Loop tracks"), "loopTracksSwitch",
         {Config::Property::loopTracks, &Config::loopTracks, &Config::setLoopTracks}},
        {tr("Shuffle tracks"), "shuffleTracksSwitch",
         {Config::Property::shuffleTracks, &Config::shuffleTracks, &Config::setShuffleTracks}},
    };
    // A switch reacts where its box and label are, so it is made no wider than they.
    for (const auto& row : rows) {
        Switch entry = row.entry;
        entry.box = new QCheckBox(row.label, switchSection);
        entry.box->setObjectName(QLatin1String(row.objectName));
        entry.box->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
        if (entry.property == Config::Property::isFloating) {
            // The window's level is set once, when the player window is set up.
            auto* note = new QLabel(tr("Takes effect the next time plinkBox starts."), switchSection);
            note->setObjectName(QStringLiteral("floatingWindowNote"));
            note->setForegroundRole(QPalette::PlaceholderText);
            auto* line = new QHBoxLayout;
            line->addWidget(entry.box);
            line->addWidget(note);
            line->addStretch();
            switchForm->addRow(line);
        } else {
            switchForm->addRow(entry.box);
        }
        m_switches.append(entry);
    }

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(themeSection);
    layout->addWidget(switchSection);
    layout->addStretch();

    showThemes();
    for (const Switch& entry : std::as_const(m_switches)) {
        showSwitch(entry);
        // clicked, unlike toggled, comes only from the user, never from showing the store.
        connect(entry.box, &QCheckBox::clicked, this,
                [this, entry](bool checked) { onSwitchClicked(entry, checked); });
    }
    connect(m_themePicker, &QComboBox::activated, this, &GeneralSettingsView::onThemeChosen);
    connect(&m_config, &Config::changed, this, &GeneralSettingsView::onConfigChanged);
}

void GeneralSettingsView::showThemes()
{
    m_themePicker->clear();
    m_themePicker->addItems(m_config.availableThemes());
    // A theme missing from the catalogue leaves the picker without a choice.
    m_themePicker->setCurrentIndex(int(m_config.availableThemes().indexOf(m_config.currentTheme())));
}

void GeneralSettingsView::showSwitch(const Switch& entry)
{
    entry.box->setChecked((m_config.*entry.value)());
}

void GeneralSettingsView::onThemeChosen(int index)
{
    const QStringList themes = m_config.availableThemes();
    if (index < 0 || index >= themes.size() || themes.at(index) == m_config.currentTheme())
        return;
    // Saved first, so that the settings file names the theme whose layout is then read.
    m_config.setCurrentTheme(themes.at(index));
    m_config.saveSettings();
    m_config.loadTheme();
}

void GeneralSettingsView::onSwitchClicked(const Switch& entry, bool checked)
{
    if ((m_config.*entry.value)() == checked)
        return;
    (m_config.*entry.setValue)(checked);
    m_config.saveSettings();
}

void GeneralSettingsView::onConfigChanged(Config::Property property)
{
    if (property == Config::Property::currentTheme || property == Config::Property::availableThemes) {
        showThemes();
        return;
    }
    for (const Switch& entry : std::as_const(m_switches)) {
        if (entry.property == property)
            showSwitch(entry);
    }
}
