// What is said to the central server.
#include "net/server.h"

#include "app/log.h"
#include "app/text.h"
#include "store/data.h"

void Server::SetWaitPort(int i_port) {
    Send(to_server::SetWaitPort{i_port});
}

void Server::GetUserAddress(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    if (l_user.IsConnected("user_address_request"))
        return;
    Send(to_server::GetUserAddress{i_user});
    // Stays until the answer comes, so that the question is put again after a loss of the connection.
    l_user.Connect(d.GetType("user_address_request")->NewItem());
}

void Server::AddUser(const std::string& i_user) {
    Send(to_server::AddUser{i_user});
}

void Server::TrackUser(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    if (l_user.IsConnected("is_tracked"))
        return;
    l_user.NewItem("is_tracked");
    AddUser(i_user);
}

void Server::UntrackUser(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->HasItem(i_user);
    if (!l_user || !l_user.IsConnected("is_tracked"))
        return;
    l_user.Disconnect("is_tracked");
    Send(to_server::UntrackUser{i_user});
}

void Server::GetUserStatus(const std::string& i_user) {
    Send(to_server::GetUserStatus{i_user});
}

void Server::SendRoomChat(const std::string& i_room, const std::string& i_text) {
    Send(to_server::RoomChat{i_room, i_text});
}

void Server::EnterRoom(const std::string& i_room) {
    Send(to_server::EnterRoom{i_room});
}

void Server::LeaveRoom(const std::string& i_room) {
    const ItemPtr l_room = d.GetType("room")->HasItem(i_room);
    if (l_room && l_room.IsConnected("in_room"))
        Send(to_server::LeaveRoom{i_room});
}

unsigned int Server::SendIndirectConnectionRequest(const std::string& i_user, const std::string& i_connectionType) {
    const unsigned int l_token = m_nextIndirectToken++;
    Send(to_server::IndirectConnectionRequest{l_token, i_user, i_connectionType});
    Log(QStringLiteral("server"), 1, QStringLiteral("Sent indirect connection request to %1").arg(ToQString(i_user)),
        ItemPtr());
    return l_token;
}

void Server::SendPrivateChat(const std::string& i_user, const std::string& i_text) {
    Send(to_server::PrivateChat{i_user, i_text});
}

unsigned int Server::FileSearch(const std::string& i_text, bool i_wishList) {
    const unsigned int l_token = m_nextSearchToken++;
    if (i_wishList)
        Send(to_server::WishListSearch{l_token, i_text});
    else
        Send(to_server::FileSearch{l_token, i_text});

    const ItemPtr l_request = d.GetType("search_request")->NewItem(Value(l_token));
    l_request.Connect(d.GetType("search_request_text")->GetItem(i_text));
    if (i_wishList)
        l_request.NewItem("wishlist_search");
    Q_EMIT SearchRequested(l_token, i_text, i_wishList);
    return l_token;
}

void Server::SendFilesFolders(int i_folderCount, int i_fileCount) {
    Send(to_server::FilesFolders{i_folderCount, i_fileCount});
}

void Server::GetUserStats(const std::string& i_user) {
    Send(to_server::GetUserStats{i_user});
}

void Server::GetRoomList() {
    Send(to_server::GetRoomList{});
}

void Server::SendDNetHasParent(bool i_hasParent) {
    Send(to_server::DNetNoParent{!i_hasParent});
}

void Server::SendDNetCanParent(bool i_canParent) {
    Send(to_server::DNetCanParent{i_canParent});
}

void Server::SendUploadSpeed(int i_speed) {
    Send(to_server::UploadSpeed{i_speed});
}

void Server::SendDNetLevel(int i_level) {
    Send(to_server::DNetLevel{i_level});
}

void Server::SendDNetGroupLeader(const std::string& i_user) {
    Send(to_server::DNetGroupLeader{i_user});
}

void Server::SendChildDepth(bool i_depth) {
    Send(to_server::ChildDepth{i_depth});
}

void Server::SendCantConnectToPeer(unsigned int i_token, const std::string& i_user) {
    Send(to_server::CantConnectToPeer{i_token, i_user});
}
