#pragma once

#include "player/skingeometry.h"
#include "player/wheelnotches.h"
#include "store/config.h"

#include <QMenu>
#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <array>

class AudioPlayer;
struct FilterEntry;
class SkinButton;
class SkinScrubBar;
class SkinText;
class SkinTimeTip;
class Transport;

// The skin: the player window's whole face. It draws the current theme's
// pictures where Config says, turns presses into Transport calls, runs the
// scrub bar and the two menus, and keeps the window's size and shape equal
// to the picture's. The arrow keys and the wheel seek and step the volume;
// screen readers hear the title, the artist and the playing state.
class ContentView : public QWidget
{
    Q_OBJECT

public:
    ContentView(Config& config, AudioPlayer& audioPlayer, Transport& transport, QWidget* parent = nullptr);
    ~ContentView() override;

    bool isMinimized() const { return m_isMinimized; }
    bool isDragging() const { return m_isDragging; }
    double dragX() const { return m_dragX; }
    double scale() const { return skinScale(m_config.superSized()); }
    // The pictures' real see-through needs a compositor; without one the
    // window is cut to the picture's outline instead. Set before show().
    void setTranslucent(bool translucent);
    // Dragging the background moves the window (set up once it is shown).
    void setMovableByBackground(bool movable) { m_movableByBackground = movable; }
    // The "Player" command menu, opened by a right click. Not owned.
    void setCommandMenu(QMenu* menu) { m_commandMenu = menu; }
    // The open track's place and length ("1:23 / 4:56"); empty with none open.
    QString positionText() const { return m_shownTime; }
    // "Title — Artist", a line break and the time; "plinkBox" with none open.
    QString nowPlayingText() const;

signals:
    void settingsRequested();
    // Files, folders or playlist files dropped on the skin, to be opened.
    void filesDropped(const QList<QUrl>& urls);
    // The title, the artist, the playing state or the time shown changed.
    void nowPlayingChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private slots:
    void onConfigChanged(Config::Property property);
    void onPlayingChanged();
    void onProgressChanged();
    void onClosePressed();
    void onMinimisePressed();
    void onRewindPressed();
    void onPlayPressed();
    void onFastForwardPressed();
    void openPlaylistMenu();
    void openTrackMenu();
    void updateTrackLines();
    void updatePlayingState();
    void updateTime();

private:
    void press(Element control);
    void applyFrame();
    void updateMask();
    void layoutControls();
    void setHover(std::optional<Element> control);
    QRectF currentThumbRect() const;
    void repaintThumb(const QRectF& box);
    std::optional<Track> currentTrack();
    void drawPicture(QPainter& painter, const QString& name, const QRectF& box);
    void drawText(QPainter& painter, Element line, const QString& text, const QRectF& clip);
    QFont textFont(Element line) const;
    void beginScrub();
    void scrubTo(double pointerX);
    void endScrub();
    void popUp(QMenu* menu, Element at);
    QPoint menuPoint(Element at) const;
    // Whether a menu of this many entries fits on the screen in one column.
    bool fitsAMenu(qsizetype entries) const;
    void openList(const QList<FilterEntry>& entries, qsizetype current, Element at,
                  const std::function<void(qsizetype)>& choose);
    QMenu* freshMenu();
    bool overScrubBar(QPointF point) const;
    void updateTimeTip();

    Config& m_config;
    AudioPlayer& m_audioPlayer;
    Transport& m_transport;

    bool m_isMinimized = false;
    bool m_isHoveringPlay = false;
    bool m_isHoveringRR = false;
    bool m_isHoveringFF = false;
    bool m_isDragging = false;
    double m_dragX = 0;

    // Transient pointer state
    std::optional<Element> m_pressed;
    QPointF m_pressPoint;
    bool m_movingWindow = false;
    QPoint m_windowGrabOffset;
    QRectF m_drawnThumb;

    bool m_translucent = false;
    bool m_movableByBackground = false;
    QPointer<QMenu> m_commandMenu;
    QPointer<QMenu> m_openMenu;
    std::array<SkinButton*, 7> m_buttons{};
    SkinScrubBar* m_scrubBar = nullptr;

    // What screen readers and the tray are told
    std::array<SkinText*, 2> m_trackLines{}; // title, artist
    std::optional<Track> m_shownTrack; // read when the store says it may have changed
    QString m_shownTime;
    SkinTimeTip* m_timeTip = nullptr;
    bool m_isHoveringScrubBar = false;
    WheelNotches m_wheelNotches;
};
