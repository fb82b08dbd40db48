#include "sharing/search_parser.h"

#include <algorithm>

namespace {

void SortUnique(SearchWordSet& io_words) {
    std::sort(io_words.begin(), io_words.end());
    io_words.erase(std::unique(io_words.begin(), io_words.end()), io_words.end());
}

} // namespace

bool SearchParser::SetSearchText(std::string_view i_text) {
    const bool l_valid = Tokenize(i_text);
    // Sorted at the end, since a stranger's text may hold tens of thousands of words.
    SortUnique(m_included);
    SortUnique(m_includedParts);
    SortUnique(m_excluded);
    return l_valid;
}

bool SearchParser::Tokenize(std::string_view i_text) {
    constexpr auto c_none = std::string_view::npos;
    for (std::size_t l_at = 0; (l_at = i_text.find_first_not_of(Whitespace(), l_at)) != c_none;) {
        SearchWordSet* lp_words = &m_included;
        if (i_text[l_at] == '-' || i_text[l_at] == '*') {
            lp_words = i_text[l_at] == '-' ? &m_excluded : &m_includedParts;
            if (++l_at == i_text.size())
                return false;
        }
        const bool l_quoted = i_text[l_at] == '"';
        if (l_quoted)
            ++l_at;
        const std::size_t l_found = l_quoted ? i_text.find('"', l_at) : i_text.find_first_of(Whitespace(), l_at);
        const std::size_t l_end = std::min(l_found, i_text.size());
        const std::string_view l_word = i_text.substr(l_at, l_end - l_at);
        if (l_word.empty() || l_word.find('"') != c_none)
            return false;
        lp_words->push_back(l_word);
        // An unclosed quote ends with the text.
        l_at = l_quoted && l_found != c_none ? l_end + 1 : l_end;
    }
    return !m_included.empty() || !m_includedParts.empty();
}
