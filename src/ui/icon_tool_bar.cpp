#include "ui/icon_tool_bar.h"

#include "ui/icon.h"

#include <QAction>
#include <QActionEvent>
#include <QToolButton>

namespace {

constexpr QSize c_iconSize(16, 16);

} // namespace

IconToolBar::IconToolBar(const QString& i_title, QWidget* ip_parent) : QToolBar(i_title, ip_parent) {
    setMovable(false);
    setFloatable(false);
    setIconSize(c_iconSize);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    // No menu to hide the bars with: nothing would tell how to get them back.
    setContextMenuPolicy(Qt::PreventContextMenu);
    toggleViewAction()->setVisible(false);
    // Qt's own button for what the width of the window leaves no room for. Its arrows would be black on every palette.
    if (QToolButton* const lp_more = findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"))) {
        lp_more->setIcon(LoadIcon(QStringLiteral(":/icons/more_icon")));
        lp_more->setAccessibleName(tr("More actions"));
        lp_more->setFocusPolicy(Qt::TabFocus);
    }
}

QAction* IconToolBar::AddButton(const QString& i_icon, const QString& i_text) {
    return addAction(LoadIcon(i_icon), i_text);
}

void IconToolBar::AddBlank() {
    QAction* const lp_blank = addAction(QString());
    lp_blank->setEnabled(false);
    widgetForAction(lp_blank)->setAccessibleName(tr("Nothing here"));
}

void IconToolBar::DropAction(QAction* ip_action) {
    removeAction(ip_action);
    ip_action->deleteLater();
}

// QToolBar::clear would keep the actions as children for as long as the bar lives.
void IconToolBar::DropActions() {
    const QList<QAction*> l_actions = actions();
    clear();
    for (QAction* const lp_action : l_actions) {
        lp_action->deleteLater();
    }
}

// Tool bars make their buttons unreachable for the keyboard. The first one stands for the whole bar.
void IconToolBar::actionEvent(QActionEvent* ip_event) {
    QToolBar::actionEvent(ip_event);
    if (ip_event->type() == QEvent::ActionAdded) {
        widgetForAction(ip_event->action())->setFocusPolicy(Qt::TabFocus);
    }
    if (ip_event->type() != QEvent::ActionChanged) {
        setFocusProxy(actions().isEmpty() ? nullptr : widgetForAction(actions().constFirst()));
    }
}
