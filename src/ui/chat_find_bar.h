// The strip under a chat's text in which one looks for words. Ctrl+F opens it, Return goes to the next place further
// up, since what is sought in a chat is mostly recent, Shift+Return down; Escape closes it.
#pragma once

#include <QWidget>

class ChatView;
class QLabel;
class QLineEdit;

class ChatFindBar : public QWidget {
    Q_OBJECT

public:
    // Hidden at first. The key opens it wherever in i_area the focus is; closed, it gives the focus to ip_home.
    ChatFindBar(ChatView* ip_view, QWidget* ip_home, QWidget* ip_area);

    void Open();

protected:
    void keyPressEvent(QKeyEvent* ip_event) override;

private:
    void Find(bool i_isUpwards);
    void Close();

    ChatView* mp_view; // not owned
    QWidget* mp_home;  // not owned
    QLineEdit* mp_edit = nullptr;
    QLabel* mp_answer = nullptr;
};
