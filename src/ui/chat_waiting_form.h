// The private messages for which no chat was opened, by sender.
#pragma once

#include <QWidget>

#include <deque>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class ChatWaitingForm : public QWidget {
    Q_OBJECT

public:
    explicit ChatWaitingForm(QWidget* ip_parent);

    // Keeps as much of the text as a chat shows. Too many push out the oldest.
    void Add(const std::string& i_user, const std::string& i_text);
    // The user's messages in order of arrival, which wait no longer.
    std::vector<std::string> Take(const std::string& i_user);

Q_SIGNALS:
    void Opened(std::string i_user); // the user wants to read what that one has written
    void Emptied();

protected:
    void showEvent(QShowEvent* ip_event) override;

private:
    void OnOpen();
    void OnDismissAll();
    void Count(const std::string& i_user, int i_change);

    struct Sender {
        QTreeWidgetItem* row = nullptr;
        int messages = 0;
    };

    std::deque<std::pair<std::string, std::string>> m_messages; // sender and text, oldest first
    std::unordered_map<std::string, Sender> m_senders;
    QTreeWidget* mp_list = nullptr;
    QPushButton* mp_open = nullptr;
};
