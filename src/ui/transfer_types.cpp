#include "ui/transfer_types.h"

#include <QTreeWidgetItem>

#include <algorithm>
#include <limits>

const TransferTypes c_downloadTypes{
    .entry = "download_entry",
    .status = "download_entry_status",
    .active = "downloading",
    .userNode = "download_list_user_node",
    .folderNode = "download_list_folder_node",
    .fileNode = "download_list_node",
    .file = nullptr,
    .fileName = "file_name",
    .folder = "remote_folder",
    .fileSize = "file_size",
    .position = "write_position",
    .followsUsers = true,
};

const TransferTypes c_uploadTypes{
    .entry = "upload_entry",
    .status = "upload_entry_status",
    .active = "uploading",
    .userNode = "upload_list_user_node",
    .folderNode = "upload_list_folder_node",
    .fileNode = "upload_list_node",
    .file = "shared_file",
    .fileName = "shared_file_name",
    .folder = "shared_file_folder",
    .fileSize = "shared_file_size",
    .position = "read_position",
    .followsUsers = false,
};

namespace {

ItemPtr FileOf(const TransferTypes& i_types, ItemPtr i_entry) {
    return i_types.file ? i_entry[i_types.file] : i_entry;
}

ItemPtr NodeOf(const char* ip_type, const QTreeWidgetItem* ip_row) {
    return d.GetType(ip_type)->HasItem(ip_row);
}

} // namespace

void CreateTransferNodeTypes(const TransferTypes& i_types) {
    Type* const lp_user = d.NewType(i_types.userNode, true, false, true);
    Type* const lp_folder = d.NewType(i_types.folderNode, true, false, true);
    Type* const lp_file = d.NewType(i_types.fileNode, true, false, true);
    lp_user->RelateToType(d.GetType("user"), One, One, false);
    lp_folder->RelateToType(lp_user, Many, One, false);
    lp_folder->RelateToType(d.GetType(i_types.folder), Many, One, false);
    lp_folder->RelateToType(lp_file, One, Many, false);
    lp_file->RelateToType(d.GetType(i_types.entry), One, One, false);
}

ItemPtr TransferFileName(const TransferTypes& i_types, ItemPtr i_entry) {
    return FileOf(i_types, i_entry)[i_types.fileName];
}

ItemPtr TransferFolder(const TransferTypes& i_types, ItemPtr i_entry) {
    return FileOf(i_types, i_entry)[i_types.folder];
}

std::string_view TransferStatus(const TransferTypes& i_types, ItemPtr i_entry) {
    return i_entry[i_types.status].AsView();
}

long long TransferSize(const TransferTypes& i_types, ItemPtr i_entry) {
    return std::max(0LL, FileOf(i_types, i_entry)[i_types.fileSize].ToInt64().value_or(0));
}

long long TransferPosition(const TransferTypes& i_types, ItemPtr i_entry) {
    const ItemPtr l_cell = i_entry[i_types.position];
    return l_cell ? std::max(0LL, *l_cell.AsPointer<long long>()) : 0;
}

int TransferRate(ItemPtr i_entry) {
    const ItemPtr l_cell = i_entry["bytes_per_second"];
    return l_cell ? *l_cell.AsPointer<int>() : 0;
}

ItemPtr RowEntry(const TransferTypes& i_types, const QTreeWidgetItem* ip_row) {
    return NodeOf(i_types.fileNode, ip_row)[i_types.entry];
}

ItemSet EntriesBelow(const TransferTypes& i_types, const QTreeWidgetItem* ip_row) {
    if (const ItemPtr l_user = NodeOf(i_types.userNode, ip_row)) {
        return l_user.GetItems(i_types.folderNode).GetItems(i_types.fileNode).GetItems(i_types.entry);
    }
    if (const ItemPtr l_folder = NodeOf(i_types.folderNode, ip_row)) {
        return l_folder.GetItems(i_types.fileNode).GetItems(i_types.entry);
    }
    return NodeOf(i_types.fileNode, ip_row).GetItems(i_types.entry);
}

const QTreeWidgetItem* UserRow(const QTreeWidgetItem* ip_row) {
    while (ip_row && ip_row->parent()) {
        ip_row = ip_row->parent();
    }
    return ip_row;
}

ItemPtr RowUser(const TransferTypes& i_types, const QTreeWidgetItem* ip_row) {
    return NodeOf(i_types.userNode, UserRow(ip_row))["user"];
}

ProgressStats GetProgressStats(const TransferTypes& i_types, const ItemSet& i_entries) {
    ProgressStats l_stats;
    for (const ItemPtr l_entry : i_entries) {
        const std::string_view l_status = TransferStatus(i_types, l_entry);
        const bool l_isComplete = l_status == "complete";
        if (!l_isComplete && l_status != "aborted" && l_status != "queued" && l_status != i_types.active) {
            continue;
        }
        const long long l_size = TransferSize(i_types, l_entry);
        const long long l_done = l_isComplete ? l_size : TransferPosition(i_types, l_entry);
        l_stats.done = AddBytes(l_stats.done, l_done);
        l_stats.remaining = AddBytes(l_stats.remaining, std::max(0LL, l_size - l_done));
        l_stats.total = AddBytes(l_stats.total, l_size);
    }
    return l_stats;
}

long long AddBytes(long long i_one, long long i_other) {
    constexpr long long l_most = std::numeric_limits<long long>::max();
    return i_one > l_most - i_other ? l_most : i_one + i_other;
}
