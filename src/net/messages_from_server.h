// What the central server says to a client, in order of the codes; the other direction is net/messages_to_server.h. A
// client tolerates short messages: it goes on with the fields that arrived.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "net/message.h"
#include "net/wire.h"

namespace from_server {

// Status numbers of users: above 0 the user is online.
inline constexpr std::int32_t statusOffline = 0;
inline constexpr std::int32_t statusAway = 1;
inline constexpr std::int32_t statusOnline = 2;

struct LoginReply {
    static constexpr std::int32_t code = 1;
    // The reason that the client tells apart from all others.
    static constexpr const char* invalidPassword = "INVALIDPASS";

    bool accepted = false;
    std::string reason; // only when not accepted
    // Only when accepted:
    std::string greeting;
    std::uint32_t address = 0; // of the client as the server sees it
    std::string digest;

    [[nodiscard]] bool Read(InputStream& io_body);
    bool Write(OutputStream& o_body) const;
};

struct UserAddress {
    static constexpr std::int32_t code = 3;
    std::string user;
    TCPAddress address; // all zero for a user who is not here
    static auto Fields(auto& i_m) { return std::tie(i_m.user, i_m.address); }
};

struct AddUserReply {
    static constexpr std::int32_t code = 5;
    std::string user;
    bool exists = false;
    // Only when the user exists:
    std::int32_t status = 0;
    UserStats stats;
    std::string country; // only with a status above 0

    [[nodiscard]] bool Read(InputStream& io_body);
    bool Write(OutputStream& o_body) const;
};

struct UserStatus {
    static constexpr std::int32_t code = 7;
    std::string user;
    std::int32_t status = 0;
    bool privileged = false;
    static auto Fields(auto& i_m) { return std::tie(i_m.user, i_m.status, i_m.privileged); }
};

struct RoomChat {
    static constexpr std::int32_t code = 13;
    std::string room;
    std::string user;
    std::string text;
    static auto Fields(auto& i_m) { return std::tie(i_m.room, i_m.user, i_m.text); }
};

// The receiver is in the room now. The lists go by position of the user.
struct RoomJoined {
    static constexpr std::int32_t code = 14;
    std::string room;
    std::vector<std::string> users;
    std::vector<std::int32_t> statuses;
    std::vector<UserStats> stats;
    std::vector<std::int32_t> freeSlots;
    std::vector<std::string> countries;
    std::optional<std::string> owner; // of a room that has one
    std::set<std::string> operators;  // only with an owner

    // A list of stats that ends early does not end the message. True without an owner too.
    [[nodiscard]] bool Read(InputStream& io_body);
    bool Write(OutputStream& o_body) const;
};

struct RoomLeft {
    static constexpr std::int32_t code = 15;
    std::string room;
    static auto Fields(auto& i_m) { return std::tie(i_m.room); }
};

struct UserJoinedRoom {
    static constexpr std::int32_t code = 16;
    std::string room;
    std::string user;
    std::int32_t status = 0;
    UserStats stats;
    std::int32_t freeSlots = 0;
    std::string country;
    static auto Fields(auto& i_m) {
        return std::tie(i_m.room, i_m.user, i_m.status, i_m.stats, i_m.freeSlots, i_m.country);
    }
};

struct UserLeftRoom {
    static constexpr std::int32_t code = 17;
    std::string room;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.room, i_m.user); }
};

// A user asks the receiver to connect to them.
struct PeerConnectionRequest {
    static constexpr std::int32_t code = 18;
    std::string user;
    std::string connectionType; // "P", "F" or "D"
    TCPAddress address;
    std::uint32_t token = 0; // the user's own
    bool privileged = false;
    static auto Fields(auto& i_m) {
        return std::tie(i_m.user, i_m.connectionType, i_m.address, i_m.token, i_m.privileged);
    }
};

struct PrivateChat {
    static constexpr std::int32_t code = 22;
    std::int32_t messageId = 0; // for the acknowledgement
    std::int32_t time = 0;      // Unix seconds of the sending
    std::string user;
    std::string text;
    bool spontaneous = false; // false for a message kept while the receiver was away
    static auto Fields(auto& i_m) { return std::tie(i_m.messageId, i_m.time, i_m.user, i_m.text, i_m.spontaneous); }
};

struct ReceivedUserStats {
    static constexpr std::int32_t code = 36;
    std::string user;
    UserStats stats;
    static auto Fields(auto& i_m) { return std::tie(i_m.user, i_m.stats); }
};

struct RoomList {
    static constexpr std::int32_t code = 64;
    // Names and user counts by position.
    struct Group {
        std::vector<std::string> names;
        std::vector<std::int32_t> userCounts;
    };
    Group open;
    Group owned;
    Group others; // the closed rooms in which the receiver is a member
    std::set<std::string> operated;
    std::vector<std::int32_t> reserved;
    static auto Fields(auto& i_m) {
        return std::tie(i_m.open.names, i_m.open.userCounts, i_m.owned.names, i_m.owned.userCounts, i_m.others.names,
                        i_m.others.userCounts, i_m.operated, i_m.reserved);
    }
};

struct PrivilegedUsers {
    static constexpr std::int32_t code = 69;
    std::set<std::string> users;
    static auto Fields(auto& i_m) { return std::tie(i_m.users); }
};

struct DNetParentMinSpeed {
    static constexpr std::int32_t code = 83;
    std::int32_t speed = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.speed); }
};

struct DNetParentSpeedConnectionRatio {
    static constexpr std::int32_t code = 84;
    std::int32_t ratio = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.ratio); }
};

// A message of the distributed network for a client without a parent: the rest of the body, read elsewhere.
struct DNetMessage {
    static constexpr std::int32_t code = 93;
};

struct DNetPossibleParents {
    static constexpr std::int32_t code = 102;
    std::vector<std::pair<std::string, TCPAddress>> parents;
    static auto Fields(auto& i_m) { return std::tie(i_m.parents); }
};

struct WishListWait {
    static constexpr std::int32_t code = 104;
    std::uint32_t period = 0; // seconds between two saved searches
    static auto Fields(auto& i_m) { return std::tie(i_m.period); }
};

struct DNetDeliveryReport {
    static constexpr std::int32_t code = 128;
    std::int32_t request = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.request); }
};

struct DNetReset {
    static constexpr std::int32_t code = 130;
    static auto Fields(auto&) { return std::tie(); }
};

// The user whom to_server::IndirectConnectionRequest named could not connect.
struct IndirectConnectionFailure {
    static constexpr std::int32_t code = 1001;
    std::uint32_t token = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.token); }
};

} // namespace from_server
