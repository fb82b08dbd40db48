#include "server/scripted_client.h"

#include <QNetworkProxy>

#include <gtest/gtest.h>

namespace {

std::unique_ptr<QTcpSocket> Connected(quint16 i_port, const QHostAddress& i_localAddress) {
    auto l_socket = std::make_unique<QTcpSocket>();
    l_socket->setProxy(QNetworkProxy::NoProxy);
    l_socket->bind(i_localAddress);
    l_socket->connectToHost(QHostAddress(QHostAddress::LocalHost), i_port);
    EXPECT_TRUE(l_socket->waitForConnected(g_patienceMs)) << l_socket->errorString().toStdString();
    return l_socket;
}

} // namespace

ScriptedClient::ScriptedClient(quint16 i_port, const QHostAddress& i_localAddress)
    : FrameLink(Connected(i_port, i_localAddress)) {}

ScriptedClient::ScriptedClient(quint16 i_port, const std::string& i_user) : ScriptedClient(i_port) {
    const from_server::LoginReply l_reply = LogIn(i_user, "password of " + i_user);
    EXPECT_TRUE(l_reply.accepted) << l_reply.reason;
}

void ScriptedClient::SendLogin(const std::string& i_user, const std::string& i_password) {
    m_user = i_user;
    to_server::Login l_login;
    l_login.userName = i_user;
    l_login.password = i_password;
    Send(l_login);
}

from_server::LoginReply ScriptedClient::LogIn(const std::string& i_user, const std::string& i_password) {
    SendLogin(i_user, i_password);
    const auto l_reply = Await<from_server::LoginReply>();
    EXPECT_TRUE(l_reply) << "no answer to the login of " << i_user;
    return l_reply.value_or(from_server::LoginReply());
}

from_server::RoomJoined ScriptedClient::Enter(const std::string& i_room) {
    Send(to_server::EnterRoom{i_room});
    const auto l_joined = Await<from_server::RoomJoined>([&](const auto& i_reply) { return i_reply.room == i_room; });
    EXPECT_TRUE(l_joined) << "no answer to entering " << i_room;
    return l_joined.value_or(from_server::RoomJoined());
}

void ScriptedClient::Settle() {
    Send(to_server::GetUserStatus{m_user});
    EXPECT_TRUE(Await<from_server::UserStatus>([&](const auto& i_reply) { return i_reply.user == m_user; }));
}
