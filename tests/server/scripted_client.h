// A client of the central server that does exactly what the test says.
#pragma once

#include "net/server_messages.h"

#include "server/frame_link.h"
#include "server/server_process.h"

#include <QHostAddress>

#include <string>

class ScriptedClient : public FrameLink {
public:
    // Another local address (127.0.0.2) makes it a stranger of another place.
    explicit ScriptedClient(quint16 i_port, const QHostAddress& i_localAddress = QHostAddress(QHostAddress::LocalHost));
    ScriptedClient(quint16 i_port, const std::string& i_user); // logged in, with a password of its own

    void SendLogin(const std::string& i_user, const std::string& i_password);
    from_server::LoginReply LogIn(const std::string& i_user, const std::string& i_password);
    from_server::RoomJoined Enter(const std::string& i_room);

    // All that the server had to say to this client up to now has arrived after this call.
    void Settle();

private:
    std::string m_user;
};
