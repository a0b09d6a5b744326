#include "app/appdelegate.h"

#include "app/commandmenu.h"
#include "app/mprisservice.h"
#include "app/trackopener.h"
#include "app/windowsetup.h"
#include "app/windowsnapdelegate.h"
#include "playback/audioplayer.h"
#include "player/contentview.h"
#include "player/transport.h"
#include "settings/settingsview.h"
#include "store/config.h"

#include <QGuiApplication>
#include <QIcon>
#include <QMenu>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWindow>

#include <utility>

void AppDelegate::choosePlatform()
{
    // A Wayland client may not place its window, keep it above others or snap
    // it, which a floating player lives by: go through XWayland unless the
    // user chose a platform (QT_QPA_PLATFORM=wayland opts out).
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
}

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent)
    , m_config(std::make_unique<Config>())
    , m_audioPlayer(std::make_unique<AudioPlayer>())
    , m_snapDelegate(std::make_unique<WindowSnapDelegate>())
    , m_transport(std::make_unique<Transport>(*m_config, *m_audioPlayer))
{
    m_contentView = std::make_unique<ContentView>(*m_config, *m_audioPlayer, *m_transport);
    m_commandMenu = std::make_unique<CommandMenu>(*m_config, *m_audioPlayer, *m_transport);
    m_contentView->setCommandMenu(m_commandMenu->menu());
    m_commandMenu->addShortcutsTo(m_contentView.get());
    connect(m_contentView.get(), &ContentView::settingsRequested, this, &AppDelegate::showSettings);
    connect(m_contentView.get(), &ContentView::filesDropped, this, [this](const QList<QUrl>& urls) { openFiles(urls); });
    connect(m_commandMenu.get(), &CommandMenu::settingsRequested, this, &AppDelegate::showSettings);

    m_trackOpener = std::make_unique<TrackOpener>(*m_config, *m_audioPlayer, *m_transport);

    m_contentView->setTranslucent(compositorRunning());
    m_contentView->show();
    QTimer::singleShot(0, this, &AppDelegate::windowSetUp);
    // What the first frame does not show waits for it; a window that is not
    // painted soon (hidden, minimised) does not hold it up for long.
    m_contentView->installEventFilter(this);
    QTimer::singleShot(1000, this, &AppDelegate::finishStartUp);
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_contentView.get() && event->type() == QEvent::Paint) {
        m_contentView->removeEventFilter(this);
        QTimer::singleShot(0, this, &AppDelegate::finishStartUp);
    }
    return false;
}

void AppDelegate::finishStartUp()
{
    if (m_mpris)
        return;
    // Media keys and the desktop's controls; without a session bus the
    // player simply goes without them.
    m_mpris = std::make_unique<MprisService>(*m_config, *m_audioPlayer, *m_transport, [this] { raisePlayer(); },
                                             [this](const QList<QUrl>& urls) { openFiles(urls); });
    m_mpris->registerOnSessionBus();
    // Decoding the icon costs the first frame a millisecond; the window
    // manager takes it as well a moment later.
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/plinkbox.png")));
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        m_trayIcon = new QSystemTrayIcon(QGuiApplication::windowIcon(), this);
        // The time and the track, as the skin tells them.
        m_trayIcon->setToolTip(m_contentView->nowPlayingText());
        connect(m_contentView.get(), &ContentView::nowPlayingChanged, m_trayIcon,
                [this] { m_trayIcon->setToolTip(m_contentView->nowPlayingText()); });
        m_trayIcon->setContextMenu(m_commandMenu->menu());
        m_trayIcon->show();
    }
    for (auto& [urls, done] : std::exchange(m_pendingOpens, {}))
        m_trackOpener->open(urls, std::move(done));
}

MprisService& AppDelegate::mpris()
{
    finishStartUp();
    return *m_mpris;
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::windowSetUp()
{
    // Frameless and fixed in size the view already is; here it becomes
    // movable, floating if chosen, and snapping. Done once per launch.
    ContentView* window = m_contentView.get();
    window->setMovableByBackground(true);
    if (m_config->isFloating()) {
        // Every workspace first, then above other windows.
        showOnAllWorkspaces(window);
        // setWindowFlags() would hide the shown window; the QWindow's do not.
        if (QWindow* handle = window->windowHandle())
            handle->setFlags(handle->flags() | Qt::WindowStaysOnTopHint);
    }
    m_snapDelegate->attach(window);
}

void AppDelegate::raisePlayer()
{
    ContentView* window = m_contentView.get();
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

void AppDelegate::openFiles(const QList<QUrl>& urls, std::function<void()> done)
{
    // Files handed over at launch are read once the window is up.
    if (!m_mpris) {
        m_pendingOpens.append({urls, std::move(done)});
        return;
    }
    m_trackOpener->open(urls, std::move(done));
}

void AppDelegate::showSettings()
{
    const bool first = !m_settingsView;
    if (first) {
        m_settingsView = std::make_unique<SettingsView>(*m_config);
        m_settingsView->resize(640, 640);
        m_commandMenu->addShortcutsTo(m_settingsView.get());
    }
    // Opened where the floating player does not cover it; a place the user
    // chose since is kept as long as the player stays clear of it.
    const QRect player = m_contentView->frameGeometry();
    QScreen* screen = m_contentView->screen();
    if (screen && !m_settingsView->isVisible() && (first || m_settingsView->frameGeometry().intersects(player))) {
        // Before it is first shown the window manager has not framed it yet:
        // allow for a title bar and borders.
        const QSize decoration = first ? QSize(8, 32) : m_settingsView->frameGeometry().size() - m_settingsView->size();
        const QRect frame = SettingsView::placeBeside(player, m_settingsView->size() + decoration,
                                                      screen->availableGeometry());
        m_settingsView->resize(frame.size() - decoration);
        m_settingsView->move(frame.topLeft());
    }
    m_settingsView->show();
    m_settingsView->raise();
    m_settingsView->activateWindow();
}
