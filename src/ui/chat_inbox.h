// Where private messages arrive: into the sender's chat, into a new one, or, when strangers have already filled the
// window with tabs, among those that wait behind one alert until the user asks for them.
#pragma once

#include "store/data.h"

#include <QObject>

#include <string>

class ChatWaitingForm;
class QTabWidget;

class ChatInbox : public QObject, public DataHandler {
    Q_OBJECT

public:
    // The tabs of the chats, not owned. The Types of users and of chats must stand.
    explicit ChatInbox(QTabWidget* ip_tabs);

    void Receive(const std::string& i_user, const std::string& i_text);

private:
    void OnChatOpened(ConnectionInfo& i_info);
    void OnWaitingEmpty();
    void Wait(const std::string& i_user, const std::string& i_text);

    QTabWidget* mp_tabs;
    ChatWaitingForm* mp_waiting; // of the window; a tab only while something waits
};
