// What the half-minute tick ends, at its age and not before.
#include "peer_network.h"

#include <QDateTime>

#include "app/settings.h"

namespace {

using ExpiryTest = PeerNetworkTest;

// The age is reached; a little less is not.
constexpr int attempt = 60;
constexpr int message = 300;
constexpr int idle = 120;
constexpr int shorter = 3; // seconds, for slow machines

TEST_F(ExpiryTest, MessagesWaitFiveMinutes) {
    peerMessenger->QueueDownload("absent", "f");
    const ItemPtr l_message = *g("unsent_message").begin();
    SetBack(l_message, "send_time", message - shorter);
    FireHalfMinute();
    EXPECT_EQ(g("unsent_message").size(), 1U);
    SetBack(l_message, "send_time", message);
    FireHalfMinute();
    EXPECT_TRUE(g("unsent_message").empty());
    const auto l_peer = ScriptedPeer::Introduced("absent");
    LetThingsSettle();
    EXPECT_TRUE(l_peer->Frames().empty());
}

TEST_F(ExpiryTest, AnAttemptWithoutAnAddressEndsWithItsIndirectLeg) {
    peerMessenger->QueueDownload("silent", "f");
    const ItemPtr l_indirect = *g("indirect_connect_to_peer_request").begin();
    SetBack(l_indirect, "send_time", attempt - shorter);
    FireHalfMinute();
    EXPECT_EQ(Attempts("silent").size(), 1U);
    SetBack(l_indirect, "send_time", attempt);
    FireHalfMinute();
    EXPECT_TRUE(Attempts("silent").empty());
    EXPECT_TRUE(g("indirect_connect_to_peer_request").empty());
    EXPECT_TRUE(m_log.Has("1 Indirect connection request of type P to silent expired, removing."));
    EXPECT_TRUE(m_log.Has("1 Inspecting peer connection request of type P to user silent for possible removal."));
    EXPECT_EQ(g("unsent_message").size(), 1U);
}

TEST_F(ExpiryTest, DirectAttemptsAndConnectingBackTimeOut) {
    // Nothing answers there: connecting neither succeeds nor fails while the test runs, if it is tried at all.
    SetAddress("stuck", 1);
    User("stuck").Connect(d.GetType("user_address")->GetItem(0xC0000201U)); // 192.0.2.1
    peerMessenger->RequestFileConnectionToUser("stuck");
    from_server::PeerConnectionRequest l_request;
    l_request.user = "stuck";
    l_request.connectionType = "P";
    l_request.address = {0xC0000201U, 1};
    l_request.token = 12;
    TheServer().Send(l_request);
    ASSERT_TRUE(WaitFor([] { return !g("peer_connection_request_socket").empty(); }));
    ASSERT_EQ(g("connect_to_peer_request_socket").size(), 1U);
    SetBack(*g("connect_to_peer_request_socket").begin(), "socket_creation_time", attempt);
    SetBack(*g("peer_connection_request_socket").begin(), "socket_creation_time", attempt);
    FireHalfMinute();
    EXPECT_TRUE(m_log.Has("1 Direct connection attempt of type F to stuck timed out, closing."));
    EXPECT_TRUE(m_log.Has("1 Indirect connection attempt of type P to stuck timed out, closing."));
    EXPECT_TRUE(g("connect_to_peer_request_socket").empty());
    EXPECT_TRUE(g("peer_connection_request_socket").empty());
    EXPECT_EQ(Attempts("stuck").size(), 1U); // the indirect leg is still out
    to_server::CantConnectToPeer l_report;
    ASSERT_TRUE(TheServer().Take(l_report));
    EXPECT_EQ(l_report.token, 12U);
}

TEST_F(ExpiryTest, OnlyReceivingKeepsAConnection) {
    const auto l_peer = ScriptedPeer::Introduced("quiet");
    const ItemPtr l_item = *PeerSockets("quiet").begin();
    const auto SetIdle = [&](int i_seconds) {
        *l_item["last_activity_time"].AsPointer<QDateTime>() = QDateTime::currentDateTime().addSecs(-i_seconds);
    };
    SetIdle(idle - shorter);
    FireHalfMinute();
    EXPECT_EQ(PeerSockets("quiet").size(), 1U);
    SetIdle(idle);
    int l_received = 0;
    QObject::connect(peerMessenger, &PeerMessenger::UploadFailed, &m_context, [&] { ++l_received; });
    l_peer->Send(UploadFailure{"f"});
    ASSERT_TRUE(WaitFor([&] { return l_received == 1; }));
    FireHalfMinute();
    EXPECT_EQ(PeerSockets("quiet").size(), 1U);

    SetIdle(idle);
    peerMessenger->QueueDownload("quiet", "f");
    FireHalfMinute();
    EXPECT_TRUE(PeerSockets("quiet").empty());
    EXPECT_TRUE(m_log.Has("1 Peer connection to user quiet expired, closing."));
    EXPECT_TRUE(g("last_activity_time").empty());
    EXPECT_TRUE(WaitFor([&] { return l_peer->IsClosed(); }));
}

TEST_F(ExpiryTest, StrangersHaveAMinute) {
    using namespace std::chrono_literals;
    ScriptedPeer l_silent;
    ScriptedPeer l_tokenless;
    l_tokenless.SendFrame(BytesOf(EncodeInitFrame(DirectInit{"tokenless", "F"})));
    ASSERT_TRUE(WaitFor([&] { return m_log.Has("1 Accepted file connection to user tokenless"); }));
    ASSERT_TRUE(WaitFor([] { return !g("uninitialized_socket").empty(); }));
    peerMessenger->CloseOverdueStrangers(std::chrono::steady_clock::now() + 50s);
    LetThingsSettle();
    EXPECT_FALSE(l_silent.IsClosed());
    EXPECT_FALSE(l_tokenless.IsClosed());
    peerMessenger->CloseOverdueStrangers(std::chrono::steady_clock::now() + 60s);
    EXPECT_TRUE(WaitFor([&] { return l_silent.IsClosed() && l_tokenless.IsClosed(); }));
    EXPECT_TRUE(g("uninitialized_socket").empty());
}

TEST_F(ExpiryTest, PortSettingsAreSettledAndAFailureIsTold) {
    const quint16 l_taken = TheServer().Port();
    int l_finished = 0;
    QObject::connect(peerMessenger, &PeerMessenger::ListenFinished, &m_context, [&] { ++l_finished; });
    EXPECT_EQ(peerMessenger->ListenError(), "");
    SetSetting("listening_port", "not a number");
    SetSetting("new_listening_port", int{l_taken});
    peerMessenger->DataLoaded(); // this one listens already: that too is a failure
    EXPECT_EQ(SettingText("listening_port"), std::to_string(l_taken));
    EXPECT_FALSE(d.GetType("global")->HasItem("new_listening_port"));
    EXPECT_EQ(l_finished, 1);
    EXPECT_THAT(peerMessenger->ListenError(), testing::HasSubstr(std::to_string(l_taken)));
    EXPECT_TRUE(m_log.Has("1 " + peerMessenger->ListenError()));

    SetSetting("listening_port", "");
    peerMessenger->DataLoaded();
    EXPECT_EQ(SettingText("listening_port"), "2235");
}

} // namespace
