#include "player/skincontrols.h"

#include <QtMath>

namespace {
void makeStandIn(QWidget* widget, const QString& accessibleName)
{
    widget->setAccessibleName(accessibleName);
    widget->setAttribute(Qt::WA_TransparentForMouseEvents);
    widget->setAttribute(Qt::WA_NoSystemBackground);
    widget->setFocusPolicy(Qt::NoFocus);
}
} // namespace

SkinButton::SkinButton(const QString& accessibleName, QWidget* parent)
    : QAbstractButton(parent)
{
    makeStandIn(this, accessibleName);
}

SkinScrubBar::SkinScrubBar(QWidget* parent)
    : QSlider(Qt::Horizontal, parent)
{
    makeStandIn(this, tr("Scrub bar"));
    setRange(0, resolution);
    connect(this, &QSlider::valueChanged, this, [this](int value) {
        if (!m_showing)
            emit seekRequested(double(value) / resolution);
    });
}

void SkinScrubBar::showProgress(double progress)
{
    m_showing = true;
    setValue(qRound(qBound(0.0, progress, 1.0) * resolution));
    m_showing = false;
}
