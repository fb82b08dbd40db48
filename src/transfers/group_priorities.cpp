#include "transfers/group_priorities.h"

#include "app/settings.h"

#include <string>

namespace {

std::string SettingOf(const Item* ip_group) {
    return "group_priority/" + ip_group->AsString();
}

} // namespace

GroupPriorities::GroupPriorities() {
    Type* const lp_group = d.GetType("user_list_group");
    Type* const lp_priority = d.GetType("group_download_priority");
    d.AddConnectionEventHandler(lp_group, lp_priority, MakeHandler(this, &GroupPriorities::OnPrioritySet));
    d.AddDisconnectionEventHandler(lp_group, lp_priority, MakeHandler(this, &GroupPriorities::OnPriorityGone));
    dataSaver->AddDataLoadedHandler(this);
}

// Of a damaged file or one edited by hand, what is no priority counts as none.
void GroupPriorities::DataLoaded() {
    for (Item* lp_group : g("user_list_group")) {
        const long long l_priority = SettingNumber(SettingOf(lp_group)).value_or(0);
        if (l_priority > 0) {
            lp_group->Connect(d.GetType("group_download_priority")->GetItem(l_priority));
        }
    }
}

void GroupPriorities::OnPrioritySet(ConnectionInfo& i_info) {
    SetSetting(SettingOf(i_info.m_itemFrom), i_info.m_itemTo->AsView());
}

void GroupPriorities::OnPriorityGone(ConnectionInfo& i_info) {
    if (const ItemPtr l_setting = d.GetType("global")->HasItem(SettingOf(i_info.m_itemFrom))) {
        l_setting.Remove();
    }
}
