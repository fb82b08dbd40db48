// Which names a user or a room may have.
#pragma once

#include <cstddef>
#include <string_view>

// UTF-8 without control, direction and line marks, without blanks at the ends, of 1 to i_limit bytes: what a person can
// read and tell from another name.
[[nodiscard]] bool IsPlainName(std::string_view i_name, std::size_t i_limit);
