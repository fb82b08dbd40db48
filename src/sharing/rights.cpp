// Who may have which shared file, and which file a peer's path means.
#include "sharing/shared_folders_manager.h"

#include "app/text.h"

ItemPtr SharedFoldersManager::GetSharedFileItem(const std::string& i_path) {
    const std::string l_path = GetAbsoluteFileName(i_path);
    const ItemPtr l_folder = d.GetType("shared_file_folder_lowercase_name")->HasItem(GetFolder(l_path));
    const ItemPtr l_name = d.GetType("shared_file_lowercase_name")->HasItem(GetFileName(l_path));
    // Both ends may have a hundred thousand files; asked together, only the smaller end is looked through.
    const ItemSet l_names = l_name.GetItems("shared_file_name");
    for (Item* lp_folder : l_folder.GetItems("shared_file_folder")) {
        for (Item* lp_name : l_names) {
            const ItemSet l_files = d.GetItems(lp_folder, lp_name, "shared_file");
            if (!l_files.empty())
                return *l_files.begin();
        }
    }
    return ItemPtr();
}

bool SharedFoldersManager::IsFileSharedWithUser(ItemPtr i_file, const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    if (l_user.IsConnected("unshared"))
        return false;
    const ItemSet l_roots = i_file.HasItem("shared_file_folder").GetItems("shared_folder");
    if (!l_roots.GetItems("shared_public").empty())
        return true;
    const ItemPtr l_listed = l_user.HasItem("in_user_list");
    if (!l_listed)
        return false;
    if (!l_roots.GetItems("shared_userlist").empty())
        return true;
    return !l_listed.GetItems("user_list_group").Common(l_roots.GetItems("user_list_group")).empty();
}

ItemSet SharedFoldersManager::GetUserSharedFolders(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->HasItem(i_user);
    if (l_user && l_user.IsConnected("unshared"))
        return ItemSet();
    const ItemSet l_all = g("shared_folder");
    ItemSet l_visible = l_all.Connected("shared_public");
    const ItemPtr l_listed = l_user.HasItem("in_user_list");
    if (!l_listed)
        return l_visible;
    l_visible.Add(l_all.Connected("shared_userlist"));
    l_visible.Add(l_listed.GetItems("user_list_group").GetItems("shared_folder"));
    return l_visible;
}
