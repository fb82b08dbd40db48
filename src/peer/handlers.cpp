// The messages that arrive. A decoder gives the fields, a handler acts on them; false ends the connection.
#include "peer/peer_messenger_private.h"

#include <QDateTime>

#include <new>

#include <malloc.h>

#include "peer/inflate.h"
#include "peer/peer_messages.h"
#include "peer/search_reply.h"
#include "peer/share_list.h"

namespace {

constexpr std::size_t largeList = 64 * limits::kibibyte; // packed

} // namespace

bool PeerMessenger::HandleMessage(QTcpSocket* ip_socket, MemStream& io_message) {
    if (SocketItem("uninitialized_socket", ip_socket))
        return HandleInitFrame(ip_socket, io_message);

    const ItemPtr l_connection = SocketItem("peer_socket", ip_socket);
    const ItemPtr l_user = l_connection["user"];
    const std::string l_name = l_user.AsString();
    std::int32_t l_code = 0;
    if (!l_connection || !io_message.Read(l_code)) {
        LogPeer(1,
                QStringLiteral("Could not read message code on connection to user %1, disposing of socket")
                    .arg(ToQString(l_name)),
                l_user);
        return false;
    }
    *l_connection["last_activity_time"].AsPointer<QDateTime>() = QDateTime::currentDateTime();
    LogPeer(1,
            QStringLiteral("Received %1 message from user %2")
                .arg(ToQString(MessageCodeToString(l_code)), ToQString(l_name)),
            l_user);
    return HandleCode({ip_socket, l_name}, l_code, io_message);
}

bool PeerMessenger::HandleCode(const Connection& i_connection, int i_code, MemStream& io_fields) {
    // clang-format off
    switch (i_code) {
    case PM_GET_SHARED_FILE_LIST: return HandleShareListRequest(i_connection);
    case PM_SHARED_FILE_LIST: return HandleShareList(i_connection, io_fields);
    case PM_FILE_SEARCH_RESULT: return HandleSearchReply(i_connection, io_fields);
    case PM_GET_SHARED_FILES_IN_FOLDER: return HandleFolderRequest(i_connection, io_fields);
    case PM_TRANSFER_REQUEST: return HandleTransferRequest(i_connection, io_fields);
    case PM_TRANSFER_RESPONSE: return HandleTransferResponse(i_connection, io_fields);
    case PM_QUEUE_UPLOAD: return HandleQueueUpload(i_connection, io_fields);
    case PM_UPLOAD_PLACE_IN_LINE: return HandlePlaceInLine(i_connection, io_fields);
    case PM_UPLOAD_FAILED: return HandleUploadFailure(i_connection, io_fields);
    case PM_UPLOAD_DENIED: return HandleUploadDenial(i_connection, io_fields);
    default: return true;
    }
    // clang-format on
}

// The answer goes to the socket that asked, if it is still there, and is not even made while an earlier one is being
// made or is still going out there.
bool PeerMessenger::HandleShareListRequest(const Connection& i_connection) {
    QTcpSocket* const lp_socket = i_connection.socket;
    if (!mp_private->sharedFiles || BufferOf(lp_socket).isListAwaited || IsListGoingOut(lp_socket))
        return true;
    const std::shared_ptr<SocketBufferInfo> l_info = m_socketBuffers.at(lp_socket);
    l_info->isListAwaited = true;
    const auto l_answer = [this, lp_socket,
                           l_asker = std::weak_ptr(l_info)](const std::optional<MemStream>& i_message) {
        const std::shared_ptr<SocketBufferInfo> l_stillThere = l_asker.lock();
        if (!l_stillThere)
            return;
        l_stillThere->isListAwaited = false;
        const auto l_entry = m_socketBuffers.find(lp_socket);
        if (i_message && l_entry != m_socketBuffers.end() && l_entry->second == l_stillThere)
            (void)SendMessage(lp_socket, *i_message);
    };
    mp_private->sharedFiles->GetSharedFilesMessage(i_connection.user, l_answer);
    return true;
}

bool PeerMessenger::HandleShareList(const Connection& i_connection, const MemStream& i_packed) {
    const auto l_packed = std::make_shared<const std::string>(i_packed.GetPending());
    if (mp_private->packedListBytes + l_packed->size() > limits::packedLists) {
        LogPeer(1, QStringLiteral("Too many share lists at once, dropping one"));
        return true;
    }
    mp_private->packedListBytes += l_packed->size();
    mp_private->listWorker.Do(
        [this, l_packed, l_user = i_connection.user](const std::atomic<bool>& i_stop) -> BackgroundWorker::Finish {
            const auto l_list = std::make_shared<std::optional<ShareList>>(UnpackShareList(*l_packed, &i_stop));
            if (!*l_list)
                malloc_trim(0);
            return [this, l_user, l_list, l_size = l_packed->size()] { OnListUnpacked(l_user, l_size, *l_list); };
        });
    return true;
}

void PeerMessenger::OnListUnpacked(const std::string& i_user, std::size_t i_packedSize,
                                   std::optional<ShareList>& io_list) {
    mp_private->packedListBytes -= i_packedSize;
    if (!io_list)
        return;
    Q_EMIT UserShare(i_user, io_list->folders, io_list->attributeNames);
    io_list.reset();
    // A list is millions of small pieces; the allocator would keep the place of all of them.
    if (i_packedSize > largeList) {
        mp_private->listWorker.Do([](const std::atomic<bool>&) -> BackgroundWorker::Finish {
            malloc_trim(0);
            return [] {};
        });
    }
}

bool PeerMessenger::HandleSearchReply(const Connection& i_connection, const MemStream& i_packed) {
    if (!mp_private->searchReplies)
        return true;
    SearchReply l_reply;
    ItemPtr l_request;
    try {
        InflateStream l_inflated(i_packed.GetPending(), limits::inflatedSearchReply);
        if (!DecodeSearchReplyHead(l_inflated, l_reply) || l_reply.user != i_connection.user)
            return l_inflated.WasMemoryShort();
        l_request = d.GetType("search_request")->HasItem(l_reply.token);
        if (!l_request)
            return true;
        if (!DecodeSearchReplyRest(l_inflated, l_reply) || !l_inflated.Finish())
            return l_inflated.WasMemoryShort();
    } catch (const std::bad_alloc&) {
        return true;
    }
    if (const ItemPtr l_results = mp_private->searchReplies->TakeSearchReply(l_request, l_reply))
        Q_EMIT SearchResults(l_results);
    return true;
}

bool PeerMessenger::HandleFolderRequest(const Connection& i_connection, InputStream& io_fields) {
    FolderRequest l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT SharedFilesInFolderRequested(i_connection.user, l_message.request, l_message.folder);
    return true;
}

bool PeerMessenger::HandleTransferRequest(const Connection& i_connection, InputStream& io_fields) {
    TransferRequest l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT FileTransferRequested(i_connection.user, l_message.direction, l_message.token, l_message.file,
                                 l_message.size);
    return true;
}

bool PeerMessenger::HandleTransferResponse(const Connection& i_connection, InputStream& io_fields) {
    TransferResponse l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT FileTransferResponse(i_connection.user, l_message.token, l_message.accepted, l_message.hasSize,
                                l_message.size, l_message.reason);
    return true;
}

bool PeerMessenger::HandleQueueUpload(const Connection& i_connection, InputStream& io_fields) {
    QueueUpload l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT QueueUploadRequested(i_connection.user, l_message.file);
    return true;
}

bool PeerMessenger::HandlePlaceInLine(const Connection& i_connection, InputStream& io_fields) {
    PlaceInLine l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT DownloadPlaceInLine(i_connection.user, l_message.file, l_message.place);
    return true;
}

bool PeerMessenger::HandleUploadFailure(const Connection& i_connection, InputStream& io_fields) {
    UploadFailure l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT UploadFailed(i_connection.user, l_message.file);
    return true;
}

bool PeerMessenger::HandleUploadDenial(const Connection& i_connection, InputStream& io_fields) {
    UploadDenial l_message;
    if (!Decode(io_fields, l_message))
        return false;
    Q_EMIT UploadDenied(i_connection.user, l_message.file, l_message.reason);
    return true;
}
