#include "server/scripted_client.h"

#include <gtest/gtest.h>

ScriptedClient::ScriptedClient(quint16 i_port, const QHostAddress& i_localAddress) {
    m_socket.bind(i_localAddress);
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), i_port);
    EXPECT_TRUE(m_socket.waitForConnected(g_patienceMs)) << m_socket.errorString().toStdString();
}

ScriptedClient::ScriptedClient(quint16 i_port, const std::string& i_user) : ScriptedClient(i_port) {
    const from_server::LoginReply l_reply = LogIn(i_user, "password of " + i_user);
    EXPECT_TRUE(l_reply.accepted) << l_reply.reason;
}

void ScriptedClient::SendBytes(std::string_view i_bytes) {
    m_socket.write(i_bytes.data(), static_cast<qint64>(i_bytes.size()));
    m_socket.flush();
}

void ScriptedClient::Flush() {
    while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(g_patienceMs)) {
    }
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

bool ScriptedClient::AwaitClose() {
    while (ReceiveFrame()) {
    }
    return m_isClosed;
}

bool ScriptedClient::ReceiveFrame() {
    // The length is believed: a frame of a test server is honest.
    while (m_reader.TakeFrom(m_socket) == FrameReader::Status::NeedMore) {
        if (!m_socket.waitForReadyRead(g_patienceMs) && m_socket.bytesAvailable() == 0) {
            m_isClosed = m_socket.state() != QAbstractSocket::ConnectedState;
            return false;
        }
    }
    Received l_received;
    l_received.body = m_reader.Frame();
    EXPECT_TRUE(l_received.body.Read(l_received.code));
    m_received.push_back(l_received);
    m_reader.Renew();
    return true;
}
