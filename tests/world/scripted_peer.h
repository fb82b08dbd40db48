// Another client that does exactly what the test says: it is logged in at the server, listens, and speaks the peer
// protocol by hand.
#pragma once

#include "peer/init_frame.h"
#include "peer/peer_messages.h"

#include "server/scripted_client.h"

#include <QTcpServer>

#include <optional>
#include <string>

// One connection with another client, behind its init frame.
class PeerLink : public FrameLink {
public:
    using FrameLink::FrameLink;

    // Raw bytes behind the init frame of a file connection; shorter than asked for when the other side ends it.
    QByteArray ReadRaw(qint64 i_length);
    InitFrame ReadInitFrame();
};

class ScriptedPeer {
public:
    ScriptedPeer(const std::string& i_user, quint16 i_serverPort);

    const std::string& User() const { return m_user; }
    ScriptedClient& Server() { return m_server; }

    // A direct connection of the type ("P", "F") to a client that listens on this machine's port.
    PeerLink ConnectTo(quint16 i_port, const char* ip_type);
    // The next connection that comes in, by either road.
    PeerLink Accept(InitFrame& o_init);

private:
    std::string m_user;
    QTcpServer m_listener;
    ScriptedClient m_server;
};

// Somebody who talks to a client about its files, in one connection for messages.
struct ConnectedPeer {
    ConnectedPeer(const std::string& i_user, quint16 i_serverPort, quint16 i_clientPort)
        : peer(i_user, i_serverPort), link(peer.ConnectTo(i_clientPort, "P")) {}

    ScriptedPeer peer;
    PeerLink link;
};
