// The skin's keys and wheel: they seek within the open track and step its
// volume as the command menu does.
#include "player/contentview.h"

#include "playback/audioplayer.h"
#include "player/transport.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace {
constexpr double seekStep = 5, bigSeekStep = 30; // seconds
} // namespace

void ContentView::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (modifiers != Qt::NoModifier && modifiers != Qt::ShiftModifier)
        return QWidget::keyPressEvent(event);
    const double step = modifiers == Qt::ShiftModifier ? bigSeekStep : seekStep;
    switch (event->key()) {
    case Qt::Key_Left: m_transport.seekBy(-step); break;
    case Qt::Key_Right: m_transport.seekBy(step); break;
    case Qt::Key_Up: m_transport.volumeUp(); break;
    case Qt::Key_Down: m_transport.volumeDown(); break;
    case Qt::Key_Home: m_audioPlayer.seek(0); break;
    default: return QWidget::keyPressEvent(event);
    }
    event->accept();
}

void ContentView::wheelEvent(QWheelEvent* event)
{
    event->accept();
    // Some touchpads report only pixels; they count as units of a notch.
    int delta = event->angleDelta().y();
    if (delta == 0)
        delta = event->pixelDelta().y();
    const int notches = m_wheelNotches.add(delta);
    if (notches == 0)
        return;
    if (overScrubBar(event->position())) {
        m_transport.seekBy(notches * seekStep);
        return;
    }
    for (int i = 0; i < std::abs(notches); ++i) {
        if (notches > 0)
            m_transport.volumeUp();
        else
            m_transport.volumeDown();
    }
}
