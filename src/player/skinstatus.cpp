// What the skin tells beyond its pictures: the title, the artist and the
// playing state for screen readers, the time by the scrub bar's knob.
#include "player/contentview.h"

#include "playback/audioplayer.h"
#include "player/skincontrols.h"
#include "player/timetext.h"

#include <QAccessible>

QString ContentView::nowPlayingText() const
{
    if (m_shownTime.isEmpty())
        return QStringLiteral("plinkBox");
    QStringList names;
    for (const SkinText* line : m_trackLines) {
        if (!line->accessibleName().isEmpty())
            names.append(line->accessibleName());
    }
    return names.isEmpty() ? m_shownTime : names.join(QStringLiteral(" — ")) + QLatin1Char('\n') + m_shownTime;
}

void ContentView::updateTrackLines()
{
    // Read here, when the store says the track may have changed, and kept
    // for painting, which must not touch the disk. Told whatever the theme's
    // text sizes: a line a theme leaves out is still the title or artist.
    m_shownTrack = currentTrack();
    const std::optional<Track>& track = m_shownTrack;
    const QString title = track ? track->trackName : QString(), artist = track ? track->artist : QString();
    if (title == m_trackLines[0]->accessibleName() && artist == m_trackLines[1]->accessibleName())
        return;
    m_trackLines[0]->showLine(title);
    m_trackLines[1]->showLine(artist);
    emit nowPlayingChanged();
}

void ContentView::updatePlayingState()
{
    // Paused keeps the open file's timer; a stop ends it.
    const QString state = m_audioPlayer.isPlaying()                             ? tr("Playing")
                        : m_audioPlayer.player() && m_audioPlayer.hasTimer() ? tr("Paused")
                                                                               : tr("Stopped");
    if (state == accessibleDescription())
        return;
    setAccessibleDescription(state);
    emit nowPlayingChanged();
}

void ContentView::updateTime()
{
    const double length = m_audioPlayer.duration();
    const QString time = m_audioPlayer.player() ? timeText(m_audioPlayer.progress() * length, length) : QString();
    if (time == m_shownTime)
        return;
    m_shownTime = time;
    m_scrubBar->setAccessibleDescription(time);
    emit nowPlayingChanged();
}

bool ContentView::overScrubBar(QPointF point) const
{
    return m_audioPlayer.isPlaying() && QRectF(m_scrubBar->geometry()).united(currentThumbRect()).contains(point);
}

void ContentView::updateTimeTip()
{
    // Over the scrub bar, or dragging its knob, the time rides above the knob.
    if (!m_isDragging && !(m_isHoveringScrubBar && m_audioPlayer.isPlaying())) {
        m_timeTip->hide();
        return;
    }
    const QRectF knob = currentThumbRect();
    m_timeTip->showAbove(m_shownTime, mapToGlobal(QPointF(knob.center().x(), knob.top())).toPoint());
}
