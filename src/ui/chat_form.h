// The tab of the private chat with one user.
#pragma once

#include <QWidget>

#include <string>

class ChatEdit;
class ChatView;

class ChatForm : public QWidget {
    Q_OBJECT

public:
    // The `user` item finds its form by a `user_chat_widget` item, which lives as long as the form.
    ChatForm(std::string i_user, QWidget* ip_parent);
    ~ChatForm() override;

    // What the user has said. Of someone who is ignored nothing shows.
    void AddChat(std::string i_text);
    void Focus();

public Q_SLOTS:
    void OnEnter();

protected:
    void showEvent(QShowEvent* ip_event) override;

private:
    void BuildLayout();

    const std::string m_user;
    ChatView* mp_chatView = nullptr;
    ChatEdit* mp_chatEdit = nullptr;
};
