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
    // player where there is room, else where the player covers least of it.
    // It keeps its size unless the screen is smaller.
    static QRect placeBeside(const QRect& player, const QSize& frame, const QRect& available);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};
