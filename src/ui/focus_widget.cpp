#include "ui/focus_widget.h"

#include <QTabWidget>

void FocusWidget(QWidget* ip_widget) {
    ip_widget->activateWindow();
    ip_widget->setFocus();
    // Between a tab widget and its page stands a stacked widget of its own, so the page is sought on the whole chain.
    for (QWidget* lp_outer = ip_widget->parentWidget(); lp_outer; lp_outer = lp_outer->parentWidget()) {
        QTabWidget* const lp_tabs = qobject_cast<QTabWidget*>(lp_outer);
        if (!lp_tabs) {
            continue;
        }
        for (QWidget* lp_page = ip_widget; lp_page != lp_tabs; lp_page = lp_page->parentWidget()) {
            if (lp_tabs->indexOf(lp_page) >= 0) {
                lp_tabs->setCurrentWidget(lp_page);
                break;
            }
        }
    }
}

void FocusWidgetAndParents(QWidget* ip_widget) {
    FocusWidget(ip_widget);
}
