#include "server/rooms.h"

#include "server/directory.h"
#include "server/names.h"
#include "server/session.h"

namespace {

template <class Members, class Message>
void TellAll(const Members& i_members, const Message& i_message) {
    const MemStream l_frame = MakeFrame(Encode(i_message));
    for (const auto& [l_user, lp_session] : i_members) {
        lp_session->SendFrame(l_frame.GetWritten());
    }
}

} // namespace

Rooms::Rooms(const Directory& i_directory, const Limits& i_limits) : m_directory(i_directory), m_limits(i_limits) {}

bool Rooms::MayEnter(const Session& i_session, const std::string& i_room) const {
    const auto l_rooms = m_roomsOf.find(&i_session);
    return IsPlainName(i_room, m_limits.roomName) && (m_rooms.contains(i_room) || m_rooms.size() < m_limits.rooms) &&
           (l_rooms == m_roomsOf.end() || l_rooms->second.size() < m_limits.roomsOfUser);
}

from_server::RoomJoined Rooms::Describe(const std::string& i_room) const {
    from_server::RoomJoined l_joined;
    l_joined.room = i_room;
    for (const auto& [l_user, lp_session] : m_rooms.at(i_room)) {
        l_joined.users.push_back(l_user);
        l_joined.statuses.push_back(from_server::statusOnline);
        l_joined.stats.push_back(m_directory.StatsOf(l_user));
        l_joined.freeSlots.push_back(0);
        l_joined.countries.emplace_back();
    }
    return l_joined;
}

// The protocol has no word for a refusal: a client that may not enter hears nothing. One that is in already gets the
// room described again.
void Rooms::OnEnterRoom(Session& io_session, const to_server::EnterRoom& i_message) {
    const std::string& l_room = i_message.room;
    if (const auto l_rooms = m_roomsOf.find(&io_session);
        l_rooms == m_roomsOf.end() || !l_rooms->second.contains(l_room)) {
        if (!MayEnter(io_session, l_room)) {
            return;
        }
        Members& l_members = m_rooms[l_room];
        from_server::UserJoinedRoom l_news;
        l_news.room = l_room;
        l_news.user = io_session.Name();
        l_news.status = from_server::statusOnline;
        l_news.stats = m_directory.StatsOf(io_session.Name());
        TellAll(l_members, l_news);
        l_members.emplace(io_session.Name(), &io_session);
        m_roomsOf[&io_session].insert(l_room);
    }
    io_session.Send(Encode(Describe(l_room)));
}

bool Rooms::Leave(Session& i_session, const std::string& i_room) {
    const auto l_room = m_rooms.find(i_room);
    if (l_room == m_rooms.end() || l_room->second.erase(i_session.Name()) == 0) {
        return false;
    }
    TellAll(l_room->second, from_server::UserLeftRoom{i_room, i_session.Name()});
    if (l_room->second.empty()) {
        m_rooms.erase(l_room);
    }
    return true;
}

void Rooms::OnLeaveRoom(Session& io_session, const to_server::LeaveRoom& i_message) {
    if (Leave(io_session, i_message.room)) {
        m_roomsOf[&io_session].erase(i_message.room);
        io_session.Send(Encode(from_server::RoomLeft{i_message.room}));
    }
}

void Rooms::LeaveAll(Session& i_session) {
    const auto l_rooms = m_roomsOf.extract(&i_session);
    if (l_rooms.empty()) {
        return;
    }
    for (const std::string& l_room : l_rooms.mapped()) {
        (void)Leave(i_session, l_room);
    }
}

void Rooms::OnRoomChat(Session& io_session, const to_server::RoomChat& i_message) {
    const auto l_room = m_rooms.find(i_message.room);
    if (l_room != m_rooms.end() && l_room->second.contains(io_session.Name())) {
        TellAll(l_room->second, from_server::RoomChat{i_message.room, io_session.Name(), i_message.text});
    }
}

void Rooms::OnGetRoomList(Session& io_session, const to_server::GetRoomList&) {
    from_server::RoomList l_list;
    for (const auto& [l_room, l_members] : m_rooms) {
        l_list.open.names.push_back(l_room);
        l_list.open.userCounts.push_back(static_cast<std::int32_t>(l_members.size()));
    }
    io_session.Send(Encode(l_list));
}
