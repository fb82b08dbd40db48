// One telling sample of every message of the server protocol, for tests that hold for all of them.
#pragma once

#include <string>

#include "net/server_messages.h"

inline UserStats SampleStats(int i_seed) {
    UserStats l_stats;
    l_stats.averageSpeed = 1000 + i_seed;
    l_stats.statsValue64 = 0x100000000LL + i_seed;
    l_stats.sharedFileCount = 50 + i_seed;
    l_stats.statsValue32 = 7 + i_seed;
    return l_stats;
}

inline from_server::LoginReply SampleAcceptance() {
    from_server::LoginReply l_reply;
    l_reply.accepted = true;
    l_reply.greeting = "welcome";
    l_reply.address = 0x7F000001;
    l_reply.digest = "0123456789abcdef0123456789abcdef";
    return l_reply;
}

inline from_server::LoginReply SampleRefusal(const std::string& i_reason) {
    from_server::LoginReply l_reply;
    l_reply.reason = i_reason;
    return l_reply;
}

inline from_server::AddUserReply SampleAddUserReply(int i_status) {
    return {"bob", true, i_status, SampleStats(3), i_status > 0 ? "DE" : ""};
}

inline from_server::RoomJoined SampleRoomJoined(bool i_hasOwner) {
    from_server::RoomJoined l_room;
    l_room.room = "lobby";
    l_room.users = {"alice", "bob"};
    l_room.statuses = {1, 2};
    l_room.stats = {SampleStats(1), SampleStats(2)};
    l_room.freeSlots = {0, 1};
    l_room.countries = {"FR", "DE"};
    if (i_hasOwner) {
        l_room.owner = "carol";
        l_room.operators = {"alice", "dave"};
    }
    return l_room;
}

inline from_server::RoomList SampleRoomList() {
    return {{{"lobby", "music"}, {12, 3}}, {{"mine"}, {1}}, {{"theirs"}, {-1}}, {"mine"}, {4, 5}};
}

template <class Visitor>
void VisitMessagesToServer(Visitor&& i_visit) {
    using namespace to_server;
    i_visit(Login{"alice", "secret", 157, "c4e31313222cf05fcdd1fc068af5570e", 100});
    i_visit(SetWaitPort{2235});
    i_visit(GetUserAddress{"bob"});
    i_visit(AddUser{"bob"});
    i_visit(UntrackUser{"bob"});
    i_visit(GetUserStatus{"bob"});
    i_visit(RoomChat{"lobby", "hello"});
    i_visit(EnterRoom{"lobby"});
    i_visit(LeaveRoom{"lobby"});
    i_visit(IndirectConnectionRequest{0x80000001, "bob", "P"});
    i_visit(PrivateChat{"bob", "hi"});
    i_visit(PrivateChatAcknowledgement{77});
    i_visit(FileSearch{5, "one two"});
    i_visit(FilesFolders{3, 400});
    i_visit(GetUserStats{"bob"});
    i_visit(GetRoomList{});
    i_visit(DNetNoParent{true});
    i_visit(DNetCanParent{true});
    i_visit(WishListSearch{6, "three"});
    i_visit(UploadSpeed{123456});
    i_visit(DNetLevel{-1});
    i_visit(DNetGroupLeader{"bob"});
    i_visit(ChildDepth{true});
    i_visit(CantConnectToPeer{9, "bob"});
}

// All but DNetMessage, which is the rest of its frame.
template <class Visitor>
void VisitMessagesFromServer(Visitor&& i_visit) {
    using namespace from_server;
    i_visit(SampleAcceptance());
    i_visit(SampleRefusal(LoginReply::invalidPassword));
    i_visit(UserAddress{"bob", {0x01020304, 2235}});
    i_visit(SampleAddUserReply(statusOnline));
    i_visit(SampleAddUserReply(statusOffline));
    i_visit(AddUserReply{"nobody", false, 0, {}, ""});
    i_visit(UserStatus{"bob", statusAway, true});
    i_visit(RoomChat{"lobby", "bob", "hello"});
    i_visit(SampleRoomJoined(true));
    i_visit(SampleRoomJoined(false));
    i_visit(RoomLeft{"lobby"});
    i_visit(UserJoinedRoom{"lobby", "dave", 2, SampleStats(4), 1, "US"});
    i_visit(UserLeftRoom{"lobby", "dave"});
    i_visit(PeerConnectionRequest{"bob", "F", {0x0A000001, 2236}, 0x80000001, true});
    i_visit(PrivateChat{78, 1700000000, "bob", "hi", true});
    i_visit(ReceivedUserStats{"alice", SampleStats(5)});
    i_visit(SampleRoomList());
    i_visit(PrivilegedUsers{{"bob", "dave"}});
    i_visit(DNetParentMinSpeed{10});
    i_visit(DNetParentSpeedConnectionRatio{50});
    i_visit(DNetPossibleParents{{{"bob", {1, 2}}, {"dave", {3, 4}}}});
    i_visit(WishListWait{720});
    i_visit(DNetDeliveryReport{11});
    i_visit(DNetReset{});
    i_visit(IndirectConnectionFailure{12});
}
