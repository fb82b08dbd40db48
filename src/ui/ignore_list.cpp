#include "ui/ignore_list.h"

#include "app/settings.h"
#include "store/data.h"

#include <algorithm>

namespace {

constexpr std::string_view c_prefix = "ignored_user/";

std::string Key(std::string_view i_user) {
    return std::string(c_prefix) + std::string(i_user);
}

} // namespace

bool IsIgnored(std::string_view i_user) {
    return IsSettingYes(Key(i_user));
}

// What is not ignored leaves nothing behind: names come from strangers and would heap up in the store file.
void SetIgnored(std::string_view i_user, bool i_isIgnored) {
    if (i_isIgnored) {
        SetSetting(Key(i_user), "yes");
    } else if (const ItemPtr l_setting = d.GetType("global")->HasItem(Key(i_user))) {
        l_setting.Remove();
    }
}

std::vector<std::string> IgnoredUsers() {
    std::vector<std::string> l_users;
    for (const Item* lp_setting : g("global")) {
        const std::string_view l_key = lp_setting->AsView();
        if (l_key.starts_with(c_prefix) && IsIgnored(l_key.substr(c_prefix.size()))) {
            l_users.emplace_back(l_key.substr(c_prefix.size()));
        }
    }
    std::sort(l_users.begin(), l_users.end());
    return l_users;
}
