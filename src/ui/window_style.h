#pragma once

#include <QProxyStyle>

// The desktop's own style, but for two things that cannot be seen on dark palettes:
// - the arrow of what a menu bar or tool bar has no room for. Qt's own, moreover, comes from a picture whose reading
//   loads the plugins of all kinds of pictures, at the program's start;
// - the frame of a check box, which styles draw in a shade of the window's colour.
class WindowStyle : public QProxyStyle {
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    QIcon standardIcon(StandardPixmap i_which, const QStyleOption* ip_option, const QWidget* ip_widget) const override;
    void drawPrimitive(PrimitiveElement i_element, const QStyleOption* ip_option, QPainter* ip_painter,
                       const QWidget* ip_widget) const override;
};
