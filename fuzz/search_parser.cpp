// A search text from a stranger: what comes out is ordered, without empty words, and valid only with a word to look
// for.
#include "sharing/search_parser.h"
#include "sharing/search_tokens.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void Require(bool i_holds) {
    if (!i_holds)
        std::abort();
}

void CheckWords(const SearchWordSet& i_words) {
    Require(std::adjacent_find(i_words.begin(), i_words.end(), std::greater_equal<>()) == i_words.end());
    for (const std::string_view l_word : i_words)
        Require(!l_word.empty() && l_word.find('"') == std::string_view::npos);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* ip_data, std::size_t i_size) {
    const std::string_view l_text(reinterpret_cast<const char*>(ip_data), i_size);
    SearchParser l_parser;
    const bool l_valid = l_parser.SetSearchText(l_text);
    CheckWords(l_parser.GetIncludedTokenSet());
    CheckWords(l_parser.GetIncludedPartTokenSet());
    CheckWords(l_parser.GetExcludedTokenSet());
    Require(!l_valid || !l_parser.GetIncludedTokenSet().empty() || !l_parser.GetIncludedPartTokenSet().empty());

    SearchTokenCutter().Cut(l_text.substr(0, i_size / 2), l_text.substr(i_size / 2), [](std::string_view i_token) {
        Require(!i_token.empty() && i_token.find_first_of(" /\\") == std::string_view::npos);
    });
    return 0;
}
