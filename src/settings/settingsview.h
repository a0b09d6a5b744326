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

    // Where the window's frame opens on the player's screen: beside the
    // player where it fits (narrowed, down to smallest, if need be), else
    // where the player covers least of it.
    static QRect placeBeside(const QRect& player, const QSize& frame, const QSize& smallest, const QRect& available);

protected:
    bool event(QEvent* event) override;
};
