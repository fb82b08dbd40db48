#include "net/messages_from_server.h"

namespace from_server {

bool LoginReply::Read(InputStream& io_body) {
    if (!io_body.Read(accepted))
        return false;
    if (!accepted)
        return io_body.Read(reason);
    return io_body.Read(greeting) && io_body.Read(address) && io_body.Read(digest);
}

bool LoginReply::Write(OutputStream& o_body) const {
    if (!accepted)
        return o_body.Write(accepted) && o_body.Write(reason);
    return o_body.Write(accepted) && o_body.Write(greeting) && o_body.Write(address) && o_body.Write(digest);
}

bool AddUserReply::Read(InputStream& io_body) {
    if (!io_body.Read(user) || !io_body.Read(exists))
        return false;
    if (!exists)
        return true;
    return io_body.Read(status) && io_body.Read(stats) && (status <= 0 || io_body.Read(country));
}

bool AddUserReply::Write(OutputStream& o_body) const {
    if (!o_body.Write(user) || !o_body.Write(exists))
        return false;
    if (!exists)
        return true;
    return o_body.Write(status) && o_body.Write(stats) && (status <= 0 || o_body.Write(country));
}

bool RoomJoined::Read(InputStream& io_body) {
    if (!io_body.Read(room) || !io_body.Read(users) || !io_body.Read(statuses))
        return false;
    const bool l_statsWhole = io_body.Read(stats);
    if (!io_body.Read(freeSlots) || !io_body.Read(countries))
        return false;
    std::string l_owner;
    if (!io_body.Read(l_owner))
        return l_statsWhole;
    owner = std::move(l_owner);
    return io_body.Read(operators) && l_statsWhole;
}

bool RoomJoined::Write(OutputStream& o_body) const {
    if (!o_body.Write(room) || !o_body.Write(users) || !o_body.Write(statuses) || !o_body.Write(stats) ||
        !o_body.Write(freeSlots) || !o_body.Write(countries))
        return false;
    return !owner || (o_body.Write(*owner) && o_body.Write(operators));
}

} // namespace from_server
