// What the workers report: figures into the cells, and the end of a transfer into its entry.
#include "transfers/transfer_queue_manager.h"

#include "net/server.h"
#include "transfers/download_folder.h"
#include "transfers/live_transfer.h"
#include "transfers/local_files.h"
#include "transfers/local_paths.h"
#include "transfers/transfer_log.h"
#include "transfers/transfer_thread.h"

#include <QDateTime>
#include <QDir>

namespace {

// The entry that this worker serves; null once the worker has been taken from it.
ItemPtr EntryOf(QObject* ip_sender, const char* ip_threadType, const char* ip_entryType) {
    return d.GetType(ip_threadType)->HasItem(qobject_cast<TransferThread*>(ip_sender))[ip_entryType];
}

void WriteFigures(ItemPtr i_entry, const char* ip_positionType, qint64 i_position, int i_bytesPerSecond) {
    WriteCell<long long>(i_entry, ip_positionType, i_position);
    WriteCell(i_entry, "bytes_per_second", i_bytesPerSecond);
    WriteCell(i_entry, "last_receipt_time", QDateTime::currentDateTime());
}

} // namespace

void TransferQueueManager::OnDownloadProgress(qint64 i_position, int i_bytesPerSecond) {
    if (const ItemPtr l_entry = EntryOf(sender(), "download_thread", "download_entry")) {
        WriteFigures(l_entry, "write_position", i_position, i_bytesPerSecond);
        Q_EMIT DownloadProgressed(l_entry);
    }
}

void TransferQueueManager::OnDownloadComplete() {
    const ItemPtr l_entry = EntryOf(sender(), "download_thread", "download_entry");
    if (!l_entry) {
        return;
    }
    qobject_cast<TransferThread*>(sender())->wait();
    const QString l_source = ToFileSystemForm(GetDownloadTargetPath(l_entry, false));
    const QString l_folder = ToFileSystemForm(GetDownloadTargetFolder(l_entry, true));
    // Where the name is taken the file stays where it is, complete all the same.
    if (IsInsideFolder(DownloadFolder(), l_folder) && QDir().mkpath(l_folder)) {
        static_cast<void>(RenameWithoutOverwriting(l_source, ToFileSystemForm(GetDownloadTargetPath(l_entry, true))));
    }
    SetDownloadEntryStatus(l_entry, "complete");
    RemoveDownloadDownloadingFolderIfAppropriate(l_entry);
}

void TransferQueueManager::OnDownloadError() {
    if (const ItemPtr l_entry = EntryOf(sender(), "download_thread", "download_entry")) {
        SetDownloadEntryStatus(l_entry, "aborted");
    }
}

void TransferQueueManager::OnUploadProgress(qint64 i_position, int i_bytesPerSecond) {
    if (const ItemPtr l_entry = EntryOf(sender(), "upload_thread", "upload_entry")) {
        WriteFigures(l_entry, "read_position", i_position, i_bytesPerSecond);
        Q_EMIT UploadProgressed(l_entry);
    }
}

void TransferQueueManager::OnUploadComplete() {
    const ItemPtr l_entry = EntryOf(sender(), "upload_thread", "upload_entry");
    if (!l_entry) {
        return;
    }
    const ItemPtr l_cell = l_entry["bytes_per_second"];
    const int l_rate = l_cell ? *l_cell.AsPointer<int>() : 0;
    LogTransfer(1, QStringLiteral("Recording upload speed of %1").arg(l_rate), ItemPtr());
    gp_server->SendUploadSpeed(l_rate);
    SetUploadEntryStatus(l_entry, "complete");
    StartNewUploads();
}

void TransferQueueManager::OnUploadError() {
    if (const ItemPtr l_entry = EntryOf(sender(), "upload_thread", "upload_entry")) {
        SetUploadEntryStatus(l_entry, "aborted");
        StartNewUploads();
    }
}
