#include "player/contentview.h"

#include "playback/audioplayer.h"
#include "player/skincontrols.h"
#include "player/transport.h"
#include "store/trackfiles.h"

#include <QApplication>
#include <QBitmap>
#include <QDropEvent>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace {

// The buttons' stand-ins, in the order of m_buttons.
constexpr Element buttonElements[] = {Element::close,       Element::minimise,     Element::rewind,
                                      Element::playPause,   Element::fastForward,  Element::playlistMenu,
                                      Element::trackMenu};

constexpr double dragMinimumDistance = 10;

bool onWayland()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

// A rectangle in the device pixels it covers.
QRect devicePixels(const QRectF& box, qreal ratio)
{
    return QRect(qRound(box.x() * ratio), qRound(box.y() * ratio), qRound(box.width() * ratio),
                 qRound(box.height() * ratio));
}

} // namespace

ContentView::ContentView(Config& config, AudioPlayer& audioPlayer, Transport& transport, QWidget* parent)
    : QWidget(parent, Qt::FramelessWindowHint)
    , m_config(config)
    , m_audioPlayer(audioPlayer)
    , m_transport(transport)
{
    setMouseTracking(true);
    setAcceptDrops(true);
    setAccessibleName(QStringLiteral("plinkBox"));
    const QString names[] = {tr("Close"),      tr("Minimise"),  tr("Previous track"), tr("Play"),
                             tr("Next track"), tr("Playlists"), tr("Tracks")};
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        m_buttons[i] = new SkinButton(names[i], this);
        const Element element = buttonElements[i];
        connect(m_buttons[i], &QAbstractButton::clicked, this, [this, element] { press(element); });
    }
    m_scrubBar = new SkinScrubBar(this);
    connect(m_scrubBar, &SkinScrubBar::seekRequested, &m_audioPlayer, &AudioPlayer::seek);
    for (SkinText*& line : m_trackLines)
        line = new SkinText(this);
    m_timeTip = new SkinTimeTip(this);

    connect(&m_config, &Config::changed, this, &ContentView::onConfigChanged);
    connect(&m_config, &Config::themePicturesChanged, this, &ContentView::applyFrame);
    // The title and artist lines show what the current playlist's file holds.
    connect(&m_config, &Config::playlistTracksWritten, this, [this] {
        update();
        updateTrackLines();
    });
    connect(&m_audioPlayer, &AudioPlayer::isPlayingChanged, this, &ContentView::onPlayingChanged);
    connect(&m_audioPlayer, &AudioPlayer::timerChanged, this, &ContentView::updatePlayingState);
    connect(&m_audioPlayer, &AudioPlayer::progressChanged, this, &ContentView::onProgressChanged);
    connect(&m_audioPlayer, &AudioPlayer::durationChanged, this, &ContentView::updateTime);
    connect(&m_audioPlayer, &AudioPlayer::playerChanged, this, &ContentView::updateTime);
    connect(&m_audioPlayer, &AudioPlayer::albumArtChanged, this, [this] { update(); });

    m_config.bringCurrentPlaylistIntoRange();
    applyFrame();
    onPlayingChanged();
    updateTrackLines();
    updateTime();
}

ContentView::~ContentView() = default;

void ContentView::setTranslucent(bool translucent)
{
    // The shape made at construction is the opaque window's: keep it.
    if (translucent == m_translucent)
        return;
    m_translucent = translucent;
    setAttribute(Qt::WA_TranslucentBackground, translucent);
    updateMask();
}

// --- size, shape and stand-ins -------------------------------------------

void ContentView::applyFrame()
{
    const ThemeData theme = m_config.geometry();
    setFixedSize(windowSize(::frameSize(theme, m_isMinimized, scale())));
    updateMask();
    layoutControls();
    update();
}

void ContentView::updateMask()
{
    // Without a compositor see-through pixels show black: cut the window to
    // the picture's outline instead (at half opacity, in points).
    const QImage picture = m_config.themePicture(m_isMinimized ? QStringLiteral("player-min")
                                                                : QStringLiteral("player"));
    // The offscreen platform of the tests has no shapes at all.
    if (m_translucent || picture.isNull() || QGuiApplication::platformName() == QLatin1String("offscreen")) {
        clearMask();
        return;
    }
    QImage shape(size(), QImage::Format_ARGB32_Premultiplied);
    shape.fill(Qt::transparent);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(0, 0), ::frameSize(m_config.geometry(), m_isMinimized, scale())), picture);
    painter.end();
    setMask(QBitmap::fromImage(shape.createAlphaMask()));
}

void ContentView::layoutControls()
{
    const ThemeData theme = m_config.geometry();
    const bool playing = m_audioPlayer.isPlaying();
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        const Element element = buttonElements[i];
        m_buttons[i]->setGeometry(elementRect(theme, element, scale()).toAlignedRect());
        m_buttons[i]->setVisible(elementShown(theme, element, playing));
    }
    m_buttons[3]->setAccessibleName(playing ? tr("Pause") : tr("Play"));
    const ScrubBounds bounds = scrubBounds(theme, scale());
    const double thumbHeight = theme.scrubberHeight * scale();
    m_scrubBar->setGeometry(QRectF(bounds.minX, bounds.y - thumbHeight / 2, std::max(bounds.range(), 1.0),
                                   thumbHeight).toAlignedRect());
    m_scrubBar->setVisible(playing);
    for (const Element line : {Element::trackTitle, Element::artist}) {
        const QRectF box = elementRect(theme, line, scale(), QFontMetricsF(textFont(line)).height());
        m_trackLines[line == Element::artist]->setGeometry(box.toAlignedRect());
    }
}

// --- observation ------------------------------------------------------

void ContentView::onConfigChanged(Config::Property property)
{
    using P = Config::Property;
    if (property == P::playlists || property == P::currentPlaylistIndex)
        m_config.bringCurrentPlaylistIntoRange();
    if (Config::isGeometry(property) || property == P::superSized || property == P::currentTheme)
        applyFrame();
    else
        update();
    if (property == P::playlists || property == P::currentPlaylistIndex || property == P::currentTrackIndex)
        updateTrackLines();
}

void ContentView::onPlayingChanged()
{
    layoutControls();
    m_scrubBar->showProgress(m_audioPlayer.progress());
    update();
    updatePlayingState();
    updateTimeTip();
}

void ContentView::onProgressChanged()
{
    // Only the thumb moves: repaint where it was and where it is now, and
    // only once it reaches other pixels (in a long track that is about once
    // a second, not at every tick).
    m_scrubBar->showProgress(m_audioPlayer.progress());
    updateTime();
    updateTimeTip();
    if (!m_audioPlayer.isPlaying() || m_isDragging)
        return;
    const QRectF thumb = currentThumbRect();
    if (devicePixels(thumb, devicePixelRatioF()) == devicePixels(m_drawnThumb, devicePixelRatioF()))
        return;
    repaintThumb(m_drawnThumb);
    repaintThumb(thumb);
}

void ContentView::repaintThumb(const QRectF& box)
{
    update(box.toAlignedRect().adjusted(-1, -1, 1, 1));
}

QRectF ContentView::currentThumbRect() const
{
    const ThemeData theme = m_config.geometry();
    const ScrubBounds bounds = scrubBounds(theme, scale());
    const double x = m_isDragging ? m_dragX : thumbCentreX(bounds, m_audioPlayer.progress());
    return thumbRect(theme, scale(), x);
}

// --- drawing ----------------------------------------------------------

std::optional<Track> ContentView::currentTrack()
{
    const QList<Playlist> catalogue = m_config.playlists();
    const qint64 p = m_config.currentPlaylistIndex();
    if (p < 0 || p >= catalogue.size())
        return std::nullopt;
    return m_config.playlistTrack(catalogue.at(p).id, m_config.currentTrackIndex());
}

void ContentView::drawPicture(QPainter& painter, const QString& name, const QRectF& box)
{
    const QImage picture = m_config.themePicture(name);
    if (!picture.isNull())
        painter.drawImage(box, picture);
}

QFont ContentView::textFont(Element line) const
{
    const int size = line == Element::trackTitle ? m_config.trackTextSize() : m_config.artistTextSize();
    QFont font = QApplication::font();
    // Skin sizes are points of the window, i.e. pixels at one pixel per point.
    font.setPixelSize(std::clamp(qRound(size * scale()), 1, 1000));
    font.setBold(line == Element::trackTitle);
    return font;
}

void ContentView::drawText(QPainter& painter, Element line, const QString& text, const QRectF& clip)
{
    const QFont font = textFont(line);
    const QFontMetricsF metrics(font);
    const QRectF box = elementRect(m_config.geometry(), line, scale(), metrics.height());
    if (!box.intersects(clip))
        return;
    painter.setFont(font);
    painter.setPen(m_config.textReversed() ? Qt::white : Qt::black);
    painter.drawText(box, Qt::AlignCenter, metrics.elidedText(text, Qt::ElideRight, box.width()));
}

void ContentView::paintEvent(QPaintEvent* event)
{
    const QRectF clip = event->rect();
    const ThemeData theme = m_config.geometry();
    const double s = scale();
    const bool playing = m_audioPlayer.isPlaying();
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setRenderHint(QPainter::TextAntialiasing);
    if (m_translucent) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(event->rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    drawPicture(painter, m_isMinimized ? QStringLiteral("player-min") : QStringLiteral("player"),
                QRectF(QPointF(0, 0), ::frameSize(theme, m_isMinimized, s)));

    const auto visible = [&](Element element, const QRectF& box) {
        return elementShown(theme, element, playing) && box.intersects(clip);
    };
    const struct {
        Element element;
        QString picture;
    } buttons[] = {
        {Element::close, QStringLiteral("close")},
        {Element::minimise, QStringLiteral("min")},
        {Element::rewind, m_isHoveringRR ? QStringLiteral("rr-on") : QStringLiteral("rr")},
        {Element::playPause, QString(playing ? QStringLiteral("pause") : QStringLiteral("play"))
                                 + (m_isHoveringPlay ? QStringLiteral("-on") : QString())},
        {Element::fastForward, m_isHoveringFF ? QStringLiteral("ff-on") : QStringLiteral("ff")},
        {Element::playlistMenu, QStringLiteral("playlist-menu")},
        {Element::trackMenu, QStringLiteral("track-menu")},
    };
    for (const auto& button : buttons) {
        const QRectF box = elementRect(theme, button.element, s);
        if (visible(button.element, box))
            drawPicture(painter, button.picture, box);
    }

    m_drawnThumb = currentThumbRect();
    if (visible(Element::scrubber, m_drawnThumb)) {
        // Pixel art stays sharp when enlarged.
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        drawPicture(painter, QStringLiteral("track-scrubber"), m_drawnThumb);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    }

    const QRectF art = elementRect(theme, Element::albumArt, s);
    if (visible(Element::albumArt, art)) {
        const QImage cover = m_audioPlayer.albumArt();
        if (cover.isNull())
            drawPicture(painter, QStringLiteral("track-album"), art);
        else
            painter.drawImage(art, cover);
    }

    const bool titleShown = elementShown(theme, Element::trackTitle, playing);
    const bool artistShown = elementShown(theme, Element::artist, playing);
    if (titleShown || artistShown) {
        if (const auto& track = m_shownTrack) {
            if (titleShown)
                drawText(painter, Element::trackTitle, track->trackName, clip);
            if (artistShown)
                drawText(painter, Element::artist, track->artist, clip);
        }
    }
}

// --- pointer ----------------------------------------------------------

void ContentView::setHover(std::optional<Element> control)
{
    const bool play = control == Element::playPause;
    const bool rewind = control == Element::rewind;
    const bool fastForward = control == Element::fastForward;
    if (play == m_isHoveringPlay && rewind == m_isHoveringRR && fastForward == m_isHoveringFF)
        return;
    m_isHoveringPlay = play;
    m_isHoveringRR = rewind;
    m_isHoveringFF = fastForward;
    update();
}

void ContentView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const QPointF point = event->position();
    const ThemeData theme = m_config.geometry();
    const double thumbX = currentThumbRect().center().x();
    m_pressed = controlAt(theme, scale(), m_audioPlayer.isPlaying(), thumbX, point);
    m_pressPoint = point;
    if (m_pressed == Element::playlistMenu || m_pressed == Element::trackMenu) {
        // Pull-down menus open on the press, like any menu button.
        const Element menu = *m_pressed;
        m_pressed.reset();
        press(menu);
        return;
    }
    if (m_pressed || !m_movableByBackground)
        return;
    if (onWayland()) {
        // Only the compositor may place a window there.
        if (windowHandle())
            windowHandle()->startSystemMove();
        return;
    }
    // Our own drag, so that every step is a move the snapping hears.
    m_movingWindow = true;
    m_windowGrabOffset = event->globalPosition().toPoint() - pos();
}

void ContentView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF point = event->position();
    if (m_movingWindow) {
        move(event->globalPosition().toPoint() - m_windowGrabOffset);
        return;
    }
    if (m_pressed == Element::scrubber) {
        if (!m_isDragging && QLineF(m_pressPoint, point).length() >= dragMinimumDistance)
            beginScrub();
        if (m_isDragging)
            scrubTo(point.x());
        return;
    }
    // Also with a button held: a press dragged off its button shows it unlit.
    const double thumbX = currentThumbRect().center().x();
    setHover(controlAt(m_config.geometry(), scale(), m_audioPlayer.isPlaying(), thumbX, point));
    m_isHoveringScrubBar = overScrubBar(point);
    updateTimeTip();
}

void ContentView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_movingWindow = false;
    const auto pressed = m_pressed;
    m_pressed.reset();
    if (m_isDragging) {
        m_isHoveringScrubBar = overScrubBar(event->position());
        endScrub();
        return;
    }
    // A button acts when the pointer is let go over the button it pressed.
    if (!pressed || pressed == Element::scrubber)
        return;
    const double thumbX = currentThumbRect().center().x();
    if (controlAt(m_config.geometry(), scale(), m_audioPlayer.isPlaying(), thumbX, event->position()) == pressed)
        press(*pressed);
}

void ContentView::leaveEvent(QEvent* event)
{
    setHover(std::nullopt);
    m_isHoveringScrubBar = false;
    updateTimeTip();
    QWidget::leaveEvent(event);
}

void ContentView::contextMenuEvent(QContextMenuEvent* event)
{
    if (m_commandMenu)
        m_commandMenu->popup(event->globalPos());
}

// Files dropped on the player are opened as a file manager's "Open With" would.
void ContentView::dragEnterEvent(QDragEnterEvent* event)
{
    if (droppedLocalUrls(event->mimeData()).isEmpty())
        return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void ContentView::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = droppedLocalUrls(event->mimeData());
    if (urls.isEmpty())
        return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit filesDropped(urls);
}

// --- scrub bar --------------------------------------------------------

void ContentView::beginScrub()
{
    // The thumb follows the finger now, not the player's progress.
    m_isDragging = true;
    setCursor(Qt::ClosedHandCursor);
    m_audioPlayer.invalidateTimer();
}

void ContentView::scrubTo(double pointerX)
{
    const ScrubBounds bounds = scrubBounds(m_config.geometry(), scale());
    repaintThumb(m_drawnThumb); // where it is on screen: at the first step, not at dragX
    m_dragX = clampedDragX(bounds, pointerX);
    repaintThumb(currentThumbRect());
    if (const auto fraction = seekFraction(bounds, m_dragX))
        m_audioPlayer.seek(*fraction);
}

void ContentView::endScrub()
{
    m_isDragging = false;
    setCursor(Qt::ArrowCursor);
    m_audioPlayer.invalidateTimer();
    m_audioPlayer.restartTimer();
    update();
    updateTimeTip();
}

// --- actions ----------------------------------------------------------

void ContentView::press(Element control)
{
    switch (control) {
    case Element::close: onClosePressed(); break;
    case Element::minimise: onMinimisePressed(); break;
    case Element::rewind: onRewindPressed(); break;
    case Element::playPause: onPlayPressed(); break;
    case Element::fastForward: onFastForwardPressed(); break;
    case Element::playlistMenu: openPlaylistMenu(); break;
    case Element::trackMenu: openTrackMenu(); break;
    default: break;
    }
}

void ContentView::onClosePressed()
{
    QCoreApplication::quit();
}

void ContentView::onMinimisePressed()
{
    m_isMinimized = !m_isMinimized;
    applyFrame();
    m_transport.minimiseToggled();
}

void ContentView::onRewindPressed()
{
    m_transport.skip(Transport::Direction::previous);
}

void ContentView::onPlayPressed()
{
    m_transport.playPausePressed();
}

void ContentView::onFastForwardPressed()
{
    m_transport.skip(Transport::Direction::next);
}
