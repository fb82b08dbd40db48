#include "sharing/shares_schema.h"

#include "store/data.h"
#include "store/data_saver.h"

namespace {

struct TypeRow {
    const char* name;
    bool isRoot;
    bool isNull;
};

struct RelationRow {
    const char* type;
    OneOrMany from;
    const char* other;
    OneOrMany to;
};

constexpr TypeRow c_types[] = {
    {"shared_folder", true, false}, // a root chosen by the user; the value is its path
    {"shared_file", false, true},
    {"shared_file_name", false, false},           // exact case, no folder
    {"shared_file_lowercase_name", false, false}, // the index that answers a peer's path, with the folder's below
    {"shared_file_folder", false, false},         // absolute path of one directory
    {"shared_file_folder_lowercase_name", false, false},
    {"shared_file_size", false, false}, // bytes
    {"shared_public", false, true},     // on a root: open to everyone
    {"shared_userlist", false, true},   // on a root: open to all users of the user list
    {"is_scanned", false, true},        // on a file: its audio attributes have been read

    // The share lists that other users sent.
    {"user_share", true, true},
    {"user_share_loaded", false, true},
    {"user_share_folder", false, true},
    {"user_share_folder_parent", false, true},
    {"user_share_folder_child", false, true},
    {"user_share_folder_name", false, false},
    {"user_share_file", false, true},
    {"user_share_file_name", false, false},
    {"user_share_file_size", false, false},

    {"search_token", false, false}, // a word of the paths of shared files
    {"unshared", false, true},      // on a user: nothing of ours is visible to that user
};

constexpr RelationRow c_relations[] = {
    {"shared_folder", Many, "shared_file_folder", Many},
    {"shared_file", Many, "shared_file_folder", One},
    {"shared_file_folder", Many, "shared_file_folder_lowercase_name", One},
    {"shared_file", Many, "shared_file_name", One},
    {"shared_file_name", Many, "shared_file_lowercase_name", One},
    {"shared_file", Many, "shared_file_size", One},
    {"shared_folder", Many, "shared_public", One},
    {"shared_folder", Many, "shared_userlist", One},
    {"shared_folder", Many, "user_list_group", Many},
    {"user_share", One, "user", One},
    {"user_share", Many, "user_share_loaded", One},
    {"user_share", One, "user_share_folder", Many},
    {"user_share_folder", Many, "user_share_folder_name", One},
    {"user_share_folder", One, "user_share_file", Many},
    {"user_share_folder", One, "user_share_folder_parent", One},
    {"user_share_folder", One, "user_share_folder_child", Many},
    {"user_share_folder_parent", One, "user_share_folder_child", One},
    {"user_share_file", Many, "user_share_file_name", One},
    {"user_share_file", Many, "user_share_file_size", One},
    {"search_token", Many, "shared_file", Many},
    {"shared_file", Many, "mpeg_version", One},
    {"shared_file", Many, "channel_mode", One},
    {"shared_file", Many, "audio_frequency", One},
    {"shared_file", Many, "bitrate_mode", One},
    {"shared_file", Many, "bitrate", One},
    {"shared_file", Many, "is_scanned", One},
    {"user_share_file", Many, "bitrate_mode", One},
    {"user_share_file", Many, "bitrate", One},
    {"user_share_file", Many, "length_seconds", One},
    {"user", Many, "unshared", One},
};

// What outlives the process: the roots with their rights, the users who see nothing, and each file whose audio
// attributes were read, with its place and those attributes. All other files are found again by the walk.
void RegisterSavedTypes() {
    for (const char* l_type : {"shared_folder", "is_scanned", "unshared"})
        dataSaver->AddSavedType(l_type);
    dataSaver->AddSavedByConnectionType("shared_public", "shared_folder");
    dataSaver->AddSavedByConnectionType("shared_userlist", "shared_folder");
    dataSaver->AddSavedByConnectionType("shared_file", "is_scanned");
    for (const char* l_type : {"shared_file_folder", "shared_file_name", "shared_file_size", "mpeg_version",
                               "channel_mode", "audio_frequency", "bitrate_mode", "bitrate"})
        dataSaver->AddSavedByConnectionType(l_type, "shared_file");
    dataSaver->AddSavedByConnectionType("user", "unshared");
}

} // namespace

void CreateSharesTypes() {
    for (const TypeRow& l_row : c_types)
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, true);
    for (const RelationRow& l_row : c_relations)
        d.GetType(l_row.type)->RelateToType(d.GetType(l_row.other), l_row.from, l_row.to, false);
    RegisterSavedTypes();
}
