#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class AudioPlayer;
class CommandMenu;
class Config;
class ContentView;
class MprisService;
class QSystemTrayIcon;
class SettingsView;
class TrackOpener;
class Transport;
class WindowSnapDelegate;

// Owns the shared objects for the life of the process and builds the
// windows: the player window at once, the settings window when first asked
// for.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    // Sets Qt's platform for this session; call before the application exists.
    static void choosePlatform();

    Config& config() const { return *m_config; }
    AudioPlayer& audioPlayer() const { return *m_audioPlayer; }
    Transport& transport() const { return *m_transport; }
    ContentView& contentView() const { return *m_contentView; }
    CommandMenu& commandMenu() const { return *m_commandMenu; }
    SettingsView* settingsView() const { return m_settingsView.get(); }

    // Shows, raises and activates the settings window.
    void showSettings();
    // Brings the player window forward (a second launch, the desktop's controls).
    void raisePlayer();
    // Adds files to the current playlist and plays the first; then calls done.
    void openFiles(const QList<QUrl>& urls, std::function<void()> done = {});
    // What the desktop's media controls drive (set up now if the first frame
    // has not been painted yet).
    MprisService& mpris();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Runs once, after the player window is shown.
    void windowSetUp();
    // The desktop's controls, the tray icon and the files handed over at
    // launch, once the first frame is painted.
    void finishStartUp();

    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_audioPlayer;
    std::unique_ptr<WindowSnapDelegate> m_snapDelegate;
    std::unique_ptr<Transport> m_transport;
    std::unique_ptr<ContentView> m_contentView;
    std::unique_ptr<CommandMenu> m_commandMenu;
    std::unique_ptr<SettingsView> m_settingsView;
    std::unique_ptr<TrackOpener> m_trackOpener;
    std::unique_ptr<MprisService> m_mpris;
    QSystemTrayIcon* m_trayIcon = nullptr; // a child
    QList<std::pair<QList<QUrl>, std::function<void()>>> m_pendingOpens; // until the first frame
};
