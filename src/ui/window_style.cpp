#include "ui/window_style.h"

#include "ui/icon.h"

#include <QStyleOption>

namespace {

bool IsDark(const QPalette& i_palette) {
    return i_palette.color(QPalette::Base).lightness() < i_palette.color(QPalette::Text).lightness();
}

// The same, with a frame that can be seen.
template <class Option>
Option Framed(const Option& i_option) {
    Option l_option(i_option);
    l_option.palette.setColor(QPalette::Window, i_option.palette.color(QPalette::Text));
    return l_option;
}

} // namespace

QIcon WindowStyle::standardIcon(StandardPixmap i_which, const QStyleOption* ip_option, const QWidget* ip_widget) const {
    if (i_which == SP_ToolBarHorizontalExtensionButton) {
        return LoadIcon(QStringLiteral(":/icons/more_icon"));
    }
    return QProxyStyle::standardIcon(i_which, ip_option, ip_widget);
}

void WindowStyle::drawPrimitive(PrimitiveElement i_element, const QStyleOption* ip_option, QPainter* ip_painter,
                                const QWidget* ip_widget) const {
    const bool l_isBox = i_element == PE_IndicatorCheckBox || i_element == PE_IndicatorItemViewItemCheck;
    if (l_isBox && IsDark(ip_option->palette)) {
        if (const auto* const lp_button = qstyleoption_cast<const QStyleOptionButton*>(ip_option)) {
            const auto l_framed = Framed(*lp_button);
            return QProxyStyle::drawPrimitive(i_element, &l_framed, ip_painter, ip_widget);
        }
        if (const auto* const lp_item = qstyleoption_cast<const QStyleOptionViewItem*>(ip_option)) {
            const auto l_framed = Framed(*lp_item);
            return QProxyStyle::drawPrimitive(i_element, &l_framed, ip_painter, ip_widget);
        }
    }
    QProxyStyle::drawPrimitive(i_element, ip_option, ip_painter, ip_widget);
}
