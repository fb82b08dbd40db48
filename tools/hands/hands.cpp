#include "hands/hands.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeySequence>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QStringList>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>

#include <algorithm>

namespace {

QAction* Bearing(const QList<QAction*>& i_actions, const QString& i_text) {
    const auto l_found = std::find_if(i_actions.begin(), i_actions.end(),
                                      [&](const QAction* ip_action) { return ip_action->text() == i_text; });
    return l_found == i_actions.end() ? nullptr : *l_found;
}

bool Bears(const QTreeWidgetItem* ip_row, const QString& i_text) {
    for (int l_column = 0; l_column < ip_row->treeWidget()->columnCount(); ++l_column) {
        if (ip_row->text(l_column) == i_text) {
            return true;
        }
    }
    return false;
}

QTreeWidgetItem* Below(const QTreeWidgetItem* ip_parent, const QString& i_text) {
    for (int l_row = 0; l_row < ip_parent->childCount(); ++l_row) {
        if (!ip_parent->child(l_row)->isHidden() && Bears(ip_parent->child(l_row), i_text)) {
            return ip_parent->child(l_row);
        }
    }
    return nullptr;
}

// Of the part of the row that is in sight. A row is wider than its view when the columns are.
QPoint MiddleOf(QTreeWidgetItem* ip_row) {
    QTreeWidget* const lp_tree = ip_row->treeWidget();
    lp_tree->scrollToItem(ip_row);
    return lp_tree->visualItemRect(ip_row).intersected(lp_tree->viewport()->rect()).center();
}

} // namespace

namespace hands {

bool Activate(QWidget* ip_widget) {
    constexpr int l_patience = 30'000; // milliseconds
    ip_widget->activateWindow();
    // Qt's own wait is content with a dialog whose window is active.
    return QTest::qWaitFor([&] { return QApplication::activeWindow() == ip_widget->window(); }, l_patience);
}

void TurnTo(QWidget* ip_widget) {
    if (ip_widget->parentWidget()) {
        TurnTo(ip_widget->parentWidget());
    }
    QTabWidget* const lp_tabs =
        qobject_cast<QTabWidget*>(ip_widget->parentWidget() ? ip_widget->parentWidget()->parentWidget() : nullptr);
    const int l_index = lp_tabs ? lp_tabs->indexOf(ip_widget) : -1;
    if (l_index >= 0 && l_index != lp_tabs->currentIndex()) {
        QTest::mouseClick(lp_tabs->tabBar(), Qt::LeftButton, Qt::NoModifier,
                          lp_tabs->tabBar()->tabRect(l_index).center());
    }
}

void Click(QWidget* ip_widget) {
    QTest::mouseClick(ip_widget, Qt::LeftButton);
}

void Type(QLineEdit* ip_edit, const QString& i_text) {
    Click(ip_edit);
    QTest::keySequence(ip_edit, QKeySequence(QKeySequence::SelectAll));
    if (i_text.isEmpty()) {
        QTest::keyClick(ip_edit, Qt::Key_Delete);
    }
    // A key gives a whole character, which may be two QChars.
    for (const char32_t l_character : i_text.toStdU32String()) {
        QTest::sendKeyEvent(QTest::Click, ip_edit, Qt::Key_unknown, QString::fromUcs4(&l_character, 1), Qt::NoModifier);
    }
}

void Press(const QKeySequence& i_keys, QWidget* ip_widget) {
    if (QWidget* const lp_widget = ip_widget ? ip_widget : QApplication::focusWidget()) {
        QTest::keySequence(lp_widget, i_keys);
    }
}

bool ClickButton(const QToolBar* ip_bar, const QString& i_text) {
    QAction* const lp_action = Bearing(ip_bar->actions(), i_text);
    if (!lp_action) {
        return false;
    }
    QTest::mouseClick(ip_bar->widgetForAction(lp_action), Qt::LeftButton);
    return true;
}

QTreeWidgetItem* FindRow(const QTreeWidget* ip_tree, const QStringList& i_path) {
    QTreeWidgetItem* lp_row = ip_tree->invisibleRootItem();
    for (const QString& l_text : i_path) {
        lp_row = lp_row ? Below(lp_row, l_text) : nullptr;
    }
    return lp_row;
}

void ClickRow(QTreeWidgetItem* ip_row, Qt::KeyboardModifiers i_modifiers) {
    QTest::mouseClick(ip_row->treeWidget()->viewport(), Qt::LeftButton, i_modifiers, MiddleOf(ip_row));
}

void ClickRow(QListWidgetItem* ip_row) {
    QListWidget* const lp_list = ip_row->listWidget();
    lp_list->scrollToItem(ip_row);
    QTest::mouseClick(lp_list->viewport(), Qt::LeftButton, {}, lp_list->visualItemRect(ip_row).center());
}

QMenu* OpenMenu(QTreeWidgetItem* ip_row) {
    QWidget* const lp_viewport = ip_row->treeWidget()->viewport();
    const QPoint l_point = MiddleOf(ip_row);
    QContextMenuEvent l_click(QContextMenuEvent::Mouse, l_point, lp_viewport->mapToGlobal(l_point));
    QApplication::sendEvent(lp_viewport, &l_click);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

bool Choose(QMenu* ip_menu, const QString& i_text) {
    QAction* const lp_action = ip_menu ? Bearing(ip_menu->actions(), i_text) : nullptr;
    if (lp_action) {
        QTest::mouseClick(ip_menu, Qt::LeftButton, Qt::NoModifier, ip_menu->actionGeometry(lp_action).center());
    }
    return lp_action;
}

} // namespace hands
