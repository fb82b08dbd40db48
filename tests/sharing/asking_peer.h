// Another client, played by the test on a plain socket: it introduces itself, asks, and keeps the answers.
#pragma once

#include "net/frame_reader.h"
#include "peer/init_frame.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"
#include "store/data.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

inline bool Until(const std::function<bool()>& i_condition) {
    return QTest::qWaitFor(i_condition, 30'000);
}

class AskingPeer {
public:
    explicit AskingPeer(const std::string& i_name) {
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), peerMessenger->ListeningPort());
        EXPECT_TRUE(m_socket.waitForConnected(10'000));
        Write(EncodeInitFrame(DirectInit{i_name, "P"}));
        EXPECT_TRUE(Until([&] { return d.GetType("user")->HasItem(i_name).GetItems("peer_socket").size() == 1; }));
    }

    template <class Message>
    void Ask(const Message& i_message) {
        Write(Encode(i_message));
    }
    void Say(const MemStream& i_message) { Write(i_message); }

    // The body of the next frame, with its code; empty if none comes.
    std::string Next() {
        EXPECT_TRUE(Until([&] { return Read() || !m_socket.isOpen(); }));
        const std::string l_body(m_frames.Frame().GetWritten());
        m_frames.Renew();
        return l_body;
    }
    // Whether a frame has come.
    bool Read() { return m_frames.TakeFrom(m_socket) == FrameReader::Status::FrameReady; }
    void Close() { m_socket.abort(); }

private:
    void Write(const MemStream& i_message) {
        const MemStream l_frame = MakeFrame(i_message);
        m_socket.write(l_frame.GetReadBuffer(), l_frame.GetWriteIndex());
        m_socket.flush();
    }

    QTcpSocket m_socket;
    FrameReader m_frames{limits::shareFrame};
};

// Nobody is connected any more, and nothing waits to be sent.
inline void ForgetPeers() {
    for (Item* lp_socket : g("peer_socket"))
        peerMessenger->DisposeOfSocket(lp_socket->AsPointer<QTcpSocket>());
    g("unsent_message").Remove();
}
