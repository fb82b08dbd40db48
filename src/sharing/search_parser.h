// Turns a search text into the words that a file must and must not have.
//
//   word   a whole token of the file      *word   a part of its name      -word   no part of its name
//
// Words end at blanks and tabs, unless they stand between double quotes. A mark stands before the quote; only the first
// of several marks counts as one. No case folding.
#pragma once

#include <absl/container/inlined_vector.h>

#include <string_view>

// In bytewise order, no word twice, none empty. Views into the text that was parsed: they live as long as it does.
// An ordinary search, and one for a word that nobody has above all, is parsed without allocating.
using SearchWordSet = absl::InlinedVector<std::string_view, 8>;

// An object serves one search: a second text would add to the words of the first.
class SearchParser {
public:
    // False for a text that is malformed or names no word to look for (excluded words alone do not count); the words
    // before the fault are kept.
    [[nodiscard]] bool SetSearchText(std::string_view i_text);

    const SearchWordSet& GetIncludedTokenSet() const { return m_included; }
    const SearchWordSet& GetIncludedPartTokenSet() const { return m_includedParts; }
    const SearchWordSet& GetExcludedTokenSet() const { return m_excluded; }

    static constexpr std::string_view Whitespace() { return " \t"; }

private:
    bool Tokenize(std::string_view i_text);

    SearchWordSet m_included;
    SearchWordSet m_includedParts;
    SearchWordSet m_excluded;
};
