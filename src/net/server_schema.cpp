#include "net/server_schema.h"

#include "store/data.h"
#include "store/data_saver.h"

namespace {

struct TypeRow {
    const char* name;
    bool isRoot;
    bool isNull;
};

constexpr TypeRow types[] = {
    {"user", true, false},
    {"is_online", false, true},
    {"is_tracked", false, true},
    {"is_privileged", false, true},
    {"room", true, false},
    {"room_autojoin", false, true},
    {"user_count", false, false},
    {"in_room", false, true},
    {"room_owner", false, true},
    {"room_operator", false, true},
    {"average_download_speed", false, false},
    {"shared_files_count", false, false},
    {"country_code", false, false},
    {"in_user_list", false, true},
    {"user_list_group", true, false},
    {"group_download_priority", false, false},
    {"user_address_request", false, true},
};

struct RelationRow {
    const char* type;
    const char* other;
    OneOrMany from;
    OneOrMany to;
};

constexpr RelationRow relations[] = {
    {"user", "is_online", Many, One},
    {"user", "is_tracked", Many, One},
    {"user", "is_privileged", Many, One},
    {"user", "average_download_speed", Many, One},
    {"user", "shared_files_count", Many, One},
    {"user", "country_code", Many, One},
    {"user", "in_user_list", One, One},
    {"in_user_list", "user_list_group", Many, Many},
    {"user_list_group", "group_download_priority", Many, One},
    {"room", "user", Many, Many},
    {"room", "user_count", Many, One},
    {"room", "in_room", Many, One},
    {"room", "room_autojoin", Many, One},
    {"room", "room_owner", One, One},
    {"room", "room_operator", One, Many},
    {"room_owner", "user", Many, One},
    {"room_operator", "user", Many, One},
    {"user_address_request", "user", One, Many},
};

} // namespace

void CreateServerTypes() {
    for (const TypeRow& l_row : types)
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, true);
    for (const RelationRow& l_row : relations)
        d.GetType(l_row.type)->RelateToType(d.GetType(l_row.other), l_row.from, l_row.to, false);

    for (const char* l_saved : {"room_autojoin", "in_user_list", "user_list_group"})
        dataSaver->AddSavedType(l_saved);
    dataSaver->AddSavedByConnectionType("room", "room_autojoin");
    dataSaver->AddSavedByConnectionType("user", "in_user_list");
}
