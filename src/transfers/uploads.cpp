// The upload queue: who may have what, one upload at a time, and how fast.
#include "transfers/transfer_queue_manager.h"

#include "app/settings.h"
#include "app/text.h"
#include "app/timestamp.h"
#include "net/limits.h"
#include "net/server.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "transfers/live_transfer.h"
#include "transfers/transfer_log.h"
#include "transfers/upload_order.h"

#include <QDateTime>

#include <algorithm>
#include <limits>

namespace {

// How long an upload may wait for the peer's answer or for the connection.
constexpr qint64 kEarlyPhaseLimit = 30000; // milliseconds

ItemSet UploadsWithStatus(std::string_view i_status) {
    return d.GetType("upload_entry_status")->HasItem(i_status).GetItems("upload_entry");
}

std::string FileNameOf(ItemPtr i_entry) {
    return i_entry["shared_file"]["shared_file_name"].AsString();
}

} // namespace

void TransferQueueManager::OnQueueUploadRequested(const std::string& i_user, const std::string& i_path) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogTransfer(1, QStringLiteral("Queue upload requested by %1 for file %2").arg(ToQString(i_user), ToQString(i_path)),
                l_user);
    std::string l_path = i_path;
    std::replace(l_path.begin(), l_path.end(), '\\', '/');
    const ItemPtr l_file = sharedFoldersManager->GetSharedFileItem(l_path);
    if (!l_file || !sharedFoldersManager->IsFileSharedWithUser(l_file, i_user)) {
        LogTransfer(2, QStringLiteral("Denied, file not shared"), l_user);
        peerMessenger->DenyUpload(i_user, i_path, "File not shared.");
        return;
    }
    const ItemSet l_entries = d.GetItems(l_user, l_file, "upload_entry");
    if (l_entries.empty()) {
        QueueNewUpload(l_user, l_file, i_path);
        return;
    }
    const ItemPtr l_entry = *l_entries.begin();
    const ItemPtr l_status = l_entry["upload_entry_status"];
    if (l_status.AsView() == "queued" || l_status.IsConnected("is_active")) {
        LogTransfer(2, QStringLiteral("Already queued"), l_user);
        return;
    }
    LogTransfer(2, QStringLiteral("%1, re-queueing").arg(ToQString(l_status.AsView())), l_user);
    SetUploadEntryStatus(l_entry, "queued");
    ScheduleNewUploads();
}

void TransferQueueManager::QueueNewUpload(ItemPtr i_user, ItemPtr i_file, const std::string& i_path) {
    if (i_user.CountItems("upload_entry") >= limits::uploadsOfUser) {
        LogTransfer(2, QStringLiteral("Denied, too many files"), i_user);
        peerMessenger->DenyUpload(i_user.AsString(), i_path, "Too many files.");
        return;
    }
    const ItemPtr l_entry = d.GetType("upload_entry")->NewItem();
    l_entry.Connect(i_user);
    l_entry.Connect(i_file);
    l_entry.Connect(d.GetType("filename_as_requested")->GetItem(i_path));
    SetUploadEntryStatus(l_entry, "queued");
    l_entry.Connect(d.GetType("upload_order")->GetItem(TakeCounter("transfer_order_counter")));
    m_uploadOrderIsStale = true;
    LogTransfer(2, QStringLiteral("Queued"), i_user);
    gp_server->TrackUser(i_user.AsString());
    ScheduleNewUploads();
}

void TransferQueueManager::ScheduleNewUploads() {
    if (m_uploadsAreScheduled) {
        return;
    }
    m_uploadsAreScheduled = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_uploadsAreScheduled = false;
            StartNewUploads();
        },
        Qt::QueuedConnection);
}

void TransferQueueManager::DetermineUploadsEffectiveOrder() {
    m_uploadOrderIsStale = false;
    int l_rank = 0;
    for (Item* lp_entry : InUploadOrder(g("upload_entry"))) {
        lp_entry->Connect(d.GetType("effective_upload_order")->GetItem(l_rank));
        ++l_rank;
    }
}

bool TransferQueueManager::UploadEntrySortCompare(ItemPtr i_a, ItemPtr i_b) {
    return GoesBefore(i_a, i_b);
}

int TransferQueueManager::GetUserGroupDownloadPriority(const std::string& i_user) {
    return GroupDownloadPriority(d.GetType("user")->HasItem(i_user));
}

void TransferQueueManager::StartNewUploads() {
    if (m_uploadOrderIsStale) {
        DetermineUploadsEffectiveOrder();
    }
    if (!IsFreeToUpload()) {
        return;
    }
    const ItemSet l_queued = UploadsWithStatus("queued");
    const ItemList l_ready = l_queued.Connected(l_queued.GetItems("user").Connected("is_online"))
                                 .SortNumericBy("effective_upload_order", true);
    if (l_ready.empty()) {
        return;
    }
    const ItemPtr l_entry = l_ready.front();
    const unsigned int l_token =
        peerMessenger->RequestUpload(l_entry["user"].AsString(), l_entry["filename_as_requested"].AsString(),
                                     l_entry["shared_file"]["shared_file_size"].ToInt64().value_or(0));
    SetUploadEntryStatus(l_entry, "requesting");
    l_entry.Connect(d.GetType("transfer_req")->GetItem(l_token));
}

bool TransferQueueManager::IsFreeToUpload() {
    const ItemSet l_active = d.GetType("is_active")->GetItems().GetItems("upload_entry_status");
    return std::none_of(l_active.begin(), l_active.end(),
                        [](Item* ip_status) { return ip_status->IsConnected("upload_entry"); });
}

int TransferQueueManager::QueuedUploadCount() {
    const ItemPtr l_queued = d.GetType("upload_entry_status")->HasItem("queued");
    return l_queued ? static_cast<int>(l_queued.CountItems("upload_entry")) : 0;
}

void TransferQueueManager::SetUploadEntryStatus(ItemPtr i_entry, const std::string& i_status) {
    const ItemPtr l_old = i_entry["upload_entry_status"];
    const bool l_wasActive = l_old && l_old.IsConnected("is_active");
    const ItemPtr l_new = d.GetType("upload_entry_status")->GetItem(i_status);
    i_entry.Connect(l_new);
    i_entry.Connect(d.GetType("last_status_change_time")->GetItem(CurrentTimestamp()));
    if (!l_wasActive || l_new.IsConnected("is_active")) {
        return;
    }
    EndLiveTransfer(i_entry, kLiveUpload);
    if (i_status == "aborted") {
        const ItemPtr l_user = i_entry["user"];
        peerMessenger->SendMessage(l_user.AsString(),
                                   Encode(UploadFailure{i_entry["filename_as_requested"].AsString()}));
        LogTransfer(1,
                    QStringLiteral("Upload of %1 to %2 aborted, sending upload failed notification.")
                        .arg(ToQString(FileNameOf(i_entry)), ToQString(l_user.AsView())),
                    l_user);
    }
}

void TransferQueueManager::AbortStalledUploads() {
    const QDateTime l_now = QDateTime::currentDateTime();
    bool l_aborted = false;
    for (Item* lp_entry : UploadsWithStatus("requesting") + UploadsWithStatus("connecting")) {
        const auto l_age = AgeInMilliseconds(lp_entry->HasItem("last_status_change_time"), l_now);
        if (!l_age || *l_age < kEarlyPhaseLimit) {
            continue;
        }
        const ItemPtr l_user = lp_entry->HasItem("user");
        LogTransfer(1,
                    QStringLiteral("Upload of %1 to %2 timed out in %3 phase, aborting")
                        .arg(ToQString(FileNameOf(lp_entry)), ToQString(l_user.AsView()),
                             ToQString(lp_entry->HasItem("upload_entry_status").AsView())),
                    l_user);
        SetUploadEntryStatus(lp_entry, "aborted");
        l_aborted = true;
    }
    if (l_aborted) {
        StartNewUploads();
    }
}

void TransferQueueManager::SetUploadSpeedLimit(int i_limit) {
    SetSetting("upload_speed_limit", i_limit);
    DetermineUploadSpeedLimit();
}

void TransferQueueManager::EnableUploadSpeedLimit(bool i_enable) {
    SetSetting("upload_speed_limit_enabled", i_enable ? "yes" : "no");
    DetermineUploadSpeedLimit();
}

void TransferQueueManager::DetermineUploadSpeedLimit() {
    const long long l_limit =
        IsSettingYes("upload_speed_limit_enabled") ? SettingNumber("upload_speed_limit").value_or(0) : 0;
    const QMutexLocker l_lock(&m_uploadSpeedMutex);
    m_uploadSpeedLimit = static_cast<int>(std::clamp<long long>(l_limit, 0, std::numeric_limits<int>::max()));
}

int TransferQueueManager::GetUploadSpeed() {
    const QMutexLocker l_lock(&m_uploadSpeedMutex);
    return m_uploadSpeedLimit;
}

void TransferQueueManager::UnshareUser(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    l_user.NewItem("unshared");
    for (Item* lp_entry : l_user.GetItems("upload_entry")) {
        peerMessenger->DenyUpload(i_user, lp_entry->HasItem("filename_as_requested").AsString(), "File not shared.");
        RemoveUpload(lp_entry);
    }
}

void TransferQueueManager::ReshareUser(const std::string& i_user) {
    d.GetType("user")->GetItem(i_user)->Disconnect("unshared");
}

void TransferQueueManager::RemoveUpload(ItemPtr i_entry) {
    EndLiveTransfer(i_entry, kLiveUpload);
    i_entry.Remove();
}
