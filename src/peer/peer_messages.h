// The messages on a messaging connection between clients: an int code, then the fields. Integers are little-endian.
//
// Each message is a struct for the Decode and Encode of net/message.h. The packed messages have their bodies elsewhere:
// PM_SHARED_FILE_LIST and PM_SHARED_FILES_IN_FOLDER in peer/share_list.h, PM_FILE_SEARCH_RESULT in peer/search_reply.h,
// the packing in peer/inflate.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

#include "net/message.h"

// NOLINTBEGIN(readability-identifier-naming): the log shows these names
enum PeerMessageCode : std::int32_t {
    PM_SAY = 1,
    PM_GET_SHARED_FILE_LIST = 4,
    PM_SHARED_FILE_LIST = 5,
    PM_FILE_SEARCH_REQUEST = 8,
    PM_FILE_SEARCH_RESULT = 9,
    PM_INVITE_USER_TO_ROOM = 10,
    PM_CANCELLED_QUEUED_TRANSFER = 14,
    PM_USER_INFO_REQUEST = 15,
    PM_USER_INFO_REPLY = 16,
    PM_SEND_CONNECT_TOKEN = 33,
    PM_MOVE_DOWNLOAD_TO_TOP = 34,
    PM_GET_SHARED_FILES_IN_FOLDER = 36,
    PM_SHARED_FILES_IN_FOLDER = 37,
    PM_TRANSFER_REQUEST = 40,
    PM_TRANSFER_RESPONSE = 41,
    PM_PLACEHOLD_UPLOAD = 42,
    PM_QUEUE_UPLOAD = 43,
    PM_UPLOAD_PLACE_IN_LINE = 44,
    PM_UPLOAD_FAILED = 46,
    PM_EXACT_FILE_SEARCH_REQUEST = 47,
    PM_QUEUED_DOWNLOADS = 48,
    PM_INDIRECT_FILE_SEARCH_REQUEST = 49,
    PM_UPLOAD_DENIED = 50,
    PM_UPLOAD_PLACE_IN_LINE_REQUEST = 51,
    PM_NOTHING = 52,
};
// NOLINTEND(readability-identifier-naming)

// The name, or the number followed by " (unknown)".
[[nodiscard]] std::string MessageCodeToString(int i_code);

// The longest body, in bytes and with its code, that a frame of this code may have.
[[nodiscard]] std::size_t LongestPeerFrame(int i_code);

// The first four bytes, read or not; empty when they are not all there.
[[nodiscard]] std::optional<int> PeekMessageCode(const MemStream& i_message);

struct ShareListRequest {
    static constexpr PeerMessageCode code = PM_GET_SHARED_FILE_LIST;
    static auto Fields(auto&) { return std::tie(); }
};

struct FolderRequest {
    static constexpr PeerMessageCode code = PM_GET_SHARED_FILES_IN_FOLDER;
    std::uint32_t request = 0; // the asker's number, comes back in the reply
    std::string folder;
    static auto Fields(auto& io_message) { return std::tie(io_message.request, io_message.folder); }
};

struct TransferRequest {
    static constexpr PeerMessageCode code = PM_TRANSFER_REQUEST;
    static constexpr std::int32_t offersUpload = 1;
    std::int32_t direction = 0;
    std::uint32_t token = 0;
    std::string file;
    long long size = 0; // bytes; on the wire only when the direction offers an upload, else 0
    [[nodiscard]] bool Read(InputStream& io_body);
    bool Write(OutputStream& o_body) const;
};

struct TransferResponse {
    static constexpr PeerMessageCode code = PM_TRANSFER_RESPONSE;
    std::uint32_t token = 0;
    bool accepted = false;
    bool hasSize = false; // an acceptance may leave the size out
    long long size = 0;
    std::string reason; // of a refusal only
    [[nodiscard]] bool Read(InputStream& io_body);
    bool Write(OutputStream& o_body) const;
};

// The messages whose only field is a file.
template <PeerMessageCode Code>
struct FileMessage {
    static constexpr PeerMessageCode code = Code;
    std::string file;
    static auto Fields(auto& io_message) { return std::tie(io_message.file); }
};

using QueueUpload = FileMessage<PM_QUEUE_UPLOAD>;
using UploadFailure = FileMessage<PM_UPLOAD_FAILED>;
using PlaceInLineRequest = FileMessage<PM_UPLOAD_PLACE_IN_LINE_REQUEST>;

struct PlaceInLine {
    static constexpr PeerMessageCode code = PM_UPLOAD_PLACE_IN_LINE;
    std::string file;
    std::int32_t place = 0;
    static auto Fields(auto& io_message) { return std::tie(io_message.file, io_message.place); }
};

struct UploadDenial {
    static constexpr PeerMessageCode code = PM_UPLOAD_DENIED;
    std::string file;
    std::string reason;
    static auto Fields(auto& io_message) { return std::tie(io_message.file, io_message.reason); }
};
