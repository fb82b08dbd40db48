// Callers: who they say they are, in whatever pieces it arrives, and what is done with those who do not.
#include "peer_network.h"

namespace {

using IncomingTest = PeerNetworkTest;

std::string InitFrameOf(const std::string& i_user, const std::string& i_type) {
    const std::string l_body = BytesOf(EncodeInitFrame(DirectInit{i_user, i_type}));
    return Int32(static_cast<std::uint32_t>(l_body.size())) + l_body;
}

std::string FrameOf(const MemStream& i_body) {
    return Int32(static_cast<std::uint32_t>(i_body.GetWriteIndex())) + BytesOf(i_body);
}

TEST_F(IncomingTest, BytesMayComeOneByOneOrAllAtOnce) {
    std::vector<std::string> l_wishes;
    QObject::connect(
        peerMessenger, &PeerMessenger::QueueUploadRequested, &m_context,
        [&](const std::string& i_user, const std::string& i_file) { l_wishes.push_back(i_user + ":" + i_file); });
    const std::string l_wish = FrameOf(Encode(QueueUpload{"song"}));
    ScriptedPeer l_slow;
    for (const char l_byte : InitFrameOf("slow", "P") + l_wish) {
        l_slow.SendRaw(std::string(1, l_byte));
        QCoreApplication::processEvents();
    }
    ScriptedPeer l_fast;
    l_fast.SendRaw(InitFrameOf("fast", "P") + l_wish + l_wish + l_wish.substr(0, 5));
    ASSERT_TRUE(WaitFor([&] { return l_wishes.size() == 3; }));
    std::ranges::sort(l_wishes);
    EXPECT_EQ(l_wishes, (std::vector<std::string>{"fast:song", "fast:song", "slow:song"}));
    l_fast.SendRaw(l_wish.substr(5));
    EXPECT_TRUE(WaitFor([&] { return l_wishes.size() == 4; }));
    EXPECT_TRUE(m_log.Has("1 Accepted messaging connection to user fast"));
    EXPECT_TRUE(m_log.Has("1 Peer connection of type P opened from user fast"));
    EXPECT_TRUE(m_log.Has("1 Received PM_QUEUE_UPLOAD message from user slow"));
}

TEST_F(IncomingTest, WhatWaitsGoesOutWhenTheUserCalls) {
    peerMessenger->QueueDownload("caller", "wanted");
    const auto l_peer = ScriptedPeer::Introduced("caller");
    ASSERT_TRUE(WaitFor([&] { return l_peer->Frames().size() == 1; }));
    EXPECT_EQ(l_peer->Frames()[0], BytesOf(Encode(QueueUpload{"wanted"})));
    // The attempt goes on by itself.
    EXPECT_EQ(Attempts("caller").size(), 1U);
}

TEST_F(IncomingTest, AFileConnectionTurnsRawBehindItsToken) {
    struct Handover {
        std::string user, rest;
        uint token;
    };
    std::vector<Handover> l_handovers;
    QObject::connect(peerMessenger, &PeerMessenger::FileConnectionRequested, &m_context,
                     [&](const std::string& i_user, QTcpSocket* ip_socket, uint i_token) {
                         EXPECT_EQ(ip_socket->parent(), nullptr);
                         l_handovers.push_back({i_user, ip_socket->readAll().toStdString(), i_token});
                         ip_socket->deleteLater();
                     });
    ScriptedPeer l_atOnce;
    l_atOnce.SendRaw(InitFrameOf("atonce", "F") + Int32(0x01020304) + "data behind");
    ASSERT_TRUE(WaitFor([&] { return l_handovers.size() == 1; }));
    EXPECT_EQ(l_handovers[0].user, "atonce");
    EXPECT_EQ(l_handovers[0].token, 0x01020304U);
    EXPECT_EQ(l_handovers[0].rest, "data behind");

    ScriptedPeer l_slow;
    for (const char l_byte : InitFrameOf("slowly", "F") + Int32(7)) {
        EXPECT_EQ(l_handovers.size(), 1U);
        l_slow.SendRaw(std::string(1, l_byte));
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(WaitFor([&] { return l_handovers.size() == 2; }));
    EXPECT_EQ(l_handovers[1].token, 7U);
    EXPECT_TRUE(m_log.Has("1 Accepted file connection to user slowly"));
}

TEST_F(IncomingTest, DistributedConnectionsAreHandedOverOrClosed) {
    const auto l_unwanted = ScriptedPeer::Introduced("leaf", "D");
    EXPECT_TRUE(WaitFor([&] { return l_unwanted->IsClosed(); }));
    std::string l_user;
    std::unique_ptr<QTcpSocket> l_socket;
    QObject::connect(peerMessenger, &PeerMessenger::DNetConnectionRequested, &m_context,
                     [&](const std::string& i_user, QTcpSocket* ip_socket) {
                         l_user = i_user;
                         l_socket.reset(ip_socket);
                     });
    const auto l_peer = ScriptedPeer::Introduced("branch", "D");
    ASSERT_TRUE(WaitFor([&] { return l_socket != nullptr; }));
    EXPECT_EQ(l_user, "branch");
    EXPECT_FALSE(l_peer->IsClosed());
    EXPECT_TRUE(m_log.Has("1 Accepted DNet connection to user branch"));
}

TEST_F(IncomingTest, FailedFramesEndTheConnectionWithoutAWord) {
    struct Case {
        std::string bytes;
        const char* line;
    };
    const std::string l_answer = BytesOf(EncodeInitFrame(IndirectAnswer{1}));
    std::vector<Case> l_cases = {
        {Int32(0), "1 Failed to read direction from new peer connection"},
        {Int32(4) + l_answer.substr(0, 4), "1 Failed to read req from indirect peer connection"},
        {Int32(5) + '\0' + Int32(0xFFFFFFFF), "1 Req sent on indirect peer connection not found"},
        {InitFrameOf("stranger", "Q"), "1 Peer connection of type Q opened from user stranger"},
        {Int32(9) + '\1' + Int32(0x20001) + "name", "1 Failure initializing peer connection, disposing of socket"},
    };
    const std::string l_whole = BytesOf(EncodeInitFrame(DirectInit{"cut", "P"}));
    for (std::size_t l_length = 1; l_length < l_whole.size(); ++l_length)
        l_cases.push_back({Int32(static_cast<std::uint32_t>(l_length)) + l_whole.substr(0, l_length),
                           "1 Failure initializing peer connection, disposing of socket"});
    for (const Case& l_case : l_cases) {
        m_log.lines.clear();
        ScriptedPeer l_peer;
        l_peer.SendRaw(l_case.bytes);
        ASSERT_TRUE(WaitFor([&] { return l_peer.IsClosed(); })) << l_case.line;
        EXPECT_TRUE(l_peer.Frames().empty());
        EXPECT_TRUE(m_log.Has(l_case.line)) << l_case.line;
        EXPECT_TRUE(m_log.Has("1 Failure initializing peer connection, disposing of socket"));
        EXPECT_EQ(m_log.lines.back(), "2 Socket not identified");
    }
    // A caller that says nothing it could be judged by, and goes.
    m_log.lines.clear();
    {
        ScriptedPeer l_peer;
        l_peer.SendRaw(Int32(100) + "half");
        ASSERT_TRUE(WaitFor([] { return !g("uninitialized_socket").empty(); }));
    }
    ASSERT_TRUE(WaitFor([&] { return m_log.Has("2 Identified as uninitialized socket"); }));
    EXPECT_TRUE(g("uninitialized_socket").empty());
}

TEST_F(IncomingTest, TheLargestInitFrameIsTakenAndNoLarger) {
    const std::string l_text(limits::textLengthOrCount, 'x');
    ScriptedPeer l_largest;
    l_largest.SendRaw(InitFrameOf(l_text, l_text));
    ASSERT_TRUE(WaitFor([&] { return l_largest.IsClosed(); }));
    EXPECT_TRUE(m_log.Has("1 Peer connection of type " + l_text + " opened from user " + l_text));

    for (const std::uint32_t l_length : {0x80000000U, 0xFFFFFFFFU, 0x7FFFFFFFU, std::uint32_t{limits::initFrame + 1}}) {
        ScriptedPeer l_peer;
        l_peer.SendRaw(Int32(l_length) + "\1");
        EXPECT_TRUE(WaitFor([&] { return l_peer.IsClosed(); })) << l_length;
    }
    ScriptedPeer l_allowed;
    l_allowed.SendRaw(Int32(limits::initFrame) + "\1");
    LetThingsSettle();
    EXPECT_FALSE(l_allowed.IsClosed());
}

TEST_F(IncomingTest, NamesThatCallersMadeUpAreForgotten) {
    const auto l_peer = ScriptedPeer::Introduced("nobody");
    FireHalfMinute();
    ASSERT_TRUE(d.GetType("user")->HasItem("nobody"));
    l_peer->Socket().close();
    ASSERT_TRUE(WaitFor([] { return PeerSockets("nobody").empty(); }));
    FireHalfMinute();
    EXPECT_FALSE(d.GetType("user")->HasItem("nobody"));

    // One whom something refers to stays.
    const auto l_known = ScriptedPeer::Introduced("somebody");
    User("somebody").NewItem("is_tracked");
    l_known->Socket().close();
    ASSERT_TRUE(WaitFor([] { return PeerSockets("somebody").empty(); }));
    FireHalfMinute();
    EXPECT_TRUE(d.GetType("user")->HasItem("somebody"));
}

} // namespace
