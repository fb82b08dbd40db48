#include "ui/window_keys.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QShortcut>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>

namespace {

bool TakesFocus(const QWidget* ip_widget, const QWidget* ip_pane) {
    return (ip_widget->focusPolicy() & Qt::TabFocus) && ip_widget->isEnabled() && ip_widget->isVisibleTo(ip_pane);
}

// Splitters and tabs divide a page; what they do not divide any more is a pane.
void AddPanes(QWidget* ip_widget, QList<QWidget*>& io_panes) {
    if (const QTabWidget* const lp_tabs = qobject_cast<QTabWidget*>(ip_widget)) {
        if (lp_tabs->currentWidget()) {
            io_panes.append(lp_tabs->tabBar());
            AddPanes(lp_tabs->currentWidget(), io_panes);
        }
        return;
    }
    if (const QSplitter* const lp_splitter = qobject_cast<QSplitter*>(ip_widget)) {
        for (int l_index = 0; l_index < lp_splitter->count(); ++l_index) {
            AddPanes(lp_splitter->widget(l_index), io_panes);
        }
        return;
    }
    // A page that holds nothing but one divided thing.
    const QList<QWidget*> l_children = ip_widget->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    if (l_children.size() == 1 &&
        (qobject_cast<QTabWidget*>(l_children.first()) || qobject_cast<QSplitter*>(l_children.first()))) {
        AddPanes(l_children.first(), io_panes);
        return;
    }
    if (FocusOf(ip_widget)) {
        io_panes.append(ip_widget);
    }
}

void FocusPane(QWidget* ip_pane) {
    if (QWidget* const lp_widget = FocusOf(ip_pane)) {
        lp_widget->setFocus(Qt::ShortcutFocusReason);
    }
}

void StepPane(QMainWindow* ip_window, QTabWidget* ip_pages, int i_step) {
    const QList<QWidget*> l_panes = Panes(ip_window, ip_pages);
    const QWidget* const lp_focus = QApplication::focusWidget();
    qsizetype l_present = -1; // the innermost pane, which comes after those around it
    for (qsizetype l_index = 0; l_index < l_panes.size(); ++l_index) {
        if (lp_focus && (l_panes[l_index] == lp_focus || l_panes[l_index]->isAncestorOf(lp_focus))) {
            l_present = l_index;
        }
    }
    if (l_panes.isEmpty()) {
        return;
    }
    const qsizetype l_next =
        l_present < 0 ? (i_step > 0 ? 0 : l_panes.size() - 1) : (l_present + i_step + l_panes.size()) % l_panes.size();
    FocusPane(l_panes[l_next]);
}

void TurnToPage(QTabWidget* ip_pages, int i_index) {
    ip_pages->setCurrentIndex(i_index);
    QWidget* const lp_page = ip_pages->currentWidget();
    if (!lp_page->isAncestorOf(QApplication::focusWidget())) {
        QList<QWidget*> l_panes;
        AddPanes(lp_page, l_panes);
        FocusPane(l_panes.isEmpty() ? ip_pages->tabBar() : l_panes.first());
    }
}

template <class Handler>
void AddKey(QMainWindow* ip_window, const QKeySequence& i_keys, Handler i_handler) {
    QObject::connect(new QShortcut(i_keys, ip_window), &QShortcut::activated, ip_window, i_handler);
}

} // namespace

QWidget* FocusOf(QWidget* ip_pane) {
    if (QWidget* const lp_last = ip_pane->focusWidget(); lp_last && TakesFocus(lp_last, ip_pane)) {
        return lp_last;
    }
    if (TakesFocus(ip_pane, ip_pane)) {
        return ip_pane;
    }
    for (QWidget* lp_widget = ip_pane->nextInFocusChain(); lp_widget != ip_pane;
         lp_widget = lp_widget->nextInFocusChain()) {
        if (ip_pane->isAncestorOf(lp_widget) && TakesFocus(lp_widget, ip_pane)) {
            return lp_widget;
        }
    }
    return nullptr;
}

QList<QWidget*> Panes(QMainWindow* ip_window, QTabWidget* ip_pages) {
    QList<QWidget*> l_panes;
    QList<QWidget*> l_footPanes;
    for (QToolBar* const lp_bar : ip_window->findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (lp_bar->isVisible() && FocusOf(lp_bar)) {
            (ip_window->toolBarArea(lp_bar) == Qt::BottomToolBarArea ? l_footPanes : l_panes).append(lp_bar);
        }
    }
    AddPanes(ip_pages, l_panes);
    return l_panes + l_footPanes;
}

void AddWindowKeys(QMainWindow* ip_window, QTabWidget* ip_pages) {
    AddKey(ip_window, QKeySequence(Qt::Key_F6), [=] { StepPane(ip_window, ip_pages, 1); });
    AddKey(ip_window, QKeySequence(Qt::SHIFT | Qt::Key_F6), [=] { StepPane(ip_window, ip_pages, -1); });
    for (int l_index = 0; l_index < ip_pages->count(); ++l_index) {
        const auto l_digit = static_cast<Qt::Key>(Qt::Key_1 + l_index);
        AddKey(ip_window, QKeySequence(Qt::CTRL | l_digit), [=] { TurnToPage(ip_pages, l_index); });
        ip_pages->setTabToolTip(l_index, QKeySequence(Qt::CTRL | l_digit).toString(QKeySequence::NativeText));
    }
    AddKey(ip_window, QKeySequence(Qt::Key_F10), [=] {
        QMenuBar* const lp_bar = ip_window->menuBar();
        lp_bar->setFocus(Qt::MenuBarFocusReason);
        lp_bar->setActiveAction(lp_bar->actions().value(0));
    });
    AddKey(ip_window, QKeySequence(QKeySequence::Quit), [=] { ip_window->close(); });
}
