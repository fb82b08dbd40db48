#include "ui/share_downloads.h"

#include "transfers/transfer_queue_manager.h"

#include <absl/container/flat_hash_set.h>

namespace {

void AddFile(const std::string& i_user, ItemPtr i_file, ItemPtr i_folder, int i_level) {
    transferQueueManager->AddDownload(i_user, i_file["user_share_file_name"].AsString(),
                                      i_folder["user_share_folder_name"].AsString(),
                                      i_file["user_share_file_size"].ToInt64().value_or(0), i_level);
}

} // namespace

void DownloadShareFile(const std::string& i_user, ItemPtr i_file) {
    if (i_file) {
        AddFile(i_user, i_file, i_file["user_share_folder"], 0);
    }
}

void DownloadShareFolders(const std::string& i_user, const std::vector<ItemPtr>& i_folders) {
    absl::flat_hash_set<Item*> l_met;
    for (const ItemPtr l_chosen : i_folders) {
        std::vector<Item*> l_waiting;
        const auto l_enter = [&](ItemPtr i_folder) {
            if (i_folder && l_met.insert(i_folder.Get()).second) {
                l_waiting.push_back(i_folder.Get());
            }
        };
        l_enter(l_chosen);
        while (!l_waiting.empty()) {
            const ItemPtr l_folder(l_waiting.back());
            l_waiting.pop_back();
            for (Item* const lp_file : l_folder.GetItems("user_share_file")) {
                AddFile(i_user, lp_file, l_folder, l_folder == l_chosen ? 0 : 1);
            }
            for (const ItemPtr l_link : l_folder.GetItems("user_share_folder_child")) {
                l_enter(l_link["user_share_folder_parent"]["user_share_folder"]);
            }
        }
    }
}
