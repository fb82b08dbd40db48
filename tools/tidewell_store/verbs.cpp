#include "verbs.h"

#include "dump.h"

#include "app/settings.h"
#include "app/text.h"
#include "store/data.h"

#include <absl/strings/numbers.h>

#include <filesystem>
#include <iostream>
#include <limits>

namespace {

constexpr std::size_t c_anyNumber = std::numeric_limits<std::size_t>::max();

std::string Quoted(const std::string& i_text) {
    return "\"" + i_text + "\"";
}

Complaint RunDump(const Arguments&) {
    Dump(d, std::cout);
    return std::nullopt;
}

Complaint RunGet(const Arguments& i_arguments) {
    if (!HasSetting(i_arguments[0]))
        return "The setting " + Quoted(i_arguments[0]) + " has no value.";
    std::cout << SettingText(i_arguments[0]) << '\n';
    return std::nullopt;
}

Complaint RunSet(const Arguments& i_arguments) {
    if (i_arguments[0].empty())
        return "A setting needs a name.";
    if (i_arguments.size() == 2)
        SetSetting(i_arguments[0], i_arguments[1]);
    else if (const ItemPtr l_setting = d.GetType("global")->HasItem(i_arguments[0]))
        l_setting.Disconnect("global_value");
    return std::nullopt;
}

// Absolute, so that it means the same wherever the client is started, and without "." and "..", as a chooser gives it.
std::string FolderPath(const std::string& i_path) {
    std::error_code l_error; // of a current folder that is gone
    const std::filesystem::path l_absolute = std::filesystem::absolute(i_path, l_error);
    std::string l_path = (l_error ? std::filesystem::path(i_path) : l_absolute).lexically_normal().native();
    if (l_path.size() > 1 && l_path.ends_with('/'))
        l_path.pop_back();
    return l_path;
}

Complaint RunShare(const Arguments& i_arguments) {
    const std::string& l_form = i_arguments[1];
    if (i_arguments[0].empty())
        return "A shared folder needs a path.";
    if (l_form != "public" && l_form != "userlist" && l_form != "nobody" && l_form != "group")
        return "A folder is shared with public, userlist, nobody or group, not with " + Quoted(l_form) + ".";
    if ((l_form == "group") != (i_arguments.size() > 2))
        return l_form == "group" ? "Sharing with groups needs the name of one at least."
                                 : "Only the form group takes names behind it.";

    Item* const lp_folder = d.GetType("shared_folder")->NewItem(FolderPath(i_arguments[0]));
    for (const char* l_right : {"shared_public", "shared_userlist", "user_list_group"})
        lp_folder->Disconnect(l_right);
    if (l_form == "public" || l_form == "userlist")
        lp_folder->NewItem("shared_" + l_form);
    for (std::size_t l_name = 2; l_name < i_arguments.size(); ++l_name)
        lp_folder->Connect(d.GetType("user_list_group")->GetItem(i_arguments[l_name]));
    return std::nullopt;
}

Complaint RunUnshare(const Arguments& i_arguments) {
    Type* const lp_folders = d.GetType("shared_folder");
    ItemPtr l_folder = lp_folders->HasItem(i_arguments[0]); // also one that an older client wrote in another way
    if (!l_folder && !i_arguments[0].empty())
        l_folder = lp_folders->HasItem(FolderPath(i_arguments[0]));
    if (!l_folder)
        return "The folder " + Quoted(i_arguments[0]) + " is not shared.";
    l_folder.Remove();
    return std::nullopt;
}

struct RemotePath {
    std::string folder;
    std::string name;
};

// At the last separator of either kind; a path without one lies in no folder.
RemotePath SplitRemotePath(const std::string& i_path) {
    const std::size_t l_separator = i_path.find_last_of("/\\");
    if (l_separator == std::string::npos)
        return {"", i_path};
    return {i_path.substr(0, l_separator), i_path.substr(l_separator + 1)};
}

Complaint RunWant(const Arguments& i_arguments) {
    const RemotePath l_path = SplitRemotePath(i_arguments[1]);
    long long l_size = 0;
    int l_level = 0;
    if (i_arguments[0].empty())
        return "A download needs the name of a user.";
    if (l_path.name.empty())
        return "The path " + Quoted(i_arguments[1]) + " names no file.";
    if (!absl::SimpleAtoi(i_arguments[2], &l_size) || l_size < 0)
        return "The size " + Quoted(i_arguments[2]) + " is not a number of bytes.";
    if (i_arguments.size() == 4 && (!absl::SimpleAtoi(i_arguments[3], &l_level) || l_level < 0))
        return "The level " + Quoted(i_arguments[3]) + " is not a number of folders.";

    Item* const lp_user = d.GetType("user")->GetItem(i_arguments[0]);
    Item* const lp_name = d.GetType("file_name")->GetItem(l_path.name);
    Item* const lp_folder = d.GetType("remote_folder")->GetItem(l_path.folder);
    if (!d.GetItemSubset({lp_user, lp_name, lp_folder}, "download_entry").empty())
        return std::nullopt; // a file of a user is queued once
    const ItemPtr l_entry = d.GetType("download_entry")->NewItem();
    for (Item* lp_attribute : {lp_user, lp_name, lp_folder})
        l_entry.Connect(lp_attribute);
    l_entry.Connect(d.GetType("file_size")->GetItem(l_size));
    l_entry.Connect(d.GetType("subfolder_save_level")->GetItem(l_level));
    l_entry.Connect(d.GetType("download_order")->GetItem(TakeCounter("transfer_order_counter")));
    l_entry.Connect(d.GetType("download_entry_status")->GetItem("queued"));
    return std::nullopt;
}

Complaint RunFriend(const Arguments& i_arguments) {
    if (i_arguments[0].empty())
        return "A user list entry needs the name of a user.";
    const ItemPtr l_listed = d.GetType("user")->GetItem(i_arguments[0])->NewItem("in_user_list");
    for (std::size_t l_group = 1; l_group < i_arguments.size(); ++l_group)
        l_listed.Connect(d.GetType("user_list_group")->GetItem(i_arguments[l_group]));
    return std::nullopt;
}

Complaint RunAutojoin(const Arguments& i_arguments) {
    if (i_arguments[0].empty())
        return "A room needs a name.";
    const ItemPtr l_room = d.GetType("room")->GetItem(i_arguments[0]);
    if (!l_room.IsConnected("room_autojoin"))
        l_room.NewItem("room_autojoin");
    return std::nullopt;
}

} // namespace

const std::vector<Verb>& Verbs() {
    static const std::vector<Verb> l_verbs = {
        {"dump", "", "print everything that the file holds, passwords too", 0, 0, false, RunDump},
        {"get", "KEY", "print the value of a setting", 1, 1, false, RunGet},
        {"set", "KEY [VALUE]", "give a setting a value, or take its value away", 1, 2, true, RunSet},
        {"share", "FOLDER public|userlist|nobody|group NAME...", "share a folder, with these rights and no others", 2,
         c_anyNumber, true, RunShare},
        {"unshare", "FOLDER", "share a folder no longer", 1, 1, true, RunUnshare},
        {"want", "USER PATH SIZE [LEVEL]", "queue a download; LEVEL folders above the file's own are kept", 3, 4, true,
         RunWant},
        {"friend", "USER [GROUP...]", "put a user into the user list and into these groups", 1, c_anyNumber, true,
         RunFriend},
        {"autojoin", "ROOM", "enter a room at every login", 1, 1, true, RunAutojoin},
    };
    return l_verbs;
}
