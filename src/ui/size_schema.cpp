#include "ui/size_schema.h"

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

constexpr TypeRow c_savedTypes[] = {
    {"sizer_window", true, false},
    {"sizer_x", false, false},
    {"sizer_y", false, false},
    {"sizer_width", false, false},
    {"sizer_height", false, false},
    {"sizer_tree", true, false},
    {"sizer_tree_column", false, true},
    {"sizer_tree_column_number", false, false},
    {"sizer_splitter", true, false},
    {"sizer_splitter_index", false, true},
    {"sizer_splitter_index_number", false, false},
    {"sizer_size", false, false},
};

constexpr const char* c_widgetTypes[] = {"sizer_window_widget", "sizer_tree_widget", "sizer_splitter_widget"};

constexpr RelationRow c_relations[] = {
    {"sizer_window", One, "sizer_window_widget", One},
    {"sizer_window", Many, "sizer_x", One},
    {"sizer_window", Many, "sizer_y", One},
    {"sizer_window", Many, "sizer_width", One},
    {"sizer_window", Many, "sizer_height", One},
    {"sizer_tree", One, "sizer_tree_widget", Many},
    {"sizer_tree_column", Many, "sizer_tree", One},
    {"sizer_tree_column", Many, "sizer_tree_column_number", One},
    {"sizer_tree_column", Many, "sizer_size", One},
    {"sizer_splitter", One, "sizer_splitter_widget", Many},
    {"sizer_splitter_index", Many, "sizer_splitter", One},
    {"sizer_splitter_index", Many, "sizer_splitter_index_number", One},
    {"sizer_splitter_index", Many, "sizer_size", One},
};

} // namespace

void CreateSizeTypes() {
    for (const TypeRow& l_row : c_savedTypes) {
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, true);
        dataSaver->AddSavedType(l_row.name);
    }
    for (const char* lp_type : c_widgetTypes) {
        d.NewType(lp_type, true, false, true);
    }
    for (const RelationRow& l_row : c_relations) {
        d.GetType(l_row.type)->RelateToType(d.GetType(l_row.other), l_row.from, l_row.to, false);
    }
}
