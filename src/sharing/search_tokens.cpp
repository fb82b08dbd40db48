#include "sharing/search_tokens.h"

#include <absl/strings/ascii.h>

#include <algorithm>

namespace {

bool IsPathSeparator(unsigned char i_byte) {
    return i_byte == ' ' || i_byte == '/' || i_byte == '\\';
}

// Calls i_take with each of the longest runs of bytes that are no separator.
template <class Separator, class Take>
void ForEachRun(std::string_view i_text, Separator i_isSeparator, Take i_take) {
    const auto l_none = [&](char i_byte) { return !i_isSeparator(static_cast<unsigned char>(i_byte)); };
    const auto l_some = [&](char i_byte) { return i_isSeparator(static_cast<unsigned char>(i_byte)); };
    for (auto l_at = i_text.begin();;) {
        const auto l_begin = std::find_if(l_at, i_text.end(), l_none);
        if (l_begin == i_text.end())
            return;
        l_at = std::find_if(l_begin, i_text.end(), l_some);
        i_take(std::string_view(l_begin, l_at));
    }
}

} // namespace

bool IsSearchTokenSeparator(unsigned char i_byte) {
    return i_byte < 0x80 && !absl::ascii_isalnum(i_byte);
}

void SearchTokenCutter::Cut(std::string_view i_folder, std::string_view i_name,
                            absl::FunctionRef<void(std::string_view)> i_take) {
    m_text.assign(i_folder).append(1, '\\').append(i_name);
    absl::AsciiStrToLower(&m_text);
    ForEachRun(m_text, IsSearchTokenSeparator, i_take);
    ForEachRun(m_text, IsPathSeparator, [&](std::string_view i_run) {
        // What bounds this run is a separator for words too: without one inside, the run has been given as a word.
        if (std::any_of(i_run.begin(), i_run.end(),
                        [](char i_byte) { return IsSearchTokenSeparator(static_cast<unsigned char>(i_byte)); }))
            i_take(i_run);
    });
}
