// The other client, played by the test on plain sockets with the peer protocol's own codecs.
#pragma once

#include "net/frame_reader.h"
#include "net/limits.h"
#include "peer/init_frame.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"
#include "store/data.h"
#include "transfers/waiting.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <string>

template <class Number>
std::string Bytes(Number i_number) {
    return std::string(reinterpret_cast<const char*>(&i_number), sizeof i_number);
}

// One file connection from the peer's side.
class PeerFileConnection {
public:
    explicit PeerFileConnection(QTcpSocket* ip_socket) : mp_socket(ip_socket) {}

    void Say(const std::string& i_bytes) { mp_socket->write(i_bytes.data(), static_cast<qint64>(i_bytes.size())); }
    // Up to that many bytes; fewer when the connection ends first.
    std::string Hear(qint64 i_count) {
        Until([&] { return mp_socket->bytesAvailable() >= i_count || IsOver(); });
        return mp_socket->read(i_count).toStdString();
    }
    template <class Number>
    Number HearNumber() {
        Number l_number = -1;
        const std::string l_bytes = Hear(sizeof l_number);
        if (l_bytes.size() == sizeof l_number) {
            l_bytes.copy(reinterpret_cast<char*>(&l_number), sizeof l_number);
        }
        return l_number;
    }
    bool IsOver() const { return mp_socket->state() == QAbstractSocket::UnconnectedState; }
    void Close() { mp_socket->disconnectFromHost(); }

private:
    std::unique_ptr<QTcpSocket> mp_socket;
};

class ScriptedPeer {
public:
    // The client knows the peer's address from the start.
    explicit ScriptedPeer(std::string i_name) : m_name(std::move(i_name)), m_frames(limits::peerFrame) {
        m_listener.listen(QHostAddress::LocalHost);
        User().Connect(d.GetType("user_address")->GetItem(QHostAddress(QHostAddress::LocalHost).toIPv4Address()));
        User().Connect(d.GetType("user_port")->GetItem(static_cast<int>(m_listener.serverPort())));
    }

    ItemPtr User() const { return d.GetType("user")->GetItem(m_name); }
    const std::string& Name() const { return m_name; }

    // Opens the messaging connection.
    void Connect() {
        m_messaging.connectToHost(QHostAddress::LocalHost, peerMessenger->ListeningPort());
        Write(m_messaging, MakeFrame(EncodeInitFrame(DirectInit{m_name, messagingConnection})));
        EXPECT_TRUE(Until([this] { return User().IsConnected("peer_socket"); }));
    }
    void ComeOnline() { User().NewItem("is_online"); }

    template <class Message>
    void Say(const Message& i_message) {
        Write(m_messaging, MakeFrame(Encode(i_message)));
    }

    // The next message of that kind, past others that are kept; fails the test when none comes.
    template <class Message>
    Message Expect() {
        Message l_message;
        std::optional<MemStream> l_frame;
        EXPECT_TRUE(Until([&] { return (l_frame = Take(Message::code)).has_value(); })) << int(Message::code);
        if (l_frame) {
            EXPECT_TRUE(Decode(*l_frame, l_message));
        }
        return l_message;
    }
    // How many messages of that kind have come, once what both sides have sent so far is handled.
    template <class Message>
    std::size_t Count() {
        Exchange();
        return static_cast<std::size_t>(std::count_if(m_received.begin(), m_received.end(), [](const auto& i_received) {
            return i_received.first == Message::code;
        }));
    }

    // Offers bytes to the client: a file connection with the token on it.
    PeerFileConnection OpenFileConnection(std::uint32_t i_token) {
        auto* const lp_socket = new QTcpSocket;
        lp_socket->connectToHost(QHostAddress::LocalHost, peerMessenger->ListeningPort());
        Write(*lp_socket, MakeFrame(EncodeInitFrame(DirectInit{m_name, fileConnection})));
        PeerFileConnection l_connection(lp_socket);
        l_connection.Say(Bytes(i_token));
        return l_connection;
    }
    // Takes the client's own: answers it with its init frame read.
    PeerFileConnection AcceptFileConnection() {
        EXPECT_TRUE(Until([this] { return m_listener.hasPendingConnections(); }));
        PeerFileConnection l_connection(m_listener.nextPendingConnection());
        l_connection.Hear(std::max(l_connection.HearNumber<std::int32_t>(), 0)); // nothing if it was closed at once
        return l_connection;
    }

private:
    static void Write(QTcpSocket& io_socket, const MemStream& i_frame) {
        const std::string_view l_bytes = i_frame.GetPending();
        io_socket.write(l_bytes.data(), static_cast<qint64>(l_bytes.size()));
    }
    void ReadFrames() {
        while (m_frames.TakeFrom(m_messaging) == FrameReader::Status::FrameReady) {
            std::int32_t l_code = 0;
            if (m_frames.Frame().Read(l_code)) {
                m_received.emplace_back(l_code, m_frames.Frame());
            }
            m_frames.Renew();
        }
    }
    std::optional<MemStream> Take(int i_code) {
        ReadFrames();
        for (auto l_at = m_received.begin(); l_at != m_received.end(); ++l_at) {
            if (l_at->first == i_code) {
                MemStream l_frame = l_at->second;
                m_received.erase(l_at);
                return l_frame;
            }
        }
        return std::nullopt;
    }
    // A request that is always refused serves as the marker: its answer comes behind all that was said before.
    void Exchange() {
        const std::uint32_t l_token = 4'000'000'000u;
        Say(TransferRequest{TransferRequest::offersUpload, l_token, "no\\such file", 1});
        EXPECT_TRUE(Until([&] {
            ReadFrames();
            if (m_received.empty() || m_received.back().first != PM_TRANSFER_RESPONSE) {
                return false;
            }
            TransferResponse l_answer;
            MemStream l_frame = m_received.back().second;
            return Decode(l_frame, l_answer) && l_answer.token == l_token;
        }));
        m_received.pop_back();
    }

    std::string m_name;
    QTcpServer m_listener;
    QTcpSocket m_messaging;
    FrameReader m_frames;
    std::deque<std::pair<int, MemStream>> m_received;
};
