#include "ui/event_tool_bar.h"

#include "app/show_is_over.h"
#include "app/text.h"
#include "store/data.h"
#include "ui/display_text.h"
#include "ui/focus_widget.h"
#include "ui/main_window.h"

#include <QAction>
#include <QApplication>

#include <chrono>
#include <iterator>

EventToolBar* eventToolBar = nullptr;

namespace {

// Longer names are cut on the button, or one of them would take the room of all others.
constexpr int c_widestName = 200; // pixels
constexpr std::chrono::milliseconds c_blinkStep(2000);

} // namespace

EventToolBar::EventToolBar(QWidget* ip_parent) : IconToolBar(tr("Waiting for you"), ip_parent) {
    eventToolBar = this;
    AddBlank();
    Type* const lp_action = d.NewType("event_toolbar_action", true, false, true);
    Type* const lp_widget = d.NewType("event_toolbar_widget", true, false, true);
    lp_action->RelateToType(lp_widget, One, One, false);
    connect(&m_alertTimer, &QTimer::timeout, this, &EventToolBar::OnIconAlertTimeout);
    connect(qApp, &QApplication::focusChanged, this, &EventToolBar::OnApplicationFocusChanged);
}

EventToolBar::~EventToolBar() {
    eventToolBar = nullptr;
}

void EventToolBar::AddEvent(QString i_text, QString i_icon, QWidget* ip_widget) {
    if (!window()->isActiveWindow()) {
        Blink(i_icon);
    }
    if (!ip_widget->isVisible() && !d.GetType("event_toolbar_widget")->HasItem(ip_widget)) {
        AddEventButton(i_text, i_icon, ip_widget);
    }
}

void EventToolBar::Blink(const QString& i_icon) {
    if (m_alertIcons.empty()) {
        m_alertIndex = 0;
        m_alertTimer.start(c_blinkStep);
    }
    m_alertIcons.insert(i_icon);
}

void EventToolBar::AddEventButton(const QString& i_text, const QString& i_icon, QWidget* ip_widget) {
    if (m_isBlank) {
        DropActions();
        m_isBlank = false;
    }
    const std::string l_text = ToUtf8(i_text);
    QAction* const lp_action = AddButton(i_icon, TitleText(l_text));
    lp_action->setIconText(
        fontMetrics().elidedText(LabelText(l_text), Qt::ElideRight, c_widestName).replace(u'&', QLatin1String("&&")));
    lp_action->setToolTip(ToolTipText(l_text));
    widgetForAction(lp_action)->setAccessibleName(LabelText(l_text));
    connect(lp_action, &QAction::triggered, this, &EventToolBar::OnActionTriggered);
    d.GetType("event_toolbar_widget")
        ->GetItem(ip_widget)
        ->Connect(d.GetType("event_toolbar_action")->GetItem(lp_action));
    connect(ip_widget, &QObject::destroyed, this, &EventToolBar::OnWidgetDestroyed, Qt::UniqueConnection);
}

void EventToolBar::RemoveEvent(QWidget* ip_widget) {
    RemoveButtonOf(ip_widget);
}

void EventToolBar::OnWidgetDestroyed(QObject* ip_widget) {
    if (!g_showIsOver) {
        RemoveButtonOf(ip_widget);
    }
}

// Only the address counts: the widget may be half gone.
void EventToolBar::RemoveButtonOf(const QObject* ip_widget) {
    const ItemPtr l_widget = d.GetType("event_toolbar_widget")->HasItem(ip_widget);
    if (!l_widget) {
        return;
    }
    const ItemPtr l_action = l_widget.HasItem("event_toolbar_action");
    DropAction(l_action.AsPointer<QAction>());
    if (actions().isEmpty()) {
        AddBlank();
        m_isBlank = true;
    }
    l_action.Remove();
    l_widget.Remove();
}

void EventToolBar::OnActionTriggered() {
    if (g_showIsOver) {
        return;
    }
    const ItemPtr l_widget = d.GetType("event_toolbar_action")->HasItem(sender()).HasItem("event_toolbar_widget");
    if (!l_widget) {
        return;
    }
    QWidget* const lp_widget = l_widget.AsPointer<QWidget>();
    RemoveButtonOf(lp_widget);
    FocusWidget(lp_widget);
}

// The alerts one after the other, then the normal icon, then again.
void EventToolBar::OnIconAlertTimeout() {
    if (m_alertIcons.empty() || g_showIsOver || !mainWindow) {
        return;
    }
    if (m_alertIndex >= static_cast<int>(m_alertIcons.size())) {
        m_alertIndex = 0;
        mainWindow->ResetApplicationIcon();
    } else {
        mainWindow->SetApplicationIcon(*std::next(m_alertIcons.begin(), m_alertIndex));
        ++m_alertIndex;
    }
}

// The user is here, or was until now: nothing is left to blink for.
void EventToolBar::OnApplicationFocusChanged(QWidget*, QWidget*) {
    if (m_alertIcons.empty()) {
        return;
    }
    m_alertIcons.clear();
    m_alertTimer.stop();
    if (!g_showIsOver && mainWindow) {
        mainWindow->ResetApplicationIcon();
    }
}
