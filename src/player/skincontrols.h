#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QSlider>

// Stand-ins for the skin's controls, for screen readers and UI automation.
// The skin paints every picture and handles the pointer itself; each
// stand-in only lies over its control, paints nothing, lets the pointer
// through, and carries the accessible name and role. An accessibility
// "press" arrives as clicked(), which runs the same action as a click.
class SkinButton : public QAbstractButton
{
    Q_OBJECT

public:
    SkinButton(const QString& accessibleName, QWidget* parent);

protected:
    void paintEvent(QPaintEvent*) override {}
};

// The scrub bar: a slider of 0 … resolution over the played fraction.
// seekRequested() is emitted only for changes that did not come from
// showProgress(), i.e. from an assistive tool.
class SkinScrubBar : public QSlider
{
    Q_OBJECT

public:
    static constexpr int resolution = 1000;
    explicit SkinScrubBar(QWidget* parent);
    void showProgress(double progress);

signals:
    void seekRequested(double fraction);

protected:
    void paintEvent(QPaintEvent*) override {}
    // The skin draws the thumb: a new value must not repaint the whole bar.
    void sliderChange(SliderChange) override {}

private:
    bool m_showing = false;
};

// A text line's stand-in: static text named with what the line shows (the
// title or the artist), hidden while there is no track.
class SkinText : public QLabel
{
    Q_OBJECT

public:
    explicit SkinText(QWidget* parent);
    void showLine(const QString& text);

protected:
    void paintEvent(QPaintEvent*) override {}
};

// The time that rides with the scrub bar's knob: a tooltip of our own, as
// the platform's stays where it first appeared while the knob moves on.
class SkinTimeTip : public QLabel
{
    Q_OBJECT

public:
    explicit SkinTimeTip(QWidget* parent);
    // Shows text with the tip's bottom centre at a global point.
    void showAbove(const QString& text, QPoint bottomCentre);

protected:
    void paintEvent(QPaintEvent* event) override;
};
