#include "settings/focusframestyle.h"

#include <QPainter>
#include <QStyleOption>

namespace {

bool keyboardFocused(const QStyleOption* option)
{
    return option->state.testFlag(QStyle::State_HasFocus) && option->state.testFlag(QStyle::State_KeyboardFocusChange);
}

void drawRing(const QStyleOption* option, QPainter* painter)
{
    painter->save();
    painter->setPen(QPen(option->palette.color(QPalette::Highlight), 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(QRectF(option->rect).adjusted(1, 1, -1, -1));
    painter->restore();
}

} // namespace

void FocusFrameStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                    const QWidget* widget) const
{
    // A focus rectangle is asked for only where the focus is; the flag says
    // whether the keyboard put it there.
    if (element == PE_FrameFocusRect && option->state.testFlag(State_KeyboardFocusChange)) {
        drawRing(option, painter);
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void FocusFrameStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                  const QWidget* widget) const
{
    QProxyStyle::drawControl(element, option, painter, widget);
    // Tabs and framed views draw their focus, if at all, without a focus
    // rectangle; the ring goes round the whole tab or frame.
    if ((element == CE_TabBarTabLabel || element == CE_ShapedFrame) && keyboardFocused(option))
        drawRing(option, painter);
}
