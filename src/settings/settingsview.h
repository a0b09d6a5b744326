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

    // Where the window opens: beside the player (right, else left) on the
    // player's screen where it fits, else centred on that screen.
    static QPoint placeBeside(const QRect& player, const QSize& frame, const QRect& available);

protected:
    bool event(QEvent* event) override;
};
