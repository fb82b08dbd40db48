#include "dump.h"

#include "store/data.h"

#include <absl/strings/escaping.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// One line whatever the value holds: line ends, other control bytes and backslashes are escaped, UTF-8 is not.
std::string OnOneLine(std::string_view i_value) {
    return absl::Utf8SafeCEscape(absl::string_view(i_value.data(), i_value.size()));
}

// The item's own line, then its connections as Type=value, sorted. An item without a value is told by these alone.
Lines Describe(const Item& i_item) {
    std::map<Type*, ItemSet> l_connected;
    i_item.GetConnectedItems(l_connected);
    Lines l_lines;
    for (const auto& [lp_type, l_items] : l_connected) {
        for (const Item* lp_item : l_items)
            l_lines.push_back("    " + lp_type->GetName() +
                              (lp_type->IsNull() ? "" : "=" + OnOneLine(lp_item->AsView())));
    }
    std::sort(l_lines.begin(), l_lines.end());
    l_lines.insert(l_lines.begin(), i_item.GetType()->IsNull() ? "  -" : "  \"" + OnOneLine(i_item.AsView()) + "\"");
    return l_lines;
}

} // namespace

void Dump(const Data& i_data, std::ostream& o_text) {
    std::map<std::string, Type*> l_types;
    i_data.GetTypes(l_types);
    for (const auto& [l_name, lp_type] : l_types) {
        std::vector<Lines> l_items;
        for (const Item* lp_item : lp_type->GetItems())
            l_items.push_back(Describe(*lp_item));
        if (l_items.empty())
            continue;
        std::sort(l_items.begin(), l_items.end());
        o_text << l_name << '\n';
        for (const Lines& l_lines : l_items) {
            for (const std::string& l_line : l_lines)
                o_text << l_line << '\n';
        }
    }
}
