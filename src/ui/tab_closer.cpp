#include "ui/tab_closer.h"

#include <QMouseEvent>
#include <QTabBar>
#include <QTabWidget>

TabCloser::TabCloser(QTabWidget* ip_tabs) : QObject(ip_tabs), mp_tabs(ip_tabs) {
    ip_tabs->tabBar()->installEventFilter(this);
}

bool TabCloser::eventFilter(QObject* ip_watched, QEvent* ip_event) {
    if (ip_event->type() == QEvent::MouseButtonRelease) {
        const QMouseEvent* const lp_click = static_cast<QMouseEvent*>(ip_event);
        const int l_tab = mp_tabs->tabBar()->tabAt(lp_click->position().toPoint());
        if (lp_click->button() == Qt::MiddleButton && l_tab >= 0) {
            Q_EMIT mp_tabs->tabCloseRequested(l_tab);
            return true;
        }
    }
    return QObject::eventFilter(ip_watched, ip_event);
}
