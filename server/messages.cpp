// From a code to the function that acts on it. A new message needs its line here and its handler in the room that it
// concerns.
#include "server/central_server.h"
#include "server/session.h"

namespace {

template <class Room, class Message>
bool Act(Room& io_room, void (Room::*i_handler)(Session&, const Message&), Session& io_session, MemStream& io_body) {
    Message l_message;
    if (!Decode(io_body, l_message)) {
        return false;
    }
    (io_room.*i_handler)(io_session, l_message);
    return true;
}

} // namespace

bool CentralServer::OnFrame(Session& io_session, MemStream& io_body) {
    std::int32_t l_code = 0;
    if (!io_body.Read(l_code)) {
        return false;
    }
    if (io_session.GetState() == Session::State::Online) {
        return OnMessage(io_session, l_code, io_body);
    }
    // Before the login nothing else is heard.
    return l_code != to_server::Login::code || Act(m_login, &Login::OnLogin, io_session, io_body);
}

bool CentralServer::OnMessage(Session& io_session, std::int32_t i_code, MemStream& io_body) {
    switch (i_code) {
    case to_server::SetWaitPort::code:
        return Act(m_directory, &Directory::OnSetWaitPort, io_session, io_body);
    case to_server::GetUserAddress::code:
        return Act(m_directory, &Directory::OnGetUserAddress, io_session, io_body);
    case to_server::AddUser::code:
        return Act(m_directory, &Directory::OnAddUser, io_session, io_body);
    case to_server::UntrackUser::code:
        return Act(m_directory, &Directory::OnUntrackUser, io_session, io_body);
    case to_server::GetUserStatus::code:
        return Act(m_directory, &Directory::OnGetUserStatus, io_session, io_body);
    case to_server::RoomChat::code:
        return Act(m_rooms, &Rooms::OnRoomChat, io_session, io_body);
    case to_server::EnterRoom::code:
        return Act(m_rooms, &Rooms::OnEnterRoom, io_session, io_body);
    case to_server::LeaveRoom::code:
        return Act(m_rooms, &Rooms::OnLeaveRoom, io_session, io_body);
    case to_server::IndirectConnectionRequest::code:
        return Act(m_relay, &Relay::OnIndirectConnectionRequest, io_session, io_body);
    case to_server::PrivateChat::code:
        return Act(m_relay, &Relay::OnPrivateChat, io_session, io_body);
    case to_server::PrivateChatAcknowledgement::code:
        return Act(m_relay, &Relay::OnAcknowledgement, io_session, io_body);
    case to_server::FileSearch::code:
        return Act(m_searchTree, &SearchTree::OnFileSearch, io_session, io_body);
    case to_server::FilesFolders::code:
        return Act(m_directory, &Directory::OnFilesFolders, io_session, io_body);
    case to_server::GetUserStats::code:
        return Act(m_directory, &Directory::OnGetUserStats, io_session, io_body);
    case to_server::GetRoomList::code:
        return Act(m_rooms, &Rooms::OnGetRoomList, io_session, io_body);
    case to_server::DNetNoParent::code:
        return Act(m_searchTree, &SearchTree::OnNoParent, io_session, io_body);
    case to_server::DNetCanParent::code:
        return Act(m_searchTree, &SearchTree::OnCanParent, io_session, io_body);
    case to_server::WishListSearch::code:
        return Act(m_searchTree, &SearchTree::OnWishListSearch, io_session, io_body);
    case to_server::UploadSpeed::code:
        return Act(m_directory, &Directory::OnUploadSpeed, io_session, io_body);
    case to_server::DNetLevel::code:
        return Act(m_searchTree, &SearchTree::OnLevel, io_session, io_body);
    case to_server::DNetGroupLeader::code:
        return Act(m_searchTree, &SearchTree::OnGroupLeader, io_session, io_body);
    case to_server::ChildDepth::code:
        return Act(m_searchTree, &SearchTree::OnChildDepth, io_session, io_body);
    case to_server::CantConnectToPeer::code:
        return Act(m_relay, &Relay::OnCantConnectToPeer, io_session, io_body);
    default:
        return true; // a code of another version is skipped whole
    }
}
