// The tool bar of what waits for the user: a message in a chat that is not on show, the results of a search, a list
// that has arrived. One button for each waiting widget, in order of arrival; pressing it brings the widget to the
// front. While the window is not the active one, its icon also blinks through those of the alerts.
#pragma once

#include "ui/icon_tool_bar.h"

#include <QString>
#include <QTimer>

#include <set>

class EventToolBar : public IconToolBar {
    Q_OBJECT

public:
    // Becomes the global eventToolBar and creates its Types.
    explicit EventToolBar(QWidget* ip_parent);
    ~EventToolBar() override;

    // i_text may be foreign and is made safe to show here; i_icon is a resource name. No button for a widget that is
    // visible or has one. The widget is not owned; it may die at any time.
    void AddEvent(QString i_text, QString i_icon, QWidget* ip_widget);
    // For a widget that comes on show. Nothing happens when it has no button.
    void RemoveEvent(QWidget* ip_widget);

private:
    void OnActionTriggered();
    void OnWidgetDestroyed(QObject* ip_widget);
    void OnIconAlertTimeout();
    void OnApplicationFocusChanged(QWidget* ip_old, QWidget* ip_now);

    void Blink(const QString& i_icon);
    void AddEventButton(const QString& i_text, const QString& i_icon, QWidget* ip_widget);
    void RemoveButtonOf(const QObject* ip_widget);

    bool m_isBlank = true;
    std::set<QString> m_alertIcons; // of the alerts since the window was last active
    int m_alertIndex = 0;           // among them, of the next to show; their number: the normal icon
    QTimer m_alertTimer{this};
};

extern EventToolBar* eventToolBar;
