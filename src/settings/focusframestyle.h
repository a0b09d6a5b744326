#pragma once

#include <QProxyStyle>

// The application's style with a focus frame a keyboard user can find: a
// clear ring where the style draws a faint one (tabs, switches, table
// cells), and one round a focused table, which most styles leave unmarked.
// Drawn only once the keyboard has moved the focus, as the styles do.
class FocusFrameStyle : public QProxyStyle
{
    Q_OBJECT

public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
};
