// Reaching a user: the direct leg, the indirect leg, which of them ends an attempt, and whom the server asks us to
// connect back to.
#include "peer_network.h"

#include <QHostAddress>

#include "app/timestamp.h"

namespace {

const std::uint32_t thisMachine = QHostAddress(QHostAddress::LocalHost).toIPv4Address();

DirectInit InitOf(ScriptedPeer& io_peer) {
    EXPECT_TRUE(WaitFor([&] { return !io_peer.Frames().empty(); }));
    MemStream l_stream = StreamOf(io_peer.Frames().at(0));
    const InitFrame l_frame = DecodeInitFrame(l_stream);
    EXPECT_TRUE(std::holds_alternative<DirectInit>(l_frame));
    return std::get<DirectInit>(l_frame);
}

// A port of this machine on which nobody listens.
quint16 DeafPort() {
    return ScriptedListener().Port();
}

class ConnectionsTest : public PeerNetworkTest {
protected:
    // The token of the request that went to the server for the attempt.
    std::uint32_t TakeToken(const std::string& i_user, const std::string& i_type) {
        to_server::IndirectConnectionRequest l_request;
        EXPECT_TRUE(TheServer().Take(l_request));
        EXPECT_EQ(l_request.user, i_user);
        EXPECT_EQ(l_request.connectionType, i_type);
        return l_request.token;
    }
    void AskToConnectBack(const std::string& i_user, const char* ip_type, std::uint32_t i_token, quint16 i_port) {
        from_server::PeerConnectionRequest l_request;
        l_request.user = i_user;
        l_request.connectionType = ip_type;
        l_request.address = {thisMachine, i_port};
        l_request.token = i_token;
        TheServer().Send(l_request);
    }
};

TEST_F(ConnectionsTest, TheDirectLegCarriesWhatWaitedInOrder) {
    ScriptedListener l_listener;
    SetAddress("direct", l_listener.Port());
    for (const char* lp_file : {"one", "two", "three"})
        peerMessenger->QueueDownload("direct", lp_file);
    EXPECT_EQ(Attempts("direct").size(), 1U);
    EXPECT_EQ(ItemPtr(*Attempts("direct").begin())["connect_to_peer_request_status"].AsView(), "connecting");
    EXPECT_GT(TakeToken("direct", "P"), 0U);

    const auto l_peer = l_listener.Next();
    ASSERT_TRUE(l_peer);
    ASSERT_TRUE(WaitFor([&] { return l_peer->Frames().size() == 4; }));
    EXPECT_EQ(InitOf(*l_peer).user, "me");
    EXPECT_EQ(InitOf(*l_peer).type, "P");
    EXPECT_EQ(l_peer->Frames()[1], BytesOf(Encode(QueueUpload{"one"})));
    EXPECT_EQ(l_peer->Frames()[3], BytesOf(Encode(QueueUpload{"three"})));
    EXPECT_EQ(PeerSockets("direct").size(), 1U);
    EXPECT_TRUE(Attempts("direct").empty());
    EXPECT_TRUE(g("unsent_message").empty());

    const std::vector<std::string> l_expected = {
        "1 Send PM_QUEUE_UPLOAD message to user direct",
        "2 Did not find messaging connection to user, queueing unsent message",
        "1 Attempting peer connection of type P to user direct",
        "2 Also sending indirect connection request.",
        "1 Send PM_QUEUE_UPLOAD message to user direct",
        "2 Did not find messaging connection to user, queueing unsent message",
        "1 Attempting peer connection of type P to user direct",
        "2 Connection attempt to same user of same type already in progress, not re-attempting.",
        "1 Send PM_QUEUE_UPLOAD message to user direct",
        "2 Did not find messaging connection to user, queueing unsent message",
        "1 Attempting peer connection of type P to user direct",
        "2 Connection attempt to same user of same type already in progress, not re-attempting.",
        "1 Direct connection of type P to user direct successful",
        "1 Disposing of peer connection request of type P to user direct",
        "1 Sending 3 pending peer messages to user direct",
    };
    EXPECT_EQ(m_log.lines, l_expected);

    // From now on at once.
    peerMessenger->DenyUpload("direct", "f", "why");
    ASSERT_TRUE(WaitFor([&] { return l_peer->Frames().size() == 5; }));
    EXPECT_EQ(m_log.lines.back(), "2 Found one existing messaging connection to user");
}

TEST_F(ConnectionsTest, AnUnknownAddressIsAskedForAndUsedWhenItComes) {
    ScriptedListener l_listener;
    peerMessenger->RequestFileConnectionToUser("far");
    peerMessenger->RequestDNetConnection("far");
    EXPECT_EQ(Attempts("far").size(), 2U);
    EXPECT_TRUE(m_log.Has("2 User address not found, requesting address"));
    to_server::GetUserAddress l_asked;
    ASSERT_TRUE(TheServer().Take(l_asked));
    EXPECT_EQ(l_asked.user, "far");

    std::string l_user;
    QTcpSocket* lp_handedOver = nullptr;
    QObject::connect(peerMessenger, &PeerMessenger::FileConnectionAccepted, &m_context,
                     [&](const std::string& i_user, QTcpSocket* ip_socket) {
                         l_user = i_user;
                         lp_handedOver = ip_socket;
                     });
    std::unique_ptr<QTcpSocket> l_toDistributed;
    QObject::connect(peerMessenger, &PeerMessenger::DNetConnectionAccepted, &m_context,
                     [&](const std::string&, QTcpSocket* ip_socket) { l_toDistributed.reset(ip_socket); });
    TheServer().Send(from_server::UserAddress{"far", {thisMachine, l_listener.Port()}});
    const auto l_first = l_listener.Next();
    const auto l_second = l_listener.Next();
    ASSERT_TRUE(l_first && l_second);
    EXPECT_EQ((std::set{InitOf(*l_first).type, InitOf(*l_second).type}), (std::set<std::string>{"F", "D"}));
    ASSERT_TRUE(WaitFor([&] { return lp_handedOver != nullptr; }));
    const std::unique_ptr<QTcpSocket> l_socket(lp_handedOver);
    EXPECT_EQ(l_user, "far");
    EXPECT_EQ(l_socket->parent(), nullptr);
    EXPECT_TRUE(m_log.Has("1 User far address arrived"));
    EXPECT_TRUE(m_log.Has("2 Attempting direct connection of type F"));
    EXPECT_TRUE(WaitFor([&] { return l_toDistributed != nullptr; }));
    EXPECT_TRUE(Attempts("far").empty());
}

TEST_F(ConnectionsTest, AnAttemptEndsWhenBothLegsHaveFailed) {
    SetAddress("gone", DeafPort());
    SetAddress("noport", 0);
    SetAddress("wideport", 65536);
    for (const char* lp_user : {"gone", "noport", "wideport"}) {
        const std::string l_user = lp_user;
        peerMessenger->RequestFileConnectionToUser(l_user);
        ASSERT_EQ(Attempts(l_user).size(), 1U);
        const std::uint32_t l_token = TakeToken(l_user, "F");
        ASSERT_TRUE(WaitFor([&] { return m_log.Has("1 Direct connection of type F to user " + l_user + " failed"); }));
        EXPECT_EQ(m_log.lines.back(), "2 Indirect request found. Not removing request.");
        EXPECT_EQ(Attempts(l_user).size(), 1U);
        TheServer().Send(from_server::IndirectConnectionFailure{l_token + 1000});
        TheServer().Send(from_server::IndirectConnectionFailure{l_token});
        ASSERT_TRUE(WaitFor([&] { return Attempts(l_user).empty(); }));
        EXPECT_EQ(m_log.lines.back(), "2 Neither socket nor indirect request found. Removing.");
    }
    EXPECT_TRUE(g("connect_to_peer_request_socket").empty());
}

TEST_F(ConnectionsTest, TheIndirectLegOpensByItsToken) {
    peerMessenger->QueueDownload("behind", "wanted");
    const std::uint32_t l_token = TakeToken("behind", "P");
    ScriptedPeer l_peer;
    l_peer.SendFrame(BytesOf(EncodeInitFrame(IndirectAnswer{l_token})));
    ASSERT_TRUE(WaitFor([&] { return !l_peer.Frames().empty(); }));
    EXPECT_EQ(l_peer.Frames()[0], BytesOf(Encode(QueueUpload{"wanted"})));
    EXPECT_EQ(PeerSockets("behind").size(), 1U);
    EXPECT_TRUE(Attempts("behind").empty());
    EXPECT_TRUE(m_log.Has("1 Found req, accepted indirect connection to user behind, connection type P"));

    // The token is used up.
    ScriptedPeer l_again;
    l_again.SendFrame(BytesOf(EncodeInitFrame(IndirectAnswer{l_token})));
    EXPECT_TRUE(WaitFor([&] { return l_again.IsClosed(); }));
    EXPECT_TRUE(m_log.Has("1 Req sent on indirect peer connection not found"));
}

TEST_F(ConnectionsTest, ALateAnswerGivesASecondConnectionAndTheLatestServes) {
    ScriptedListener l_listener;
    SetAddress("twice", l_listener.Port());
    peerMessenger->QueueDownload("twice", "first");
    const std::uint32_t l_token = TakeToken("twice", "P");
    const auto l_direct = l_listener.Next();
    ASSERT_TRUE(l_direct);
    ASSERT_TRUE(WaitFor([&] { return l_direct->Frames().size() == 2; }));
    SetBack(*PeerSockets("twice").begin(), "connection_open_time", 10);

    ScriptedPeer l_late;
    l_late.SendFrame(BytesOf(EncodeInitFrame(IndirectAnswer{l_token})));
    ASSERT_TRUE(WaitFor([&] { return PeerSockets("twice").size() == 2; }));
    peerMessenger->QueueDownload("twice", "second");
    ASSERT_TRUE(WaitFor([&] { return l_late.Frames().size() == 1; }));
    EXPECT_TRUE(m_log.Has("2 Found 2 existing messaging connections to user, picking latest"));
    EXPECT_EQ(l_direct->Frames().size(), 2U);
}

TEST_F(ConnectionsTest, AFileConnectionByTheIndirectLegLeavesItsBytesToTheOwner) {
    peerMessenger->RequestFileConnectionToUser("uploadee");
    const std::uint32_t l_token = TakeToken("uploadee", "F");
    std::string l_read;
    QObject::connect(peerMessenger, &PeerMessenger::FileConnectionAccepted, &m_context,
                     [&](const std::string&, QTcpSocket* ip_socket) {
                         l_read = ip_socket->readAll().toStdString();
                         ip_socket->deleteLater();
                     });
    ScriptedPeer l_peer;
    const std::string l_answer = BytesOf(EncodeInitFrame(IndirectAnswer{l_token}));
    l_peer.SendRaw(Int32(5) + l_answer + "offset8!");
    ASSERT_TRUE(WaitFor([&] { return !l_read.empty(); }));
    EXPECT_EQ(l_read, "offset8!");
}

TEST_F(ConnectionsTest, ConnectingBackNamesTheTokenAndThenSpeaks) {
    ScriptedListener l_listener;
    std::vector<std::string> l_wishes;
    QObject::connect(
        peerMessenger, &PeerMessenger::QueueUploadRequested, &m_context,
        [&](const std::string& i_user, const std::string& i_file) { l_wishes.push_back(i_user + ":" + i_file); });
    AskToConnectBack("asker", "P", 0x80000007, l_listener.Port());
    const auto l_peer = l_listener.Next();
    ASSERT_TRUE(l_peer);
    ASSERT_TRUE(WaitFor([&] { return !l_peer->Frames().empty(); }));
    EXPECT_EQ(l_peer->Frames()[0], BytesOf(EncodeInitFrame(IndirectAnswer{0x80000007})));
    l_peer->Send(QueueUpload{"song"});
    ASSERT_TRUE(WaitFor([&] { return !l_wishes.empty(); }));
    EXPECT_EQ(l_wishes[0], "asker:song");
    EXPECT_TRUE(g("peer_connection_request").empty());
    EXPECT_TRUE(g("peer_connection_request_socket").empty());
    EXPECT_TRUE(m_log.Has("1 Indirect peer connection requested from user asker"));
    EXPECT_TRUE(m_log.Has("1 Response connection to indirect request from asker, type P opened"));
}

TEST_F(ConnectionsTest, ConnectingBackForAFileWaitsForItsToken) {
    ScriptedListener l_listener;
    uint l_transfer = 0;
    QObject::connect(peerMessenger, &PeerMessenger::FileConnectionRequested, &m_context,
                     [&](const std::string&, QTcpSocket* ip_socket, uint i_token) {
                         l_transfer = i_token;
                         ip_socket->deleteLater();
                     });
    AskToConnectBack("uploader", "F", 8, l_listener.Port());
    const auto l_peer = l_listener.Next();
    ASSERT_TRUE(l_peer);
    l_peer->SendRaw(Int32(0xFFFFFFFF));
    ASSERT_TRUE(WaitFor([&] { return l_transfer != 0; }));
    EXPECT_EQ(l_transfer, 0xFFFFFFFF);
}

TEST_F(ConnectionsTest, TheServerHearsWhenConnectingBackFails) {
    for (const quint16 l_port : {DeafPort(), quint16{0}}) {
        AskToConnectBack("hidden" + std::to_string(l_port), "P", 9, l_port);
        to_server::CantConnectToPeer l_report;
        ASSERT_TRUE(TheServer().Take(l_report));
        EXPECT_EQ(l_report.token, 9U);
        EXPECT_EQ(l_report.user, "hidden" + std::to_string(l_port));
        EXPECT_TRUE(m_log.Has("2 Identified as peer connection request socket"));
        EXPECT_TRUE(m_log.Has("2 Request found, removing"));
    }
    EXPECT_TRUE(g("peer_connection_request").empty());
    EXPECT_TRUE(g("peer_connection_request_socket").empty());
    // A type that nobody knows is of no use to anyone.
    ScriptedListener l_listener;
    AskToConnectBack("odd", "X", 10, l_listener.Port());
    const auto l_peer = l_listener.Next();
    ASSERT_TRUE(l_peer);
    EXPECT_TRUE(WaitFor([&] { return l_peer->IsClosed(); }));
}

TEST_F(ConnectionsTest, TheServersWordIsFollowedAtAPace) {
    ScriptedListener l_listener;
    const int l_all = 3 * limits::serverOrderedConnectionsPerSecond / 2;
    for (int l_index = 0; l_index < l_all; ++l_index)
        AskToConnectBack("crowd" + std::to_string(l_index), "P", static_cast<std::uint32_t>(l_index),
                         l_listener.Port());
    const auto l_countOpened = [] { return static_cast<int>(g("peer_socket").size()); };
    ASSERT_TRUE(WaitFor([] { return !g("peer_connection_request").empty(); }));
    QElapsedTimer l_time;
    l_time.start();
    ASSERT_TRUE(WaitFor([&] { return l_countOpened() >= limits::serverOrderedConnectionsPerSecond; }));
    if (l_time.elapsed() < 500) {
        EXPECT_EQ(l_countOpened(), limits::serverOrderedConnectionsPerSecond);
    }
    ASSERT_TRUE(WaitFor([&] { return l_countOpened() == l_all; }));
    EXPECT_GE(l_time.elapsed(), 800);
}

TEST_F(ConnectionsTest, AnAddressThatTheStoreHoldsIsWhereWeConnectBack) {
    ScriptedListener l_known;
    ScriptedListener l_told;
    SetAddress("moved", l_known.Port());
    AskToConnectBack("moved", "P", 11, l_told.Port());
    const auto l_peer = l_known.Next();
    EXPECT_TRUE(l_peer);
    EXPECT_EQ(l_told.Waiting(), 0);
    EXPECT_EQ(User("moved")["user_port"].AsInt(), l_told.Port());
}

} // namespace
