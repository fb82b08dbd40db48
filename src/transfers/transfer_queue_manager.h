// The download queue, the upload queue, and the file connections that serve them.
//
// There is no queue structure: a queued file is a `download_entry` or `upload_entry` item, its state is the status
// item connected to it, and the queue is what the store answers. All of this lives on the main thread; the workers
// (DownloadThread, UploadThread) read nothing of it but GetUploadSpeed().
//
// Names and folders are bytes as the peer wrote them, UTF-8 as a rule; a remote path is folder, backslash, name.
#pragma once

#include "sharing/upload_slots.h"
#include "store/data.h"
#include "store/data_saver.h"
#include "transfers/group_priorities.h"

#include <QMutex>
#include <QObject>
#include <QString>

#include <memory>
#include <string>

class QFile;
class QTcpSocket;

class TransferQueueManager : public QObject, public DataHandler, public DataLoadedEventHandler, public UploadSlots {
    Q_OBJECT
    Q_MOC_INCLUDE(<QTcpSocket>)

public:
    // Creates the Types of transfers. peerMessenger, gp_server, timerManager, dataSaver, sharedFoldersManager and
    // their Types must exist; the store file is loaded later.
    TransferQueueManager();

    // Asks every worker to stop, waits for each, and frees what the running transfers held. The entries keep their
    // statuses; DataLoaded() corrects them at the next start.
    ~TransferQueueManager() override;

    void DataLoaded() override;

    // --- Downloads ---

    // Queues the file unless the list has it already, in whatever status. i_size in bytes as the peer told it;
    // i_subfolderSaveLevel is how many folder levels beyond the last one stay in the local path.
    void AddDownload(const std::string& i_user, const std::string& i_fileName, const std::string& i_remoteFolder,
                     long long i_size, int i_subfolderSaveLevel);
    // Null if there is none.
    Item* GetDownloadEntry(const std::string& i_user, const std::string& i_fileName, const std::string& i_remoteFolder);
    // Every change of status but the reset at the start. Leaving "downloading" ends the running transfer: it stops
    // and waits for the worker, and frees file and socket.
    void SetDownloadEntryStatus(ItemPtr i_entry, const std::string& i_status);
    // Tells the peer again that the file is wanted. Never changes the status.
    void QueueDownloadIfUserOnline(ItemPtr i_entry);
    void RequestDownloadPlaceInLine(ItemPtr i_entry);
    void RequestUserDownloadsPlaceInLine(const std::string& i_user);
    bool IsActivelyDownloadingFromUser(const std::string& i_user);
    // Local places, always inside the download folder, with backslashes for separators: replace them by '/' before
    // the path reaches the file system. i_complete picks the tree of finished files, else that of partial ones.
    QString GetDownloadTargetFolder(ItemPtr i_entry, bool i_complete);
    QString GetDownloadTargetPath(ItemPtr i_entry, bool i_complete);
    // Only the name counts, not the size.
    bool DoesDownloadItemCompleteFilenameExist(ItemPtr i_entry);
    // Ends the transfer if one runs and removes the entry. No file is touched, the peer is told nothing.
    void RemoveDownload(ItemPtr i_entry);
    // Removes the emptied folders of the entry below the tree of partial files, never that tree's own folder.
    void RemoveDownloadDownloadingFolderIfAppropriate(ItemPtr i_entry);

    // --- Uploads ---

    void SetUploadEntryStatus(ItemPtr i_entry, const std::string& i_status);
    // Renumbers all upload entries by `effective_upload_order`; see transfers/upload_order.h for the order.
    void DetermineUploadsEffectiveOrder();
    bool UploadEntrySortCompare(ItemPtr i_a, ItemPtr i_b);
    int GetUserGroupDownloadPriority(const std::string& i_user);
    // Starts the first queued entry of an online user if no upload is under way: one upload at a time in all.
    void StartNewUploads();
    bool IsFreeToUpload() override;
    int QueuedUploadCount() override;
    // KiB per second; 0 means no limit.
    void SetUploadSpeedLimit(int i_limit);
    void EnableUploadSpeedLimit(bool i_enable);
    void DetermineUploadSpeedLimit();
    // The limit in effect, KiB per second, 0 for none. The one operation that any thread may call.
    int GetUploadSpeed();
    void UnshareUser(const std::string& i_user);
    void ReshareUser(const std::string& i_user);
    // Ends the transfer if one runs and removes the entry. Sends nothing and starts no other upload.
    void RemoveUpload(ItemPtr i_entry);

Q_SIGNALS:
    void TransfersLoaded();
    void DownloadProgressed(ItemPtr i_entry);
    void UploadProgressed(ItemPtr i_entry);

public Q_SLOTS:
    // Peer messages about downloads.
    void OnUploadFailedNotification(const std::string& i_user, const std::string& i_path);
    void OnUploadDeniedNotification(const std::string& i_user, const std::string& i_path, const std::string& i_reason);
    void OnDownloadPlaceInLine(const std::string& i_user, const std::string& i_path, int i_place);

    // Peer messages about uploads.
    void OnQueueUploadRequested(const std::string& i_user, const std::string& i_path);

    // The negotiation of a file connection. A socket handed over here belongs to this manager.
    void OnFileTransferRequest(const std::string& i_user, int i_direction, unsigned int i_token,
                               const std::string& i_path, qint64 i_size);
    void OnFileTransferResponse(const std::string& i_user, unsigned int i_token, bool i_accepted, bool i_hasSize,
                                qint64 i_size, const std::string& i_reason);
    void OnFileConnection(const std::string& i_user, QTcpSocket* ip_socket, unsigned int i_token);
    void OnFileConnectionAccepted(const std::string& i_user, QTcpSocket* ip_socket);

    // Notices of the workers; the sender is the thread. Without an entry of that thread they do nothing.
    void OnDownloadComplete();
    void OnDownloadError();
    void OnDownloadProgress(qint64 i_position, int i_bytesPerSecond);
    void OnUploadComplete();
    void OnUploadError();
    void OnUploadProgress(qint64 i_position, int i_bytesPerSecond);

    // Timers.
    void EveryHalfMinute();
    void PeriodicCheck();

private:
    void ConnectPeerMessenger();
    void SetDefaults();
    // Frees the heap cell, a T, whose address the item holds.
    template <class T>
    void OnCellRemoved(Item* ip_cell);

    // downloads.cpp
    void OnUserOnline(Item* ip_user);
    Item* FindDownloadByPath(const std::string& i_user, const std::string& i_path);
    void RefreshPlacesInLine();

    // uploads.cpp
    void QueueNewUpload(ItemPtr i_user, ItemPtr i_file, const std::string& i_path);
    void ScheduleNewUploads();
    void AbortStalledUploads();

    // file_connections.cpp
    void OpenUpload(ItemPtr i_entry);
    Item* DownloadForConnection(const std::string& i_user, unsigned int i_token);
    void StartDownload(ItemPtr i_entry, QTcpSocket* ip_socket, std::unique_ptr<QFile> ip_file);

    // Requests come in bursts, and ordering the queue costs a walk over all of it: entries are queued at once, and put
    // in order and started when the event loop comes round, or earlier when a slot falls free.
    bool m_uploadOrderIsStale = false;
    bool m_uploadsAreScheduled = false;

    GroupPriorities m_groupPriorities;

    int m_uploadSpeedLimit = 0; // KiB per second, 0 for none; guarded by m_uploadSpeedMutex
    QMutex m_uploadSpeedMutex;
};

// Set by the constructor, null again after the destructor.
extern TransferQueueManager* transferQueueManager;
