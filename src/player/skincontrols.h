#pragma once

#include <QAbstractButton>
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
