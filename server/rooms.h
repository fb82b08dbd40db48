// The chat rooms: a room begins with its first member and ends with its last.
#pragma once

#include "server/limits.h"

#include "net/server_messages.h"

#include <functional>
#include <map>
#include <set>
#include <string>

class Directory;
class Session;

class Rooms {
public:
    Rooms(const Directory& i_directory, const Limits& i_limits);

    void LeaveAll(Session& i_session); // its user is going; tells only those who stay

    void OnEnterRoom(Session& io_session, const to_server::EnterRoom& i_message);
    void OnLeaveRoom(Session& io_session, const to_server::LeaveRoom& i_message);
    void OnRoomChat(Session& io_session, const to_server::RoomChat& i_message);
    void OnGetRoomList(Session& io_session, const to_server::GetRoomList& i_message);

private:
    using Members = std::map<std::string, Session*>; // by user name

    bool MayEnter(const Session& i_session, const std::string& i_room) const;
    from_server::RoomJoined Describe(const std::string& i_room) const;
    bool Leave(Session& i_session, const std::string& i_room); // false when it was not in

    const Directory& m_directory;
    const Limits& m_limits;
    std::map<std::string, Members> m_rooms;
    std::map<const Session*, std::set<std::string>> m_roomsOf;
};
