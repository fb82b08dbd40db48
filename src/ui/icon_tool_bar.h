// What the two tool bars at the top of the window have in common: buttons of a small icon with a text beside it that
// the keyboard can reach too, and one blank button that keeps the height of a bar with nothing to offer.
#pragma once

#include <QToolBar>

class IconToolBar : public QToolBar {
    Q_OBJECT

public:
    IconToolBar(const QString& i_title, QWidget* ip_parent);

protected:
    QAction* AddButton(const QString& i_icon, const QString& i_text);
    void AddBlank();
    // The action leaves the bar at once and dies a little later: it may be the one whose signal is being handled.
    void DropAction(QAction* ip_action);
    void DropActions();

    void actionEvent(QActionEvent* ip_event) override;
};
