#include "ui/window_style.h"

#include "ui/icon.h"

QIcon WindowStyle::standardIcon(StandardPixmap i_which, const QStyleOption* ip_option, const QWidget* ip_widget) const {
    if (i_which == SP_ToolBarHorizontalExtensionButton) {
        return LoadIcon(QStringLiteral(":/icons/more_icon"));
    }
    return QProxyStyle::standardIcon(i_which, ip_option, ip_widget);
}
