#pragma once

#include "store/config.h"

#include <QList>
#include <QWidget>

class QCheckBox;
class QComboBox;

// The "General" tab: the theme picker and the switches, all bound to Config.
// A user's change is stored and saved at once; a change that only mirrors the
// store (the first showing, or the "Player" menu toggling loop and shuffle)
// updates the controls and runs nothing.
class GeneralSettingsView : public QWidget
{
    Q_OBJECT

public:
    explicit GeneralSettingsView(Config& config, QWidget* parent = nullptr);

private:
    struct Switch {
        Config::Property property;
        bool (Config::*value)() const;
        void (Config::*setValue)(const bool&);
        QCheckBox* box = nullptr;
    };

    void showThemes();
    void showSwitch(const Switch& entry);
    void onThemeChosen(int index);
    void onSwitchClicked(const Switch& entry, bool checked);
    void onConfigChanged(Config::Property property);

    Config& m_config;
    QComboBox* m_themePicker = nullptr;
    QList<Switch> m_switches;
};
