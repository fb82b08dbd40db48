#include "ui/search_schema.h"

#include "store/data.h"

namespace {

struct TypeRow {
    const char* name;
    bool isRoot;
};

struct RelationRow {
    const char* type;
    OneOrMany from;
    const char* other;
    OneOrMany to;
    bool owns = false;
};

constexpr TypeRow c_types[] = {
    {"search_results_widget", true}, // a tab: its SearchResultsForm
    {"expand_folders", false},       // "yes" or "no"
    {"expand_users", false},
    {"search_results_user_node", false}, // a row
    {"search_results_folder_node", false},
    {"search_result_node", false},
    {"wish_list_node", true},
    {"wish_list_node_checkbox", true},
};

constexpr RelationRow c_relations[] = {
    {"search_results_widget", One, "search_request", Many},
    {"search_results_widget", One, "wish_list_item", One},
    {"search_results_widget", Many, "expand_folders", One},
    {"search_results_widget", Many, "expand_users", One},
    {"search_results_widget", One, "search_results_user_node", Many, true},
    {"search_results_user_node", Many, "user", One},
    {"search_results_user_node", One, "search_results_folder_node", Many, true},
    {"search_results_folder_node", Many, "search_result_file_folder", One},
    {"search_result_node", One, "search_result", One},
    {"search_result_node", Many, "search_results_folder_node", One},
    {"wish_list_item", One, "wish_list_node", One},
    {"wish_list_node", One, "wish_list_node_checkbox", One},
};

} // namespace

void CreateSearchFormTypes() {
    for (const TypeRow& l_row : c_types) {
        d.NewType(l_row.name, l_row.isRoot, false, true);
    }
    for (const RelationRow& l_row : c_relations) {
        d.GetType(l_row.type)->RelateToType(d.GetType(l_row.other), l_row.from, l_row.to, l_row.owns);
    }
}
