// A central server that does what a test tells it to, on a port of 127.0.0.1 that the system chooses. It lives in the
// client's process and event loop.
#pragma once

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "net/frame_reader.h"
#include "net/server_messages.h"

constexpr int deadlineMilliseconds = 20'000;

class ScriptedServer {
public:
    ScriptedServer() {
        if (!m_listener.listen(QHostAddress::LocalHost, 0))
            qFatal("no port to listen on");
    }

    int Port() const { return m_listener.serverPort(); }

    // Waits for the next client; whoever was there before is forgotten.
    bool Accept() {
        if (!QTest::qWaitFor([this] { return m_listener.hasPendingConnections(); }, deadlineMilliseconds))
            return false;
        mp_client.reset(m_listener.nextPendingConnection());
        m_reader.Renew();
        return true;
    }
    bool HasPendingClient() const { return m_listener.hasPendingConnections(); }

    // The next frame's body, code first; nothing if none comes.
    std::optional<std::string> NextBody() {
        if (!QTest::qWaitFor([this] { return m_reader.TakeFrom(*mp_client) == FrameReader::Status::FrameReady; },
                             deadlineMilliseconds))
            return std::nullopt;
        std::string l_body(m_reader.Frame().GetPending());
        m_reader.Reset();
        return l_body;
    }

    // The next frame as this message; nothing if it is none.
    template <class Message>
    std::optional<Message> Next() {
        const std::optional<std::string> l_body = NextBody();
        if (!l_body)
            return std::nullopt;
        MemStream l_stream;
        l_stream.WriteBuffer(l_body->data(), l_body->size());
        std::int32_t l_code = 0;
        Message l_message;
        if (!l_stream.Read(l_code) || l_code != Message::code || !Decode(l_stream, l_message))
            return std::nullopt;
        return l_message;
    }

    template <class Message>
    void Say(const Message& i_message) {
        SayBytes(FrameOf(i_message));
    }
    void SayBytes(const std::string& i_bytes) {
        mp_client->write(i_bytes.data(), static_cast<qint64>(i_bytes.size()));
        mp_client->flush();
    }

    template <class Message>
    static std::string FrameOf(const Message& i_message) {
        return std::string(MakeFrame(Encode(i_message)).GetWritten());
    }
    static std::string FrameOfBody(const std::string& i_body) {
        MemStream l_body;
        l_body.WriteBuffer(i_body.data(), i_body.size());
        return std::string(MakeFrame(l_body).GetWritten());
    }

    void Close() { mp_client->disconnectFromHost(); }
    bool SeesClose() {
        return QTest::qWaitFor([this] { return mp_client->state() == QAbstractSocket::UnconnectedState; },
                               deadlineMilliseconds);
    }
    QTcpSocket& Client() { return *mp_client; }

private:
    QTcpServer m_listener;
    std::unique_ptr<QTcpSocket> mp_client;
    FrameReader m_reader{limits::serverFrame};
};
