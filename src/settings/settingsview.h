#pragma once

#include <QWidget>

class Config;

// The settings window: the "General" and "Playlists" tabs over the shared Config.
class SettingsView : public QWidget
{
    Q_OBJECT

public:
    explicit SettingsView(Config& config, QWidget* parent = nullptr);
    ~SettingsView() override;
};
