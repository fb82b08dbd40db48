// A small network for tests: the real messenger, the real server session and the real store on one side, and on the
// other a scripted central server and scripted peers on plain sockets of this machine.
//
// One messenger can live in a process, so all tests share it; each test uses users of its own.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/log.h"
#include "app/timers.h"
#include "bytes.h"
#include "net/frame_reader.h"
#include "net/server.h"
#include "peer/init_frame.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"

// Runs the event loop until the condition holds; false if it does not within a generous time.
[[nodiscard]] bool WaitFor(const std::function<bool()>& i_condition);
// Runs the event loop until what is under way has had its turn: for tests that something does not happen.
void LetThingsSettle();

// The bodies of the frames that have arrived on a socket, and what is left behind them.
class FrameLog {
public:
    explicit FrameLog(QTcpSocket* ip_socket);
    std::vector<std::string> frames;

private:
    FrameReader m_reader{limits::serverFrame};
};

// A peer's end of one connection.
class ScriptedPeer {
public:
    // Connects to the messenger.
    ScriptedPeer();
    // Of a connection that the messenger has opened.
    explicit ScriptedPeer(QTcpSocket* ip_socket);
    // Connected and introduced.
    static std::unique_ptr<ScriptedPeer> Introduced(const std::string& i_user, const char* ip_type = "P");

    void SendRaw(const std::string& i_bytes);
    void SendFrame(const std::string& i_body) { SendRaw(Int32(static_cast<std::uint32_t>(i_body.size())) + i_body); }
    template <class Message>
    void Send(const Message& i_message) {
        SendFrame(BytesOf(Encode(i_message)));
    }
    bool IsClosed() const { return mp_socket->state() == QAbstractSocket::UnconnectedState; }
    QTcpSocket& Socket() { return *mp_socket; }
    std::vector<std::string>& Frames() { return m_log->frames; }
    // Reads nothing from here on.
    void StopReading();

private:
    std::unique_ptr<QTcpSocket> mp_socket;
    std::unique_ptr<FrameLog> m_log;
};

// A peer that can be connected to.
class ScriptedListener {
public:
    ScriptedListener();
    quint16 Port() const { return m_server.serverPort(); }
    // Waits for the next connection; null if none comes.
    std::unique_ptr<ScriptedPeer> Next();
    int Waiting() const { return m_waiting; }

private:
    QTcpServer m_server;
    int m_waiting = 0;
};

class ScriptedServer {
public:
    ScriptedServer();
    quint16 Port() const { return m_server.serverPort(); }
    template <class Message>
    void Send(const Message& i_message) {
        const MemStream l_frame = MakeFrame(Encode(i_message));
        mp_client->write(l_frame.GetReadBuffer(), l_frame.GetWriteIndex());
    }
    // The newest message of that kind; waits for it. What it returns is out of the list.
    template <class Message>
    bool Take(Message& o_message) {
        return WaitFor([&] { return TakeBody(Message::code, o_message); });
    }
    template <class Message>
    bool Has() {
        for (const std::string& l_body : m_log->frames)
            if (l_body.substr(0, 4) == Int32(Message::code))
                return true;
        return false;
    }
    void Forget() { m_log->frames.clear(); }

private:
    template <class Message>
    bool TakeBody(std::int32_t i_code, Message& o_message) {
        for (auto l_body = m_log->frames.begin(); l_body != m_log->frames.end(); ++l_body) {
            if (l_body->substr(0, 4) != Int32(static_cast<std::uint32_t>(i_code)))
                continue;
            MemStream l_stream = StreamOf(l_body->substr(4));
            const bool l_isSound = Decode(l_stream, o_message);
            m_log->frames.erase(l_body);
            return l_isSound;
        }
        return false;
    }

    QTcpServer m_server;
    QTcpSocket* mp_client = nullptr;
    std::unique_ptr<FrameLog> m_log;
};

class RecordingLog : public LogSink {
public:
    RecordingLog() { SetLogSink(this); }
    ~RecordingLog() override { SetLogSink(nullptr); }
    void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item) override;
    // "level text" of the messenger's lines.
    std::vector<std::string> lines;
    bool Has(std::string_view i_line) const;
};

class PeerNetworkTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    static ScriptedServer& TheServer();
    static ItemPtr User(const std::string& i_name);
    // As if the server had told it.
    static void SetAddress(const std::string& i_user, long long i_port);
    static ItemSet PeerSockets(const std::string& i_user) { return User(i_user).GetItems("peer_socket"); }
    static ItemSet Attempts(const std::string& i_user) { return User(i_user).GetItems("connect_to_peer_request"); }
    // Sets an item's time stamp back and fires the half-minute timer.
    static void SetBack(ItemPtr i_item, const char* ip_type, int i_seconds);
    static void FireHalfMinute();

    RecordingLog m_log;
    QObject m_context; // of the test's connections to signals
};
