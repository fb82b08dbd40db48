// What each message does to the store and to the listeners, and what each operation puts on the wire.
#include "net/session_fixture.h"

namespace {

using namespace from_server;

class ServerMessagesTest : public SessionTest {
protected:
    void SetUp() override { ASSERT_NO_FATAL_FAILURE(LogIn()); }

    template <class Message>
    Message Heard() {
        const auto l_message = m_server.Next<Message>();
        EXPECT_TRUE(l_message) << Message::code;
        return l_message.value_or(Message{});
    }
};

TEST_F(ServerMessagesTest, EveryOperationSendsItsMessage) {
    Session().SetWaitPort(2235);
    Session().AddUser("bob");
    Session().GetUserStatus("bob");
    Session().SendRoomChat("lobby", "hello");
    Session().EnterRoom("lobby");
    EXPECT_EQ(Session().SendIndirectConnectionRequest("bob", "P"), 1U);
    EXPECT_EQ(Session().SendIndirectConnectionRequest("bob", "F"), 2U);
    Session().SendPrivateChat("bob", "hi");
    EXPECT_EQ(Session().FileSearch("one", false), 1U);
    EXPECT_EQ(Session().FileSearch("two", true), 2U);
    Session().SendFilesFolders(3, 400);
    Session().GetUserStats("bob");
    Session().GetRoomList();
    Session().SendDNetHasParent(true);
    Session().SendDNetCanParent(true);
    Session().SendUploadSpeed(1000);
    Session().SendDNetLevel(-1);
    Session().SendDNetGroupLeader("bob");
    Session().SendChildDepth(true);
    Session().SendCantConnectToPeer(9, "bob");

    EXPECT_EQ(Heard<to_server::SetWaitPort>().port, 2235);
    EXPECT_EQ(Heard<to_server::AddUser>().user, "bob");
    EXPECT_EQ(Heard<to_server::GetUserStatus>().user, "bob");
    EXPECT_EQ(Heard<to_server::RoomChat>().text, "hello");
    EXPECT_EQ(Heard<to_server::EnterRoom>().room, "lobby");
    EXPECT_EQ(Heard<to_server::IndirectConnectionRequest>().connectionType, "P");
    EXPECT_EQ(Heard<to_server::IndirectConnectionRequest>().token, 2U);
    EXPECT_EQ(Heard<to_server::PrivateChat>().text, "hi");
    EXPECT_EQ(Heard<to_server::FileSearch>().text, "one");
    EXPECT_EQ(Heard<to_server::WishListSearch>().token, 2U);
    EXPECT_EQ(Heard<to_server::FilesFolders>().fileCount, 400);
    EXPECT_EQ(Heard<to_server::GetUserStats>().user, "bob");
    Heard<to_server::GetRoomList>();
    EXPECT_FALSE(Heard<to_server::DNetNoParent>().hasNoParent) << "the wire has the negation";
    EXPECT_TRUE(Heard<to_server::DNetCanParent>().canParent);
    EXPECT_EQ(Heard<to_server::UploadSpeed>().speed, 1000);
    EXPECT_EQ(Heard<to_server::DNetLevel>().level, -1);
    EXPECT_EQ(Heard<to_server::DNetGroupLeader>().user, "bob");
    EXPECT_TRUE(Heard<to_server::ChildDepth>().depth);
    EXPECT_EQ(Heard<to_server::CantConnectToPeer>().token, 9U);
}

TEST_F(ServerMessagesTest, AnAddressIsAskedForOnceUntilItComes) {
    Session().GetUserAddress("bob");
    Session().GetUserAddress("bob");
    Session().GetRoomList();
    EXPECT_EQ(Heard<to_server::GetUserAddress>().user, "bob");
    Heard<to_server::GetRoomList>();

    SayAndSettle(UserAddress{"bob", {0xFFFFFFFE, -1}});
    EXPECT_EQ(Attribute(User("bob"), "user_address"), "4294967294");
    EXPECT_EQ(Attribute(User("bob"), "user_port"), "-1");
    EXPECT_FALSE(User("bob").IsConnected("user_address_request"));
    Session().GetUserAddress("bob");
    Heard<to_server::GetUserAddress>();
}

TEST_F(ServerMessagesTest, TrackingIsToldOnceEachWay) {
    Session().UntrackUser("bob");
    Session().TrackUser("bob");
    Session().TrackUser("bob");
    EXPECT_TRUE(User("bob").IsConnected("is_tracked"));
    Session().UntrackUser("bob");
    Session().UntrackUser("bob");
    Session().GetRoomList();
    EXPECT_EQ(Heard<to_server::AddUser>().user, "bob");
    EXPECT_EQ(Heard<to_server::UntrackUser>().user, "bob");
    Heard<to_server::GetRoomList>();
    EXPECT_FALSE(User("bob").IsConnected("is_tracked"));
}

TEST_F(ServerMessagesTest, StatusMakesUsersOnlineOfflineAndPrivileged) {
    SayAndSettle(UserStatus{"bob", statusAway, true});
    EXPECT_TRUE(User("bob").IsConnected("is_online"));
    EXPECT_TRUE(User("bob").IsConnected("is_privileged"));
    SayAndSettle(UserStatus{"bob", -1, false});
    EXPECT_FALSE(User("bob").IsConnected("is_online"));
    EXPECT_TRUE(User("bob").IsConnected("is_privileged"));
    SayAndSettle(PrivilegedUsers{{"carol", "dave"}});
    EXPECT_TRUE(User("carol").IsConnected("is_privileged") && User("dave").IsConnected("is_privileged"));
}

TEST_F(ServerMessagesTest, AnAddedUsersStatusAndCountryAreTaken) {
    QSignalSpy l_answers(&Session(), &Server::AddUserResponse);
    SayAndSettle(AddUserReply{"nobody", false, 0, {}, ""});
    EXPECT_FALSE(User("nobody"));
    SayAndSettle(SampleAddUserReply(statusOnline));
    EXPECT_TRUE(User("bob").IsConnected("is_online"));
    EXPECT_EQ(Attribute(User("bob"), "country_code"), "DE");
    EXPECT_FALSE(User("bob").IsConnected("average_download_speed"));
    SayAndSettle(SampleAddUserReply(statusOffline));
    EXPECT_FALSE(User("bob").IsConnected("is_online"));
    EXPECT_EQ(Attribute(User("bob"), "country_code"), "DE");
    ASSERT_EQ(l_answers.count(), 3);
    EXPECT_FALSE(l_answers.at(0).at(1).toBool());
    EXPECT_TRUE(l_answers.at(1).at(1).toBool());
}

TEST_F(ServerMessagesTest, AJoinedRoomHasItsUsersOwnerAndOperators) {
    SayAndSettle(SampleRoomJoined(true));
    EXPECT_TRUE(Room("lobby").IsConnected("in_room"));
    EXPECT_EQ(Names(Room("lobby").GetItems("user")), (std::set<std::string>{"alice", "bob"}));
    EXPECT_EQ(Attribute(User("bob"), "average_download_speed"), "1002");
    EXPECT_EQ(Attribute(User("bob"), "shared_files_count"), "52");
    EXPECT_EQ(Attribute(User("alice"), "country_code"), "FR");
    EXPECT_EQ(Room("lobby")["room_owner"]["user"].AsString(), "carol");
    const auto l_operators = [] { return Names(Room("lobby").GetItems("room_operator").GetItems("user")); };
    EXPECT_EQ(l_operators(), (std::set<std::string>{"alice", "dave"}));

    // Again, without an owner: the users are replaced, the owner and the operators stand.
    RoomJoined l_again = SampleRoomJoined(false);
    l_again.users = {"erin"};
    SayAndSettle(l_again);
    EXPECT_EQ(Names(Room("lobby").GetItems("user")), std::set<std::string>{"erin"});
    EXPECT_TRUE(User("bob"));
    EXPECT_EQ(Room("lobby")["room_owner"]["user"].AsString(), "carol");
    EXPECT_EQ(l_operators().size(), 2U);

    l_again.owner = "bob";
    SayAndSettle(l_again);
    EXPECT_EQ(Room("lobby")["room_owner"]["user"].AsString(), "bob");
    EXPECT_TRUE(l_operators().empty());
}

TEST_F(ServerMessagesTest, ListsOfUnequalLengthEndAtTheShortest) {
    RoomJoined l_room = SampleRoomJoined(false);
    l_room.stats.resize(1);
    l_room.countries = {"FR", "DE", "US"};
    SayAndSettle(l_room);
    EXPECT_EQ(Room("lobby").GetItems("user").size(), 2U);
    EXPECT_EQ(Attribute(User("alice"), "country_code"), "FR");
    EXPECT_FALSE(User("bob").IsConnected("country_code"));

    RoomList l_list;
    l_list.open = {{"one", "two"}, {7}};
    SayAndSettle(l_list);
    EXPECT_EQ(Attribute(Room("one"), "user_count"), "7");
    EXPECT_FALSE(Room("two"));
}

TEST_F(ServerMessagesTest, UsersComeToAndLeaveRooms) {
    SayAndSettle(UserLeftRoom{"lobby", "stranger"});
    EXPECT_FALSE(Room("lobby") || User("stranger"));
    SayAndSettle(SampleRoomJoined(false));
    SayAndSettle(UserJoinedRoom{"lobby", "dave", 2, SampleStats(4), 1, "US"});
    EXPECT_TRUE(Room("lobby").IsConnected(User("dave")));
    EXPECT_EQ(Attribute(User("dave"), "shared_files_count"), "54");
    EXPECT_EQ(Attribute(User("dave"), "country_code"), "US");
    SayAndSettle(UserLeftRoom{"lobby", "dave"});
    EXPECT_FALSE(Room("lobby").IsConnected(User("dave")));

    Session().LeaveRoom("elsewhere");
    Session().LeaveRoom("lobby");
    EXPECT_EQ(Heard<to_server::LeaveRoom>().room, "lobby");
    SayAndSettle(RoomLeft{"lobby"});
    EXPECT_FALSE(Room("lobby").IsConnected("in_room") || Room("lobby").IsConnected("user"));
    // Not ours any more: the users of a room that another message fills stay.
    SayAndSettle(UserJoinedRoom{"lobby", "dave", 2, SampleStats(4), 1, "US"});
    SayAndSettle(RoomLeft{"lobby"});
    EXPECT_TRUE(Room("lobby").IsConnected("user"));
}

TEST_F(ServerMessagesTest, TheRoomListGivesAllThreeGroupsTheirCounts) {
    SayAndSettle(SampleRoomList());
    EXPECT_EQ(Attribute(Room("lobby"), "user_count"), "12");
    EXPECT_EQ(Attribute(Room("mine"), "user_count"), "1");
    EXPECT_EQ(Attribute(Room("theirs"), "user_count"), "-1");
    RoomList l_next;
    l_next.open = {{"music"}, {4}};
    SayAndSettle(l_next);
    EXPECT_EQ(Attribute(Room("music"), "user_count"), "4");
    EXPECT_EQ(Attribute(Room("lobby"), "user_count"), "12") << "rooms not in the list stay as they are";
}

class RequestWatcher : public DataHandler {
public:
    // Notes the address that stands when a request is complete, as whoever connects back would.
    RequestWatcher() {
        auto* lp_request = new PathNode(&d, "peer_connection_request");
        new PathNode(lp_request, "peer_connection_request_id", Connected);
        new PathNode(lp_request, "peer_connection_type", Connected);
        auto* lp_user = new PathNode(lp_request, "user", Connected);
        new PathNode(lp_user, "user_address", Connected);
        new PathNode(lp_user, "user_port", Connected);
        d.AddPathEventHandler(lp_request, MakeHandler(this, &RequestWatcher::OnRequest));
    }
    void OnRequest(Item* ip_request) { m_addresses.push_back((*ip_request)["user"]["user_address"].AsString()); }
    std::vector<std::string> m_addresses;
};

TEST_F(ServerMessagesTest, ARequestToConnectIsCompleteOnceTheAddressIsKnown) {
    RequestWatcher l_watcher;
    SayAndSettle(PeerConnectionRequest{"bob", "F", {0x0A000001, 2236}, 0x80000001, true});
    EXPECT_EQ(l_watcher.m_addresses, std::vector<std::string>{"167772161"});
    const ItemPtr l_request = g("peer_connection_request");
    EXPECT_EQ(Attribute(l_request, "peer_connection_request_id"), "2147483649");
    EXPECT_EQ(Attribute(l_request, "peer_connection_type"), "F");
    EXPECT_EQ(Attribute(User("bob"), "user_port"), "2236");
    EXPECT_TRUE(User("bob").IsConnected("is_privileged"));
    l_request.Remove();

    // For a user whose address is known, with the address as it stood before.
    l_watcher.m_addresses.clear();
    SayAndSettle(PeerConnectionRequest{"bob", "P", {0x0A000002, 2237}, 5, false});
    ASSERT_FALSE(l_watcher.m_addresses.empty());
    EXPECT_EQ(l_watcher.m_addresses.front(), "167772161");
    EXPECT_EQ(Attribute(User("bob"), "user_address"), "167772162");
}

TEST_F(ServerMessagesTest, PrivateChatIsHeardAndAcknowledged) {
    QSignalSpy l_heard(&Session(), &Server::PrivateChat);
    SayAndSettle(PrivateChat{78, 1700000000, "bob", "hi", true});
    ASSERT_EQ(l_heard.count(), 1);
    EXPECT_EQ(l_heard.at(0).at(0).value<std::string>(), "bob");
    EXPECT_EQ(l_heard.at(0).at(1).value<std::string>(), "hi");
    EXPECT_EQ(l_heard.at(0).at(2).toInt(), 1700000000);
    EXPECT_TRUE(l_heard.at(0).at(3).toBool());
    EXPECT_EQ(Heard<to_server::PrivateChatAcknowledgement>().messageId, 78);
}

TEST_F(ServerMessagesTest, WhatIsNotOfTheStoreLeavesAsSignals) {
    std::vector<std::string> l_told;
    const auto l_note = [&l_told](const char* ip_name, auto i_value) {
        l_told.push_back(std::string(ip_name) + " " + std::to_string(i_value));
    };
    QObject* const lp_context = &Session();
    Server* const lp_session = &Session();
    QObject::connect(lp_session, &Server::ReceivedUserStats, lp_context,
                     [&](const std::string&, const UserStats& i_stats) { l_note("stats", i_stats.averageSpeed); });
    QObject::connect(lp_session, &Server::DNetParentMinSpeed, lp_context, [&](int i_speed) { l_note("min", i_speed); });
    QObject::connect(lp_session, &Server::DNetParentSpeedConnectionRatio, lp_context,
                     [&](int i_ratio) { l_note("ratio", i_ratio); });
    QObject::connect(lp_session, &Server::DNetPossibleParents, lp_context,
                     [&](const Server::PossibleParents& i_parents) { l_note("parents", i_parents.size()); });
    QObject::connect(lp_session, &Server::DNetMessage, lp_context,
                     [&](MemStream& i_message) { l_note("dnet", i_message.GetPendingReadLength()); });
    QObject::connect(lp_session, &Server::WishListWait, lp_context,
                     [&](unsigned i_period) { l_note("wait", i_period); });
    QObject::connect(lp_session, &Server::DNetDeliveryReport, lp_context, [&](int i_req) { l_note("report", i_req); });
    QObject::connect(lp_session, &Server::IndirectPeerConnectionFailure, lp_context,
                     [&](unsigned i_req) { l_note("failure", i_req); });

    m_server.Say(ReceivedUserStats{"alice", SampleStats(5)});
    m_server.Say(DNetParentMinSpeed{10});
    m_server.Say(DNetParentSpeedConnectionRatio{0});
    m_server.Say(DNetPossibleParents{{{"bob", {1, 2}}, {"dave", {3, 4}}}});
    m_server.SayBytes(ScriptedServer::FrameOfBody(std::string("\x5d\0\0\0embedded", 12)));
    m_server.Say(WishListWait{0xFFFFFFFF});
    m_server.Say(DNetDeliveryReport{11});
    m_server.Say(IndirectConnectionFailure{0x80000000});
    Settle();
    EXPECT_EQ(l_told, (std::vector<std::string>{"stats 1005", "min 10", "ratio 0", "parents 2", "dnet 8",
                                                "wait 4294967295", "report 11", "failure 2147483648"}));
}

TEST_F(SessionTest, ASearchOfflineStillHasItsRequest) {
    QSignalSpy l_requested(&Session(), &Server::SearchRequested);
    EXPECT_EQ(Session().FileSearch("one two", false), 1U);
    EXPECT_EQ(Session().FileSearch("three", true), 2U);
    ASSERT_EQ(l_requested.count(), 2);
    EXPECT_EQ(l_requested.at(1).at(0).toUInt(), 2U);
    EXPECT_EQ(l_requested.at(1).at(1).value<std::string>(), "three");
    EXPECT_TRUE(l_requested.at(1).at(2).toBool());
    const ItemPtr l_plain = d.GetType("search_request")->HasItem("1");
    const ItemPtr l_wish = d.GetType("search_request")->HasItem("2");
    EXPECT_EQ(Attribute(l_plain, "search_request_text"), "one two");
    EXPECT_FALSE(l_plain.IsConnected("wishlist_search"));
    EXPECT_TRUE(l_wish.IsConnected("wishlist_search"));

    ASSERT_NO_FATAL_FAILURE(LogIn());
    Session().GetRoomList();
    EXPECT_TRUE(m_server.Next<to_server::GetRoomList>()) << "nothing said offline is sent later";
}

} // namespace
