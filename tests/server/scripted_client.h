// A client of the central server that does exactly what the test says. Blocking: it needs no event loop.
#pragma once

#include "net/frame_reader.h"
#include "net/server_messages.h"

#include "server/server_process.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <list>
#include <optional>
#include <string>
#include <string_view>

class ScriptedClient {
public:
    // Another local address (127.0.0.2) makes it a stranger of another place.
    explicit ScriptedClient(quint16 i_port, const QHostAddress& i_localAddress = QHostAddress(QHostAddress::LocalHost));
    ScriptedClient(quint16 i_port, const std::string& i_user); // logged in, with a password of its own

    template <class Message>
    void Send(const Message& i_message) {
        SendBytes(MakeFrame(Encode(i_message)).GetWritten());
    }
    void SendBytes(std::string_view i_bytes); // as they are, frame and all
    void Flush();

    void SendLogin(const std::string& i_user, const std::string& i_password);
    from_server::LoginReply LogIn(const std::string& i_user, const std::string& i_password);
    from_server::RoomJoined Enter(const std::string& i_room);

    // The first message of the kind that fits, out of order if need be; nullopt at the deadline or at the close. What
    // does not fit stays for later calls.
    template <class Message, class Predicate>
    std::optional<Message> Await(Predicate i_fits) {
        do {
            if (std::optional<Message> l_message = Take<Message>(i_fits))
                return l_message;
        } while (ReceiveFrame());
        return std::nullopt;
    }
    template <class Message>
    std::optional<Message> Await() {
        return Await<Message>([](const Message&) { return true; });
    }

    // All that the server had to say to this client up to now has arrived after this call.
    void Settle();
    // How many of the kind have arrived; they are taken out.
    template <class Message>
    int TakeAll() {
        int l_count = 0;
        while (Take<Message>([](const Message&) { return true; }))
            ++l_count;
        return l_count;
    }

    bool AwaitClose(); // the server has ended the connection
    bool IsAlive() { return !m_isClosed && m_socket.state() == QAbstractSocket::ConnectedState; }
    QTcpSocket& Socket() { return m_socket; }

private:
    struct Received {
        std::int32_t code = 0;
        MemStream body;
    };

    template <class Message, class Predicate>
    std::optional<Message> Take(Predicate i_fits) {
        for (auto l_received = m_received.begin(); l_received != m_received.end(); ++l_received) {
            if (l_received->code != Message::code)
                continue;
            MemStream l_body;
            l_body.WriteBuffer(l_received->body.GetReadBuffer(),
                               static_cast<unsigned long>(l_received->body.GetPendingReadLength()));
            Message l_message;
            if (Decode(l_body, l_message) && i_fits(l_message)) {
                m_received.erase(l_received);
                return l_message;
            }
        }
        return std::nullopt;
    }

    bool ReceiveFrame(); // waits for one; false at the deadline and at the close

    QTcpSocket m_socket;
    FrameReader m_reader{limits::serverFrame};
    std::list<Received> m_received;
    std::string m_user;
    bool m_isClosed = false;
};
