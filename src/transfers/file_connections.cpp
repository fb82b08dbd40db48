// From the offer of a file to the worker that moves its bytes, on both sides.
//
// The uploader offers (a transfer request with a token), the downloader accepts, the uploader opens a file connection
// and writes the token on it; the downloader answers with the offset at which its partial file ends.
#include "transfers/transfer_queue_manager.h"

#include "app/text.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"
#include "transfers/download_folder.h"
#include "transfers/download_thread.h"
#include "transfers/live_transfer.h"
#include "transfers/local_files.h"
#include "transfers/local_paths.h"
#include "transfers/transfer_log.h"
#include "transfers/upload_thread.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTcpSocket>
#include <QtEndian>

#include <algorithm>

namespace {

void Discard(QTcpSocket* ip_socket) {
    ip_socket->disconnect();
    ip_socket->close();
    ip_socket->deleteLater();
}

// Null unless the folder, which is made if need be, and the file lie inside the download folder.
std::unique_ptr<QFile> OpenPartialFile(const QString& i_folder, const QString& i_path) {
    if (!IsInsideFolder(DownloadFolder(), i_folder)) {
        return nullptr;
    }
    QDir().mkpath(i_folder);
    return OpenToAppend(i_path);
}

} // namespace

void TransferQueueManager::OnFileTransferRequest(const std::string& i_user, int i_direction, unsigned int i_token,
                                                 const std::string& i_path, qint64 /*i_size*/) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    if (i_direction != TransferRequest::offersUpload) {
        LogTransfer(1,
                    QStringLiteral("Received download request from %1 for file %2, currently not processing")
                        .arg(ToQString(i_user), ToQString(i_path)),
                    l_user);
        return;
    }
    LogTransfer(1,
                QStringLiteral("Received upload request from %1 for file %2, req %3")
                    .arg(ToQString(i_user), ToQString(i_path), QString::number(i_token)),
                l_user);
    const ItemPtr l_entry = FindDownloadByPath(i_user, i_path);
    if (!l_entry) {
        LogTransfer(2, QStringLiteral("Denied, Cancelled"), l_user);
        peerMessenger->DenyTransferRequest(i_user, i_token, "Cancelled");
        return;
    }
    const std::string l_status = l_entry["download_entry_status"].AsString();
    if (l_status == "complete") {
        LogTransfer(2, QStringLiteral("Denied, Complete"), l_user);
        peerMessenger->DenyTransferRequest(i_user, i_token, "Complete");
        return;
    }
    l_entry.Connect(d.GetType("remote_transfer_req")->GetItem(i_token));
    if (l_status == "downloading") {
        LogTransfer(2, QStringLiteral("Transfer is already downloading, cancelling..."), l_user);
        SetDownloadEntryStatus(l_entry, "aborted");
    }
    peerMessenger->AcceptTransferRequest(i_user, i_token, false, 0);
    LogTransfer(2, QStringLiteral("Accepted"), l_user);
}

// The entry that this connection may serve: a token is only as unique as the peer makes it. A finished entry and one
// whose transfer runs take no second connection.
Item* TransferQueueManager::DownloadForConnection(const std::string& i_user, unsigned int i_token) {
    const ItemPtr l_token = d.GetType("remote_transfer_req")->HasItem(i_token);
    const ItemPtr l_user = d.GetType("user")->HasItem(i_user);
    if (!l_token || !l_user) {
        return nullptr;
    }
    const ItemSet l_entries = d.GetItems(l_token, l_user, "download_entry");
    const auto l_found = std::find_if(l_entries.begin(), l_entries.end(), [](Item* ip_entry) {
        return !ip_entry->IsConnected("download_thread") &&
               ip_entry->HasItem("download_entry_status").AsView() != "complete";
    });
    return l_found == l_entries.end() ? nullptr : *l_found;
}

void TransferQueueManager::OnFileConnection(const std::string& i_user, QTcpSocket* ip_socket, unsigned int i_token) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogTransfer(1,
                QStringLiteral("File connection created by user %1 for req %2")
                    .arg(ToQString(i_user), QString::number(i_token)),
                l_user);
    const ItemPtr l_entry = DownloadForConnection(i_user, i_token);
    if (!l_entry) {
        Discard(ip_socket);
        LogTransfer(2, QStringLiteral("Download not found, aborting"), l_user);
        return;
    }
    auto lp_file = OpenPartialFile(ToFileSystemForm(GetDownloadTargetFolder(l_entry, false)),
                                   ToFileSystemForm(GetDownloadTargetPath(l_entry, false)));
    if (!lp_file) {
        SetDownloadEntryStatus(l_entry, "local error");
        Discard(ip_socket);
        LogTransfer(2, QStringLiteral("Could not open file, aborting"), l_user);
        return;
    }
    StartDownload(l_entry, ip_socket, std::move(lp_file));
    LogTransfer(2, QStringLiteral("Downloading"), l_user);
}

void TransferQueueManager::StartDownload(ItemPtr i_entry, QTcpSocket* ip_socket, std::unique_ptr<QFile> ip_file) {
    QFile* const lp_file = ip_file.release(); // the entry's from here on
    const long long l_position = lp_file->size();
    char l_offset[8];
    qToLittleEndian(static_cast<qint64>(l_position), l_offset);
    ip_socket->disconnect();
    ip_socket->write(l_offset, sizeof l_offset);
    ip_socket->flush();

    i_entry.Connect(d.GetType("download_socket")->GetItem(ip_socket));
    i_entry.Connect(d.GetType("download_file")->GetItem(lp_file));
    ConnectCell<long long>(i_entry, "write_position", l_position);
    SetDownloadEntryStatus(i_entry, "downloading");
    ConnectCell(i_entry, "last_receipt_time", QDateTime::currentDateTime());
    ConnectCell(i_entry, "bytes_per_second", 0);

    // A size that is no number, from a damaged store file, fails like one that is too small.
    const long long l_size = i_entry["file_size"].ToInt64().value_or(-1);
    auto* const lp_thread = new DownloadThread(ip_socket, lp_file, l_size, l_position);
    i_entry.Connect(d.GetType("download_thread")->GetItem(static_cast<TransferThread*>(lp_thread)));
    connect(lp_thread, &DownloadThread::DownloadError, this, &TransferQueueManager::OnDownloadError);
    connect(lp_thread, &DownloadThread::DownloadProgress, this, &TransferQueueManager::OnDownloadProgress);
    connect(lp_thread, &DownloadThread::DownloadComplete, this, &TransferQueueManager::OnDownloadComplete);
    lp_thread->Begin();
}

void TransferQueueManager::OnFileTransferResponse(const std::string& i_user, unsigned int i_token, bool i_accepted,
                                                  bool /*i_hasSize*/, qint64 /*i_size*/, const std::string& i_reason) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogTransfer(1,
                QStringLiteral("Received file transfer response from user %1 for req %2, transfer %3")
                    .arg(ToQString(i_user), QString::number(i_token),
                         i_accepted ? QStringLiteral("accepted") : QStringLiteral("not accepted")),
                l_user);
    const ItemPtr l_token = d.GetType("transfer_req")->HasItem(i_token);
    if (!l_token) {
        LogTransfer(2, QStringLiteral("req not found"), l_user);
        return;
    }
    if (l_token.IsConnected("download_entry")) {
        LogTransfer(2, QStringLiteral("Found download, not processing"), l_user);
        return;
    }
    const ItemPtr l_entry = l_token["upload_entry"];
    if (!l_entry) {
        LogTransfer(2, QStringLiteral("Neither upload or download attached to req, weird"), l_user);
        return;
    }
    LogTransfer(2, QStringLiteral("Found upload"), l_user);
    if (!(l_entry["user"] == l_user)) {
        LogTransfer(2,
                    QStringLiteral("Upload user %1 not the same as user who opened the connection, not doing anything")
                        .arg(ToQString(l_entry["user"].AsView())),
                    l_user);
        return;
    }
    const std::string_view l_status = l_entry["upload_entry_status"].AsView();
    if (l_status != "requesting") { // late, or said twice: the slot may be another's by now
        LogTransfer(2, QStringLiteral("Upload is %1, ignoring response").arg(ToQString(l_status)), l_user);
        return;
    }
    if (i_accepted) {
        OpenUpload(l_entry);
        return;
    }
    LogTransfer(2, QStringLiteral("Upload was not accepted, marking denied"), l_user);
    l_entry.Connect(d.GetType("denial_reason")->GetItem(i_reason));
    SetUploadEntryStatus(l_entry, "denied");
    StartNewUploads();
}

void TransferQueueManager::OpenUpload(ItemPtr i_entry) {
    const ItemPtr l_user = i_entry["user"];
    const ItemPtr l_file = i_entry["shared_file"];
    std::string l_path = l_file["shared_file_folder"].AsString() + '/' + l_file["shared_file_name"].AsString();
    std::replace(l_path.begin(), l_path.end(), '\\', '/');
    if (auto lp_file = OpenToSend(l_path)) {
        LogTransfer(2, QStringLiteral("Requesting file connection to user"), l_user);
        peerMessenger->RequestFileConnectionToUser(l_user.AsString());
        i_entry.Connect(d.GetType("upload_file")->GetItem(lp_file.release()));
        SetUploadEntryStatus(i_entry, "connecting");
        return;
    }
    LogTransfer(2,
                QStringLiteral("File could not be opened, marking local error and sending denial message. Shouldn't "
                               "we have done this before we requested the transfer?"),
                l_user);
    peerMessenger->DenyUpload(l_user.AsString(), i_entry["filename_as_requested"].AsString(), "File read error.");
    SetUploadEntryStatus(i_entry, "local error");
    StartNewUploads();
}

void TransferQueueManager::OnFileConnectionAccepted(const std::string& i_user, QTcpSocket* ip_socket) {
    const ItemPtr l_connecting = d.GetType("upload_entry_status")->HasItem("connecting");
    const ItemSet l_entries = l_connecting.GetItems("upload_entry").Connected("user", i_user);
    if (l_entries.empty()) {
        Discard(ip_socket);
        return;
    }
    const ItemPtr l_entry = *l_entries.begin();
    ip_socket->disconnect();
    l_entry.Connect(d.GetType("upload_socket")->GetItem(ip_socket));
    SetUploadEntryStatus(l_entry, "uploading");
    ConnectCell(l_entry, "last_receipt_time", QDateTime::currentDateTime());
    ConnectCell(l_entry, "bytes_per_second", 0);
    ConnectCell<long long>(l_entry, "read_position", 0);

    const auto l_token = static_cast<int>(l_entry["transfer_req"].AsInt64());
    auto* const lp_file = l_entry["upload_file"].AsPointer<QFile>();
    auto* const lp_thread = new UploadThread(ip_socket, lp_file, l_token);
    l_entry.Connect(d.GetType("upload_thread")->GetItem(static_cast<TransferThread*>(lp_thread)));
    connect(lp_thread, &UploadThread::UploadError, this, &TransferQueueManager::OnUploadError);
    connect(lp_thread, &UploadThread::UploadProgress, this, &TransferQueueManager::OnUploadProgress);
    connect(lp_thread, &UploadThread::UploadComplete, this, &TransferQueueManager::OnUploadComplete);
    lp_thread->Begin();
}
