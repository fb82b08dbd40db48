#include "ui/action_set_schema.h"

#include "store/data.h"

namespace {

struct TypeRow {
    const char* name;
    bool isRoot;
    bool isNull;
};

struct RelationRow {
    const char* type;
    const char* other;
    OneOrMany from;
    OneOrMany to;
};

constexpr TypeRow c_types[] = {
    {"toolbar_action_set", true, false},     {"toolbar_action", true, true},
    {"toolbar_action_id", true, false},      {"toolbar_action_order", false, false},
    {"toolbar_action_icon", false, false},   {"toolbar_action_text", false, false},
    {"needs_list_selection", false, true},   {"toolbar_action_widget", true, false},
    {"toolbar_action_object", false, false}, {"action_key_value_pair", true, true},
    {"action_key_column_pair", true, true},  {"action_key", false, false},
    {"action_value", false, false},          {"action_column", false, false},
    {"active_action_key", true, false},      {"active_action_value", false, false},
    {"widget_action_text", false, false},
};

constexpr RelationRow c_relations[] = {
    {"toolbar_action_set", "toolbar_action", One, Many},
    {"toolbar_action", "toolbar_action_id", Many, One},
    {"toolbar_action", "toolbar_action_order", Many, One},
    {"toolbar_action", "toolbar_action_icon", Many, One},
    {"toolbar_action", "toolbar_action_text", Many, One},
    {"toolbar_action", "needs_list_selection", Many, One},
    {"toolbar_action_set", "toolbar_action_widget", One, Many},
    {"action_key_value_pair", "toolbar_action_widget", Many, One},
    {"action_key_value_pair", "action_key", Many, One},
    {"action_key_value_pair", "action_value", Many, One},
    {"action_key_column_pair", "toolbar_action_widget", Many, One},
    {"action_key_column_pair", "action_key", Many, One},
    {"action_key_column_pair", "action_column", Many, One},
    {"active_action_key", "active_action_value", Many, One},
    {"widget_action_text", "toolbar_action_widget", Many, Many},
    {"widget_action_text", "toolbar_action_id", Many, Many},
    {"toolbar_action", "toolbar_action_object", One, One},
};

} // namespace

void CreateActionSetTypes() {
    for (const TypeRow& l_row : c_types) {
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, true);
    }
    for (const RelationRow& l_row : c_relations) {
        d.GetType(l_row.type)->RelateToType(d.GetType(l_row.other), l_row.from, l_row.to, false);
    }
}
