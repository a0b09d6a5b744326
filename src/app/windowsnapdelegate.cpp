#include "app/windowsnapdelegate.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <cmath>

std::optional<QPoint> snapped(const QRect& window, const QRect& available)
{
    // Gaps to each edge (right and bottom as x + width, y + height, not
    // QRect's inclusive right()/bottom()); the first near edge of each axis
    // wins; nothing moves unless an edge was near.
    constexpr int threshold = 10;
    const int left = available.x();
    const int right = available.x() + available.width();
    const int top = available.y();
    const int bottom = available.y() + available.height();
    const int gapLeft = std::abs(window.x() - left);
    const int gapRight = std::abs(right - (window.x() + window.width()));
    const int gapBottom = bottom - (window.y() + window.height());
    const int gapTop = window.y() - top;

    QPoint place = window.topLeft();
    bool moved = false;
    if (gapLeft <= threshold) {
        place.setX(left);
        moved = true;
    } else if (gapRight <= threshold) {
        place.setX(right - window.width());
        moved = true;
    }
    if (std::abs(gapBottom) <= threshold) {
        place.setY(bottom - window.height());
        moved = true;
    } else if (std::abs(gapTop) <= threshold) {
        place.setY(top);
        moved = true;
    }
    if (!moved)
        return std::nullopt;
    return place;
}

WindowSnapDelegate::WindowSnapDelegate(QObject* parent)
    : QObject(parent)
{
}

void WindowSnapDelegate::attach(QWidget* window)
{
    // Wayland clients cannot place their windows: there is nothing to snap.
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return;
    window->installEventFilter(this);
}

bool WindowSnapDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Move && watched->isWidgetType())
        windowDidMove(static_cast<QWidget*>(watched));
    return QObject::eventFilter(watched, event);
}

void WindowSnapDelegate::windowDidMove(QWidget* window)
{
    if (!window->isWindow())
        return;
    QScreen* screen = window->screen();
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect frame = window->frameGeometry();
    const auto place = snapped(frame, screen->availableGeometry());
    // Moving re-enters here once, already flush: the same place again.
    if (place && *place != frame.topLeft())
        window->move(*place);
}
