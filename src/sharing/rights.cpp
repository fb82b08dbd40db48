// Who may have which shared file, and which file a peer's path means.
#include "sharing/shared_folders_manager.h"

#include "app/text.h"

ItemPtr SharedFoldersManager::GetSharedFileItem(const std::string& i_path) {
    const std::string l_path = GetAbsoluteFileName(i_path);
    const ItemPtr l_folder = d.GetType("shared_file_folder_lowercase_name")->HasItem(GetFolder(l_path));
    const ItemPtr l_name = d.GetType("shared_file_lowercase_name")->HasItem(GetFileName(l_path));
    const ItemSet l_ofFolder = l_folder.GetItems("shared_file_folder").GetItems("shared_file");
    const ItemSet l_ofName = l_name.GetItems("shared_file_name").GetItems("shared_file");
    const ItemSet l_files = l_ofFolder.Common(l_ofName);
    return l_files.empty() ? ItemPtr() : ItemPtr(*l_files.begin());
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
