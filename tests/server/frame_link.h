// One end of a connection of frames that does exactly what the test says, to the server or to a client. Blocking: it
// needs no event loop.
#pragma once

#include "net/frame_reader.h"
#include "net/message.h"

#include <QTcpSocket>

#include <algorithm>
#include <list>
#include <memory>
#include <optional>
#include <string_view>

// Generous: machines under load and sanitizers are slow, and a deadline is only waited for when something is broken.
inline constexpr int g_patienceMs = 60000;

class FrameLink {
public:
    explicit FrameLink(std::unique_ptr<QTcpSocket> i_socket);

    template <class Message>
    void Send(const Message& i_message) {
        SendBytes(MakeFrame(Encode(i_message)).GetWritten());
    }
    void SendBytes(std::string_view i_bytes); // as they are, frame and all
    void Flush();

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

    // How many of the kind have arrived; they are taken out.
    template <class Message>
    int TakeAll() {
        int l_count = 0;
        while (Take<Message>([](const Message&) { return true; }))
            ++l_count;
        return l_count;
    }

    // How many messages of the code have arrived.
    template <class Message>
    int Count() const {
        return static_cast<int>(std::ranges::count(m_received, Message::code, &Received::code));
    }

    bool AwaitClose(); // the other side has ended the connection
    bool IsAlive() const { return !m_isClosed && mp_socket->state() == QAbstractSocket::ConnectedState; }
    QTcpSocket& Socket() { return *mp_socket; }

protected:
    // Waits for one frame's body, which the reader holds then; false at the deadline and at the close.
    bool ReceiveBody();
    FrameReader& Reader() { return *mp_reader; }

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

    bool ReceiveFrame(); // one message into the list

    std::unique_ptr<QTcpSocket> mp_socket;
    std::unique_ptr<FrameReader> mp_reader;
    std::list<Received> m_received;
    bool m_isClosed = false;
};
