#include "peer/peer_messages.h"

#include <cstring>
#include <string_view>

#include "net/limits.h"

namespace {

// Empty for codes that have no name.
std::string_view NameOfCode(int i_code) {
    switch (i_code) {
#define NAME_OF(code)                                                                                                  \
    case code:                                                                                                         \
        return #code
        NAME_OF(PM_SAY);
        NAME_OF(PM_GET_SHARED_FILE_LIST);
        NAME_OF(PM_SHARED_FILE_LIST);
        NAME_OF(PM_FILE_SEARCH_REQUEST);
        NAME_OF(PM_FILE_SEARCH_RESULT);
        NAME_OF(PM_INVITE_USER_TO_ROOM);
        NAME_OF(PM_CANCELLED_QUEUED_TRANSFER);
        NAME_OF(PM_USER_INFO_REQUEST);
        NAME_OF(PM_USER_INFO_REPLY);
        NAME_OF(PM_SEND_CONNECT_TOKEN);
        NAME_OF(PM_MOVE_DOWNLOAD_TO_TOP);
        NAME_OF(PM_GET_SHARED_FILES_IN_FOLDER);
        NAME_OF(PM_SHARED_FILES_IN_FOLDER);
        NAME_OF(PM_TRANSFER_REQUEST);
        NAME_OF(PM_TRANSFER_RESPONSE);
        NAME_OF(PM_PLACEHOLD_UPLOAD);
        NAME_OF(PM_QUEUE_UPLOAD);
        NAME_OF(PM_UPLOAD_PLACE_IN_LINE);
        NAME_OF(PM_UPLOAD_FAILED);
        NAME_OF(PM_EXACT_FILE_SEARCH_REQUEST);
        NAME_OF(PM_QUEUED_DOWNLOADS);
        NAME_OF(PM_INDIRECT_FILE_SEARCH_REQUEST);
        NAME_OF(PM_UPLOAD_DENIED);
        NAME_OF(PM_UPLOAD_PLACE_IN_LINE_REQUEST);
        NAME_OF(PM_NOTHING);
#undef NAME_OF
    default:
        return {};
    }
}

} // namespace

std::string MessageCodeToString(int i_code) {
    const std::string_view l_name = NameOfCode(i_code);
    return l_name.empty() ? std::to_string(i_code) + " (unknown)" : std::string(l_name);
}

std::size_t LongestPeerFrame(int i_code) {
    switch (i_code) {
    case PM_SHARED_FILE_LIST:
    case PM_SHARED_FILES_IN_FOLDER:
        return limits::shareFrame;
    case PM_FILE_SEARCH_RESULT:
        return limits::searchReplyFrame;
    default:
        return limits::peerFrame;
    }
}

std::optional<int> PeekMessageCode(const MemStream& i_message) {
    std::int32_t l_code = 0;
    const std::string_view l_bytes = i_message.GetWritten();
    if (l_bytes.size() < sizeof(l_code))
        return std::nullopt;
    std::memcpy(&l_code, l_bytes.data(), sizeof(l_code));
    return l_code;
}

bool TransferRequest::Read(InputStream& io_body) {
    if (!io_body.Read(direction) || !io_body.Read(token) || !io_body.Read(file))
        return false;
    return direction != offersUpload || io_body.Read(size);
}

bool TransferRequest::Write(OutputStream& o_body) const {
    return o_body.Write(direction) && o_body.Write(token) && o_body.Write(file) &&
           (direction != offersUpload || o_body.Write(size));
}

bool TransferResponse::Read(InputStream& io_body) {
    if (!io_body.Read(token) || !io_body.Read(accepted))
        return false;
    if (!accepted)
        return io_body.Read(reason);
    hasSize = io_body.Read(size);
    return true;
}

bool TransferResponse::Write(OutputStream& o_body) const {
    if (!o_body.Write(token) || !o_body.Write(accepted))
        return false;
    if (!accepted)
        return o_body.Write(reason);
    return !hasSize || o_body.Write(size);
}
