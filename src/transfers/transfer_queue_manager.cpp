#include "transfers/transfer_queue_manager.h"

#include "app/settings.h"
#include "app/text.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "transfers/download_folder.h"
#include "transfers/live_transfer.h"
#include "transfers/transfer_schema.h"

#include <QDateTime>
#include <QTcpSocket>

TransferQueueManager* transferQueueManager = nullptr;

template <class T>
void TransferQueueManager::OnCellRemoved(Item* ip_cell) {
    delete ip_cell->AsPointer<T>();
}

TransferQueueManager::TransferQueueManager() {
    transferQueueManager = this;

    CreateTransferTypes();
    d.GetType("write_position")
        ->m_itemRemoved.AddHandler(MakeHandler(this, &TransferQueueManager::OnCellRemoved<long long>));
    d.GetType("read_position")
        ->m_itemRemoved.AddHandler(MakeHandler(this, &TransferQueueManager::OnCellRemoved<long long>));
    d.GetType("bytes_per_second")
        ->m_itemRemoved.AddHandler(MakeHandler(this, &TransferQueueManager::OnCellRemoved<int>));
    d.GetType("last_receipt_time")
        ->m_itemRemoved.AddHandler(MakeHandler(this, &TransferQueueManager::OnCellRemoved<QDateTime>));

    auto* const lp_online = new PathNode(d, "user");
    new PathNode(lp_online, "is_online", NewlyConnected);
    d.AddPathEventHandler(lp_online, MakeHandler(this, &TransferQueueManager::OnUserOnline));

    ConnectPeerMessenger();
    SetDefaults();

    dataSaver->AddDataLoadedHandler(this);
    connect(timerManager->HalfMinuteTimer(), &QTimer::timeout, this, &TransferQueueManager::EveryHalfMinute);
    connect(timerManager->FiveMinuteTimer(), &QTimer::timeout, this, &TransferQueueManager::PeriodicCheck);
}

TransferQueueManager::~TransferQueueManager() {
    // All are told before any is waited for, so that the waits overlap.
    for (Item* lp_entry : g("upload_entry")) {
        SignalLiveTransfer(lp_entry, kLiveUpload);
    }
    for (Item* lp_entry : g("download_entry")) {
        SignalLiveTransfer(lp_entry, kLiveDownload);
    }
    for (Item* lp_entry : g("upload_entry")) {
        EndLiveTransfer(lp_entry, kLiveUpload, Deletion::Now);
    }
    for (Item* lp_entry : g("download_entry")) {
        EndLiveTransfer(lp_entry, kLiveDownload, Deletion::Now);
    }
    transferQueueManager = nullptr;
}

void TransferQueueManager::ConnectPeerMessenger() {
    connect(peerMessenger, &PeerMessenger::FileTransferRequested, this, &TransferQueueManager::OnFileTransferRequest);
    connect(peerMessenger, &PeerMessenger::FileConnectionRequested, this, &TransferQueueManager::OnFileConnection);
    connect(peerMessenger, &PeerMessenger::QueueUploadRequested, this, &TransferQueueManager::OnQueueUploadRequested);
    connect(peerMessenger, &PeerMessenger::FileConnectionAccepted, this,
            &TransferQueueManager::OnFileConnectionAccepted);
    connect(peerMessenger, &PeerMessenger::FileTransferResponse, this, &TransferQueueManager::OnFileTransferResponse);
    connect(peerMessenger, &PeerMessenger::UploadFailed, this, &TransferQueueManager::OnUploadFailedNotification);
    connect(peerMessenger, &PeerMessenger::UploadDenied, this, &TransferQueueManager::OnUploadDeniedNotification);
    connect(peerMessenger, &PeerMessenger::DownloadPlaceInLine, this, &TransferQueueManager::OnDownloadPlaceInLine);
}

void TransferQueueManager::SetDefaults() {
    SetDefaultSetting("download_folder", ToUtf8(DefaultDownloadFolder()));
    SetDefaultSetting("transfer_order_counter", "1");
    SetDefaultSetting("transfer_req_counter", "1");
    SetDefaultSetting("upload_speed_limit", 0);
    SetDefaultSetting("upload_speed_limit_enabled", "no");

    d.GetType("download_entry_status")->GetItem("downloading")->NewItem("is_active");
    for (const char* lp_status : {"connecting", "uploading", "requesting"}) {
        d.GetType("upload_entry_status")->GetItem(lp_status)->NewItem("is_active");
    }
}

void TransferQueueManager::DataLoaded() {
    const ItemPtr l_queued = d.GetType("download_entry_status")->GetItem("queued");
    for (Item* lp_entry : g("download_entry")) {
        if (!lp_entry->IsConnected("user") || !lp_entry->IsConnected("file_name")) {
            lp_entry->Remove(); // of a damaged file: nobody could ask for it, and no list would show it
        } else if (lp_entry->HasItem("download_entry_status").AsView() != "complete") {
            lp_entry->Connect(l_queued);
        }
    }
    for (Item* lp_user : g("download_entry").GetItems("user")) {
        gp_server->TrackUser(lp_user->AsString());
    }
    Q_EMIT TransfersLoaded();
    DetermineUploadSpeedLimit();
}

void TransferQueueManager::EveryHalfMinute() {
    AbortStalledUploads();
    RefreshPlacesInLine();
}
