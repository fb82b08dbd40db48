// What a client says to the central server, in order of the codes. Every message is frame, code, fields; the encodings
// are those of net/streams.h. All texts are bytes as the user or a peer gave them. The server closes the connection of
// a client whose message does not decode.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

#include "net/message.h"

namespace to_server {

// The first message on every connection, and the only one before the login reply.
struct Login {
    static constexpr std::int32_t code = 1;
    std::string userName;
    std::string password; // in plain
    std::int32_t clientVersion = 157;
    std::string digest; // MD5 of user name and password together, 32 lower-case hexadecimal digits
    std::int32_t minorVersion = 100;
    static auto Fields(auto& i_m) {
        return std::tie(i_m.userName, i_m.password, i_m.clientVersion, i_m.digest, i_m.minorVersion);
    }
};

// The port on which the client listens for other clients.
struct SetWaitPort {
    static constexpr std::int32_t code = 2;
    std::int32_t port = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.port); }
};

// Answered by from_server::UserAddress.
struct GetUserAddress {
    static constexpr std::int32_t code = 3;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.user); }
};

// Subscribes to a user's status. Answered by from_server::AddUserReply, later by from_server::UserStatus.
struct AddUser {
    static constexpr std::int32_t code = 5;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.user); }
};

struct UntrackUser {
    static constexpr std::int32_t code = 6;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.user); }
};

// Answered by from_server::UserStatus.
struct GetUserStatus {
    static constexpr std::int32_t code = 7;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.user); }
};

// Comes back to the sender too, as from_server::RoomChat.
struct RoomChat {
    static constexpr std::int32_t code = 13;
    std::string room;
    std::string text;
    static auto Fields(auto& i_m) { return std::tie(i_m.room, i_m.text); }
};

// Answered by from_server::RoomJoined.
struct EnterRoom {
    static constexpr std::int32_t code = 14;
    std::string room;
    static auto Fields(auto& i_m) { return std::tie(i_m.room); }
};

// Answered by from_server::RoomLeft.
struct LeaveRoom {
    static constexpr std::int32_t code = 15;
    std::string room;
    static auto Fields(auto& i_m) { return std::tie(i_m.room); }
};

// Asks a user to connect to the sender; reaches them as from_server::PeerConnectionRequest.
struct IndirectConnectionRequest {
    static constexpr std::int32_t code = 18;
    std::uint32_t token = 0; // the sender's own
    std::string user;
    std::string connectionType; // "P", "F" or "D"
    static auto Fields(auto& i_m) { return std::tie(i_m.token, i_m.user, i_m.connectionType); }
};

struct PrivateChat {
    static constexpr std::int32_t code = 22;
    std::string user;
    std::string text;
    static auto Fields(auto& i_m) { return std::tie(i_m.user, i_m.text); }
};

// The message of from_server::PrivateChat arrived; the server need not deliver it again.
struct PrivateChatAcknowledgement {
    static constexpr std::int32_t code = 23;
    std::int32_t messageId = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.messageId); }
};

struct FileSearch {
    static constexpr std::int32_t code = 26;
    std::uint32_t token = 0; // comes back in the peers' answers
    std::string text;
    static auto Fields(auto& i_m) { return std::tie(i_m.token, i_m.text); }
};

// How much the client shares.
struct FilesFolders {
    static constexpr std::int32_t code = 35;
    std::int32_t folderCount = 0;
    std::int32_t fileCount = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.folderCount, i_m.fileCount); }
};

// Answered by from_server::ReceivedUserStats.
struct GetUserStats {
    static constexpr std::int32_t code = 36;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.user); }
};

// Answered by from_server::RoomList.
struct GetRoomList {
    static constexpr std::int32_t code = 64;
    static auto Fields(auto&) { return std::tie(); }
};

struct DNetNoParent {
    static constexpr std::int32_t code = 71;
    bool hasNoParent = false; // true asks the server for possible parents
    static auto Fields(auto& i_m) { return std::tie(i_m.hasNoParent); }
};

struct DNetCanParent {
    static constexpr std::int32_t code = 100;
    bool canParent = false;
    static auto Fields(auto& i_m) { return std::tie(i_m.canParent); }
};

// As FileSearch, on behalf of a saved search.
struct WishListSearch {
    static constexpr std::int32_t code = 103;
    std::uint32_t token = 0;
    std::string text;
    static auto Fields(auto& i_m) { return std::tie(i_m.token, i_m.text); }
};

struct UploadSpeed {
    static constexpr std::int32_t code = 121;
    std::int32_t speed = 0; // bytes a second, of one finished upload
    static auto Fields(auto& i_m) { return std::tie(i_m.speed); }
};

// The client's distance from the root of the distributed tree.
struct DNetLevel {
    static constexpr std::int32_t code = 126;
    std::int32_t level = 0;
    static auto Fields(auto& i_m) { return std::tie(i_m.level); }
};

// The root above the client.
struct DNetGroupLeader {
    static constexpr std::int32_t code = 127;
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.user); }
};

// One byte only, although it stands for a depth.
struct ChildDepth {
    static constexpr std::int32_t code = 129;
    bool depth = false;
    static auto Fields(auto& i_m) { return std::tie(i_m.depth); }
};

// The sender could not connect to the user who asked for it by from_server::PeerConnectionRequest.
struct CantConnectToPeer {
    static constexpr std::int32_t code = 1001;
    std::uint32_t token = 0; // of that user's request
    std::string user;
    static auto Fields(auto& i_m) { return std::tie(i_m.token, i_m.user); }
};

} // namespace to_server
