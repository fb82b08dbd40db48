#pragma once

#include <QProxyStyle>

// The desktop's own style, but for the arrow of what a menu bar or tool bar has no room for: that is ours, and can be
// read on every palette. Qt's own comes from a picture whose reading loads the plugins of all kinds of pictures, as
// often as a bar is made, at the program's start.
class WindowStyle : public QProxyStyle {
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    QIcon standardIcon(StandardPixmap i_which, const QStyleOption* ip_option, const QWidget* ip_widget) const override;
};
