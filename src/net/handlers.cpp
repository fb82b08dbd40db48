// What is heard from the central server: one line a code, one handler a message. Short messages are acted upon with
// what there is of them.
#include "net/server.h"

#include <algorithm>

#include "store/data.h"

namespace {

ItemPtr User(const std::string& i_name) {
    return d.GetType("user")->GetItem(i_name);
}

ItemPtr Room(const std::string& i_name) {
    return d.GetType("room")->GetItem(i_name);
}

// Drops the earlier value, since an item has one of each attribute.
void SetAttribute(const ItemPtr& i_item, const char* ip_type, const Value& i_value) {
    i_item.Connect(d.GetType(ip_type)->GetItem(i_value));
}

void SetAddress(const ItemPtr& i_user, const TCPAddress& i_address) {
    SetAttribute(i_user, "user_address", i_address.first);
    SetAttribute(i_user, "user_port", i_address.second);
}

void SetSharing(const ItemPtr& i_user, const UserStats& i_stats, const std::string& i_country) {
    SetAttribute(i_user, "average_download_speed", i_stats.averageSpeed);
    SetAttribute(i_user, "shared_files_count", i_stats.sharedFileCount);
    SetAttribute(i_user, "country_code", i_country);
}

void SetOwnerAndOperators(const ItemPtr& i_room, const std::string& i_owner, const std::set<std::string>& i_operators) {
    i_room.NewItem("room_owner").Connect(User(i_owner));
    i_room.Disconnect("room_operator");
    for (const std::string& l_operator : i_operators)
        i_room.NewItem("room_operator").Connect(User(l_operator));
}

void SetUserCounts(const from_server::RoomList::Group& i_group) {
    const std::size_t l_count = std::min(i_group.names.size(), i_group.userCounts.size());
    for (std::size_t l_index = 0; l_index < l_count; ++l_index)
        SetAttribute(Room(i_group.names[l_index]), "user_count", i_group.userCounts[l_index]);
}

} // namespace

void Server::HandleMessage(int i_code, MemStream& io_stream) {
    if (m_state == State::Disconnected)
        return;
    const auto l_handle = [this, &io_stream]<class Message>(void (Server::*ip_handler)(const Message&)) {
        Message l_message;
        // A short message is no fault: the fields that are missing keep their initial values.
        static_cast<void>(Decode(io_stream, l_message));
        (this->*ip_handler)(l_message);
    };
    using namespace from_server;
    switch (i_code) {
    case LoginReply::code:
        return l_handle(&Server::HandleLoginReply);
    case UserAddress::code:
        return l_handle(&Server::HandleUserAddress);
    case AddUserReply::code:
        return l_handle(&Server::HandleAddUserReply);
    case UserStatus::code:
        return l_handle(&Server::HandleUserStatus);
    case from_server::RoomChat::code:
        return l_handle(&Server::HandleRoomChat);
    case RoomJoined::code:
        return l_handle(&Server::HandleRoomJoined);
    case RoomLeft::code:
        return l_handle(&Server::HandleRoomLeft);
    case UserJoinedRoom::code:
        return l_handle(&Server::HandleUserJoinedRoom);
    case UserLeftRoom::code:
        return l_handle(&Server::HandleUserLeftRoom);
    case PeerConnectionRequest::code:
        return l_handle(&Server::HandlePeerConnectionRequest);
    case from_server::PrivateChat::code:
        return l_handle(&Server::HandlePrivateChat);
    case from_server::ReceivedUserStats::code:
        return l_handle(&Server::HandleUserStats);
    case RoomList::code:
        return l_handle(&Server::HandleRoomList);
    case PrivilegedUsers::code:
        return l_handle(&Server::HandlePrivilegedUsers);
    case from_server::DNetParentMinSpeed::code:
        return l_handle(&Server::HandleDNetParentMinSpeed);
    case from_server::DNetParentSpeedConnectionRatio::code:
        return l_handle(&Server::HandleDNetParentSpeedConnectionRatio);
    case from_server::DNetMessage::code:
        Q_EMIT DNetMessage(io_stream);
        return;
    case from_server::DNetPossibleParents::code:
        return l_handle(&Server::HandleDNetPossibleParents);
    case from_server::WishListWait::code:
        return l_handle(&Server::HandleWishListWait);
    case from_server::DNetDeliveryReport::code:
        return l_handle(&Server::HandleDNetDeliveryReport);
    case from_server::DNetReset::code:
        return l_handle(&Server::HandleDNetReset);
    case IndirectConnectionFailure::code:
        return l_handle(&Server::HandleIndirectConnectionFailure);
    default:
        return;
    }
}

void Server::HandleUserAddress(const from_server::UserAddress& i_message) {
    const ItemPtr l_user = User(i_message.user);
    SetAddress(l_user, i_message.address);
    // Only now: whoever waits for the address is told while the question still counts as open.
    l_user.Disconnect("user_address_request");
}

void Server::HandleAddUserReply(const from_server::AddUserReply& i_reply) {
    Q_EMIT AddUserResponse(i_reply.user, i_reply.exists);
    // A listener may have disconnected, and then nobody is online.
    if (!i_reply.exists || m_state == State::Disconnected)
        return;
    const ItemPtr l_user = User(i_reply.user);
    if (i_reply.status > 0) {
        l_user.NewItem("is_online");
        SetAttribute(l_user, "country_code", i_reply.country);
    } else {
        l_user.Disconnect("is_online");
    }
}

void Server::HandleUserStatus(const from_server::UserStatus& i_message) {
    const ItemPtr l_user = User(i_message.user);
    if (i_message.status > 0)
        l_user.NewItem("is_online");
    else
        l_user.Disconnect("is_online");
    if (i_message.privileged)
        l_user.NewItem("is_privileged");
}

void Server::HandleRoomChat(const from_server::RoomChat& i_message) {
    Q_EMIT RoomChat(i_message.room, i_message.user, i_message.text);
}

void Server::HandleRoomJoined(const from_server::RoomJoined& i_message) {
    const ItemPtr l_room = Room(i_message.room);
    if (i_message.owner)
        SetOwnerAndOperators(l_room, *i_message.owner, i_message.operators);
    l_room.NewItem("in_room");
    l_room.Disconnect("user");
    for (const std::string& l_user : i_message.users)
        l_room.Connect(User(l_user));

    const std::size_t l_count = std::min({i_message.users.size(), i_message.stats.size(), i_message.countries.size()});
    for (std::size_t l_index = 0; l_index < l_count; ++l_index)
        SetSharing(User(i_message.users[l_index]), i_message.stats[l_index], i_message.countries[l_index]);
}

void Server::HandleRoomLeft(const from_server::RoomLeft& i_message) {
    const ItemPtr l_room = d.GetType("room")->HasItem(i_message.room);
    if (!l_room || !l_room.IsConnected("in_room"))
        return;
    l_room.Disconnect("in_room");
    l_room.Disconnect("user");
}

void Server::HandleUserJoinedRoom(const from_server::UserJoinedRoom& i_message) {
    const ItemPtr l_user = User(i_message.user);
    Room(i_message.room).Connect(l_user);
    SetSharing(l_user, i_message.stats, i_message.country);
}

void Server::HandleUserLeftRoom(const from_server::UserLeftRoom& i_message) {
    const ItemPtr l_room = d.GetType("room")->HasItem(i_message.room);
    const ItemPtr l_user = d.GetType("user")->HasItem(i_message.user);
    if (l_room && l_user && l_room.IsConnected(l_user))
        l_room.Disconnect(l_user);
}

void Server::HandlePeerConnectionRequest(const from_server::PeerConnectionRequest& i_message) {
    const ItemPtr l_user = User(i_message.user);
    const ItemPtr l_request = d.GetType("peer_connection_request")->NewItem();
    SetAttribute(l_request, "peer_connection_request_id", i_message.token);
    SetAttribute(l_request, "peer_connection_type", i_message.connectionType);
    // For a user whose address is known the connection is made inside this call, to that address; the request may be
    // gone after it.
    l_request.Connect(l_user);
    SetAddress(l_user, i_message.address);
    if (i_message.privileged)
        l_user.NewItem("is_privileged");
}

void Server::HandlePrivateChat(const from_server::PrivateChat& i_message) {
    Q_EMIT PrivateChat(i_message.user, i_message.text, i_message.time, i_message.spontaneous);
    Send(to_server::PrivateChatAcknowledgement{i_message.messageId});
}

void Server::HandleUserStats(const from_server::ReceivedUserStats& i_message) {
    Q_EMIT ReceivedUserStats(i_message.user, i_message.stats);
}

void Server::HandleRoomList(const from_server::RoomList& i_message) {
    SetUserCounts(i_message.open);
    SetUserCounts(i_message.owned);
    SetUserCounts(i_message.others);
}

void Server::HandlePrivilegedUsers(const from_server::PrivilegedUsers& i_message) {
    for (const std::string& l_user : i_message.users)
        User(l_user).NewItem("is_privileged");
}

void Server::HandleDNetParentMinSpeed(const from_server::DNetParentMinSpeed& i_message) {
    Q_EMIT DNetParentMinSpeed(i_message.speed);
}

void Server::HandleDNetParentSpeedConnectionRatio(const from_server::DNetParentSpeedConnectionRatio& i_message) {
    Q_EMIT DNetParentSpeedConnectionRatio(i_message.ratio);
}

void Server::HandleDNetPossibleParents(const from_server::DNetPossibleParents& i_message) {
    Q_EMIT DNetPossibleParents(i_message.parents);
}

void Server::HandleWishListWait(const from_server::WishListWait& i_message) {
    Q_EMIT WishListWait(i_message.period);
}

void Server::HandleDNetDeliveryReport(const from_server::DNetDeliveryReport& i_message) {
    Q_EMIT DNetDeliveryReport(i_message.request);
}

void Server::HandleDNetReset(const from_server::DNetReset&) {
    Q_EMIT DNetReset();
}

void Server::HandleIndirectConnectionFailure(const from_server::IndirectConnectionFailure& i_message) {
    Q_EMIT IndirectPeerConnectionFailure(i_message.token);
}
