// What one client asks the server to pass on to another: private chat, and the requests to connect.
#pragma once

#include "net/server_messages.h"

class Directory;
class Mailbox;
class Session;

class Relay {
public:
    Relay(const Directory& i_directory, Mailbox& i_mailbox);

    void DeliverWaiting(Session& io_session); // what came while its user was away

    void OnPrivateChat(Session& io_session, const to_server::PrivateChat& i_message);
    void OnAcknowledgement(Session& io_session, const to_server::PrivateChatAcknowledgement& i_message);
    void OnIndirectConnectionRequest(Session& io_session, const to_server::IndirectConnectionRequest& i_message);
    void OnCantConnectToPeer(Session& io_session, const to_server::CantConnectToPeer& i_message);

private:
    const Directory& m_directory;
    Mailbox& m_mailbox;
};
