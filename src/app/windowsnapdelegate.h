#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>

#include <optional>

class QWidget;

// Where a window belongs after a move: flush against an edge of the screen's
// usable area when it came within 10 points of it, or none when no edge is
// near. Qt's coordinates grow downward; "bottom" is still the bottom the user
// sees. Left beats right and bottom beats top when both are near.
std::optional<QPoint> snapped(const QRect& window, const QRect& available);

// Pulls the player window to the screen's edges whenever it has moved.
class WindowSnapDelegate : public QObject
{
    Q_OBJECT

public:
    explicit WindowSnapDelegate(QObject* parent = nullptr);

    // Listens to the window's moves from now on.
    void attach(QWidget* window);

    const double snapThreshold = 10.0; // the same 10 points snapped() uses

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void windowDidMove(QWidget* window);
};
