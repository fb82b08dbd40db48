// The users whose lines and alerts are not shown. Kept as settings, one a user, so that it survives a restart; a change
// fires the events of "global" like that of any other setting.
#pragma once

#include <string>
#include <string_view>
#include <vector>

bool IsIgnored(std::string_view i_user);
void SetIgnored(std::string_view i_user, bool i_isIgnored);
std::vector<std::string> IgnoredUsers(); // in byte order
