#include "search/search_history.h"

#include "app/settings.h"
#include "store/data.h"

namespace {

constexpr char c_setting[] = "remember_searches";
constexpr char c_counter[] = "recent_search_counter";

} // namespace

bool AreSearchesRemembered() {
    return SettingText(c_setting) != "no";
}

void SetSearchesRemembered(bool i_areRemembered) {
    SetSetting(c_setting, i_areRemembered ? "yes" : "no");
    if (!i_areRemembered) {
        ForgetSearches();
    }
}

void RememberSearch(const std::string& i_text) {
    if (!AreSearchesRemembered() || i_text.find_first_not_of(' ') == std::string::npos) {
        return;
    }
    d.GetType("recent_search")
        ->GetItem(i_text)
        ->Connect(d.GetType("recent_search_order")->GetItem(TakeCounter(c_counter)));
    const ItemList l_searches = g("recent_search").SortNumericBy("recent_search_order", false);
    for (std::size_t l_place = c_rememberedSearches; l_place < l_searches.size(); ++l_place) {
        l_searches[l_place]->Remove();
    }
}

std::vector<std::string> RememberedSearches() {
    std::vector<std::string> l_texts;
    for (const Item* const lp_search : g("recent_search").SortNumericBy("recent_search_order", false)) {
        l_texts.push_back(lp_search->AsString());
    }
    return l_texts;
}

void ForgetSearches() {
    g("recent_search").Remove();
}
