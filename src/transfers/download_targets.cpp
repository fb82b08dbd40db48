// Where the files of download entries lie on the own disk.
#include "transfers/transfer_queue_manager.h"

#include "app/text.h"
#include "transfers/download_folder.h"
#include "transfers/local_paths.h"

#include <QDir>
#include <QFileInfo>

QString TransferQueueManager::GetDownloadTargetFolder(ItemPtr i_entry, bool i_complete) {
    return LocalFolder(DownloadFolder(), i_complete, i_entry["remote_folder"].AsView(),
                       i_entry["subfolder_save_level"].ToInt64().value_or(0));
}

QString TransferQueueManager::GetDownloadTargetPath(ItemPtr i_entry, bool i_complete) {
    return GetDownloadTargetFolder(i_entry, i_complete) + u'\\' + CleanComponent(i_entry["file_name"].AsView());
}

bool TransferQueueManager::DoesDownloadItemCompleteFilenameExist(ItemPtr i_entry) {
    return QFileInfo::exists(ToFileSystemForm(GetDownloadTargetPath(i_entry, true)));
}

void TransferQueueManager::RemoveDownloadDownloadingFolderIfAppropriate(ItemPtr i_entry) {
    const ItemPtr l_remoteFolder = i_entry["remote_folder"];
    for (Item* lp_neighbour : l_remoteFolder.GetItems("download_entry")) {
        if (lp_neighbour->HasItem("download_entry_status").AsView() != "complete") {
            return;
        }
    }
    const QString l_top = ToFileSystemForm(LocalFolder(DownloadFolder(), false, {}, 0));
    QString l_folder = ToFileSystemForm(GetDownloadTargetFolder(i_entry, false));
    if (!IsInsideFolder(DownloadFolder(), l_folder)) {
        return;
    }
    while (l_folder.size() > l_top.size()) {
        QDir().rmdir(l_folder);
        l_folder = l_folder.section(u'/', 0, -2);
    }
}
