#include "player/skincontrols.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStyleOptionFrame>
#include <QStylePainter>
#include <QToolTip>
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

SkinText::SkinText(QWidget* parent)
    : QLabel(parent)
{
    makeStandIn(this, QString());
    hide();
}

void SkinText::showLine(const QString& text)
{
    // Screen readers hear of a new name through the widget's own event.
    if (text != accessibleName())
        setAccessibleName(text);
    setVisible(!text.isEmpty());
}

SkinTimeTip::SkinTimeTip(QWidget* parent)
    : QLabel(parent, Qt::ToolTip | Qt::BypassGraphicsProxyWidget)
{
    setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    setPalette(QToolTip::palette());
    setFont(QToolTip::font());
    setMargin(1 + style()->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth, nullptr, this));
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SkinTimeTip::showAbove(const QString& text, QPoint bottomCentre)
{
    if (text != this->text()) {
        setText(text);
        adjustSize();
    }
    QPoint topLeft = bottomCentre - QPoint(width() / 2, height() + 2);
    // Kept on the screen, as the platform's tooltips are.
    if (const QScreen* screen = QGuiApplication::screenAt(bottomCentre)) {
        const QRect room = screen->geometry();
        topLeft.setX(std::clamp(topLeft.x(), room.left(), std::max(room.left(), room.right() + 1 - width())));
        topLeft.setY(std::max(topLeft.y(), room.top()));
    }
    move(topLeft);
    QLabel::show();
}

void SkinTimeTip::paintEvent(QPaintEvent* event)
{
    QStylePainter painter(this);
    QStyleOptionFrame panel;
    panel.initFrom(this);
    painter.drawPrimitive(QStyle::PE_PanelTipLabel, panel);
    painter.end();
    QLabel::paintEvent(event);
}
