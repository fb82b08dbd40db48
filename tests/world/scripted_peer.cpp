#include "world/scripted_peer.h"

#include <QNetworkProxy>

#include <gtest/gtest.h>

QByteArray PeerLink::ReadRaw(qint64 i_length) {
    while (Socket().bytesAvailable() < i_length && Socket().waitForReadyRead(g_patienceMs)) {
    }
    return Socket().read(i_length);
}

InitFrame PeerLink::ReadInitFrame() {
    EXPECT_TRUE(ReceiveBody());
    const InitFrame l_init = DecodeInitFrame(Reader().Frame());
    Reader().Reset();
    return l_init;
}

ScriptedPeer::ScriptedPeer(const std::string& i_user, quint16 i_serverPort)
    : m_user(i_user), m_server(i_serverPort, i_user) {
    m_listener.setProxy(QNetworkProxy::NoProxy);
    EXPECT_TRUE(m_listener.listen(QHostAddress(QHostAddress::LocalHost)));
    m_server.Send(to_server::SetWaitPort{m_listener.serverPort()});
    m_server.Settle();
}

PeerLink ScriptedPeer::ConnectTo(quint16 i_port, const char* ip_type) {
    auto l_socket = std::make_unique<QTcpSocket>();
    l_socket->setProxy(QNetworkProxy::NoProxy);
    l_socket->connectToHost(QHostAddress(QHostAddress::LocalHost), i_port);
    EXPECT_TRUE(l_socket->waitForConnected(g_patienceMs)) << l_socket->errorString().toStdString();
    PeerLink l_link(std::move(l_socket));
    l_link.SendBytes(MakeFrame(EncodeInitFrame(DirectInit{m_user, ip_type})).GetWritten());
    return l_link;
}

PeerLink ScriptedPeer::Accept(InitFrame& o_init) {
    EXPECT_TRUE(m_listener.hasPendingConnections() || m_listener.waitForNewConnection(g_patienceMs));
    std::unique_ptr<QTcpSocket> l_socket(m_listener.nextPendingConnection());
    l_socket->setParent(nullptr);
    PeerLink l_link(std::move(l_socket));
    o_init = l_link.ReadInitFrame();
    return l_link;
}
