// The download queue: what is wanted, and how often the peers are told so.
#include "transfers/transfer_queue_manager.h"

#include "app/settings.h"
#include "app/text.h"
#include "app/timestamp.h"
#include "net/server.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"
#include "transfers/live_transfer.h"
#include "transfers/transfer_log.h"

#include <QDateTime>

namespace {

// A user's queue is polled no more often than this.
constexpr qint64 kPlaceInLineInterval = 600000; // milliseconds

// As the peer names the file.
std::string RemotePath(ItemPtr i_entry) {
    return i_entry["remote_folder"].AsString() + '\\' + i_entry["file_name"].AsString();
}

std::string_view StatusOf(ItemPtr i_entry) {
    return i_entry["download_entry_status"].AsView();
}

bool IsOnline(ItemPtr i_user) {
    return i_user && i_user.IsConnected("is_online");
}

ItemSet DownloadsWithStatus(std::string_view i_status) {
    return d.GetType("download_entry_status")->HasItem(i_status).GetItems("download_entry");
}

} // namespace

void TransferQueueManager::AddDownload(const std::string& i_user, const std::string& i_fileName,
                                       const std::string& i_remoteFolder, long long i_size, int i_subfolderSaveLevel) {
    if (GetDownloadEntry(i_user, i_fileName, i_remoteFolder) != nullptr) {
        return;
    }
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    const ItemPtr l_entry = d.GetType("download_entry")->NewItem();
    l_entry.Connect(l_user);
    l_entry.Connect(d.GetType("file_name")->GetItem(i_fileName));
    l_entry.Connect(d.GetType("remote_folder")->GetItem(i_remoteFolder));
    l_entry.Connect(d.GetType("file_size")->GetItem(i_size));
    l_entry.Connect(d.GetType("subfolder_save_level")->GetItem(i_subfolderSaveLevel));
    l_entry.Connect(d.GetType("download_order")->GetItem(TakeCounter("transfer_order_counter")));
    gp_server->TrackUser(i_user);
    if (DoesDownloadItemCompleteFilenameExist(l_entry)) {
        SetDownloadEntryStatus(l_entry, "complete");
        return;
    }
    SetDownloadEntryStatus(l_entry, "queued");
    if (IsOnline(l_user)) {
        peerMessenger->QueueDownload(i_user, RemotePath(l_entry));
        RequestDownloadPlaceInLine(l_entry);
    }
}

Item* TransferQueueManager::GetDownloadEntry(const std::string& i_user, const std::string& i_fileName,
                                             const std::string& i_remoteFolder) {
    const ItemPtr l_user = d.GetType("user")->HasItem(i_user);
    const ItemPtr l_name = d.GetType("file_name")->HasItem(i_fileName);
    const ItemPtr l_folder = d.GetType("remote_folder")->HasItem(i_remoteFolder);
    if (!l_user || !l_name || !l_folder) {
        return nullptr;
    }
    // More than one only if the store file was edited.
    const ItemSet l_entries = d.GetItemSubset({l_user.Get(), l_name.Get(), l_folder.Get()}, "download_entry");
    return l_entries.empty() ? nullptr : *l_entries.begin();
}

Item* TransferQueueManager::FindDownloadByPath(const std::string& i_user, const std::string& i_path) {
    return GetDownloadEntry(i_user, GetFileName(i_path), GetFolder(i_path));
}

void TransferQueueManager::SetDownloadEntryStatus(ItemPtr i_entry, const std::string& i_status) {
    const ItemPtr l_old = i_entry["download_entry_status"];
    const bool l_wasActive = l_old && l_old.IsConnected("is_active");
    const ItemPtr l_new = d.GetType("download_entry_status")->GetItem(i_status);
    i_entry.Connect(l_new);
    i_entry.Connect(d.GetType("last_status_change_time")->GetItem(CurrentTimestamp()));
    if (l_wasActive && !l_new.IsConnected("is_active")) {
        EndLiveTransfer(i_entry, kLiveDownload);
    }
}

void TransferQueueManager::QueueDownloadIfUserOnline(ItemPtr i_entry) {
    const std::string l_path = RemotePath(i_entry);
    const ItemPtr l_user = i_entry["user"];
    if (StatusOf(i_entry) == "local error") {
        LogTransfer(1,
                    QStringLiteral("Download status %1, not re-queueing %2")
                        .arg(ToQString(StatusOf(i_entry)), ToQString(l_path)),
                    l_user);
    } else if (IsOnline(l_user)) {
        LogTransfer(1,
                    QStringLiteral("User %1 appears to still be online, re-queueing %2")
                        .arg(ToQString(l_user.AsView()), ToQString(l_path)),
                    l_user);
        peerMessenger->QueueDownload(l_user.AsString(), l_path);
    } else {
        LogTransfer(
            1, QStringLiteral("User %1 offline, not re-queueing %2").arg(ToQString(l_user.AsView()), ToQString(l_path)),
            l_user);
    }
}

void TransferQueueManager::RequestDownloadPlaceInLine(ItemPtr i_entry) {
    const ItemPtr l_user = i_entry["user"];
    LogTransfer(1,
                QStringLiteral("Requesting place in line for download of %1 from %2")
                    .arg(ToQString(i_entry["file_name"].AsView()), ToQString(l_user.AsView())),
                l_user);
    peerMessenger->SendMessage(l_user.AsString(), Encode(PlaceInLineRequest{RemotePath(i_entry)}));
}

void TransferQueueManager::RequestUserDownloadsPlaceInLine(const std::string& i_user) {
    for (Item* lp_entry : DownloadsWithStatus("queued").Connected("user", i_user)) {
        RequestDownloadPlaceInLine(lp_entry);
    }
}

bool TransferQueueManager::IsActivelyDownloadingFromUser(const std::string& i_user) {
    return !DownloadsWithStatus("downloading").Connected("user", i_user).empty();
}

void TransferQueueManager::OnUserOnline(Item* ip_user) {
    const std::string l_user = ip_user->AsString();
    const ItemSet l_entries = ip_user->GetItems("download_entry");
    if (!l_entries.empty()) {
        LogTransfer(1, QStringLiteral("User %1 went online, processing pending downloads").arg(ToQString(l_user)),
                    ip_user);
    }
    for (Item* lp_entry : l_entries.SortNumericBy("download_order", true)) {
        if (StatusOf(lp_entry) == "complete" || StatusOf(lp_entry) == "denied") {
            continue;
        }
        if (DoesDownloadItemCompleteFilenameExist(lp_entry)) {
            SetDownloadEntryStatus(lp_entry, "complete");
            continue;
        }
        peerMessenger->QueueDownload(l_user, RemotePath(lp_entry));
        RequestDownloadPlaceInLine(lp_entry);
        LogTransfer(2, QStringLiteral("Queueing %1").arg(ToQString(lp_entry->HasItem("file_name").AsView())), ip_user);
    }
    StartNewUploads();
}

void TransferQueueManager::PeriodicCheck() {
    if (!DownloadsWithStatus("downloading").empty()) {
        return;
    }
    const ItemSet l_stuck = DownloadsWithStatus("aborted") + DownloadsWithStatus("queued");
    const ItemSet l_reachable = l_stuck.Connected(l_stuck.GetItems("user").Connected("is_online"));
    if (l_reachable.empty()) {
        return;
    }
    LogTransfer(1, QStringLiteral("Not currently downloading anything, re-queueing inactive downloads"), ItemPtr());
    for (Item* lp_entry : l_reachable.SortNumericBy("download_order", true)) {
        QueueDownloadIfUserOnline(lp_entry);
    }
}

void TransferQueueManager::RefreshPlacesInLine() {
    const QDateTime l_now = QDateTime::currentDateTime();
    for (Item* lp_user : DownloadsWithStatus("queued").GetItems("user").Connected("is_online")) {
        const std::string l_user = lp_user->AsString();
        const auto l_age = AgeInMilliseconds(lp_user->HasItem("last_place_in_line_request_time"), l_now);
        if (IsActivelyDownloadingFromUser(l_user) || (l_age && *l_age < kPlaceInLineInterval)) {
            continue;
        }
        RequestUserDownloadsPlaceInLine(l_user);
        lp_user->Connect(d.GetType("last_place_in_line_request_time")->GetItem(CurrentTimestamp()));
    }
}

void TransferQueueManager::OnDownloadPlaceInLine(const std::string& i_user, const std::string& i_path, int i_place) {
    if (Item* const lp_entry = FindDownloadByPath(i_user, i_path)) {
        lp_entry->Connect(d.GetType("place_in_line")->GetItem(i_place));
    }
}

void TransferQueueManager::OnUploadDeniedNotification(const std::string& i_user, const std::string& i_path,
                                                      const std::string& i_reason) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogTransfer(1,
                QStringLiteral("Received peer notification from %1 that upload of %2 was denied, reason: %3")
                    .arg(ToQString(i_user), ToQString(i_path), ToQString(i_reason)),
                l_user);
    const ItemPtr l_entry = FindDownloadByPath(i_user, i_path);
    if (!l_entry) {
        LogTransfer(2, QStringLiteral("Download not found."), l_user);
        return;
    }
    LogTransfer(2, QStringLiteral("Download found, marking as denied."), l_user);
    l_entry.Connect(d.GetType("denial_reason")->GetItem(i_reason));
    SetDownloadEntryStatus(l_entry, "denied");
}

void TransferQueueManager::OnUploadFailedNotification(const std::string& i_user, const std::string& i_path) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogTransfer(1,
                QStringLiteral("Received peer notification from %1 that upload of %2 failed")
                    .arg(ToQString(i_user), ToQString(i_path)),
                l_user);
    const ItemPtr l_entry = FindDownloadByPath(i_user, i_path);
    if (!l_entry) {
        LogTransfer(2, QStringLiteral("Download not found."), l_user);
        return;
    }
    LogTransfer(2, QStringLiteral("Download found!"), l_user);
    QueueDownloadIfUserOnline(l_entry);
}

void TransferQueueManager::RemoveDownload(ItemPtr i_entry) {
    EndLiveTransfer(i_entry, kLiveDownload);
    i_entry.Remove();
}
