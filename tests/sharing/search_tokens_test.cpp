#include "sharing/search_tokens.h"

#include <gmock/gmock.h>

#include <random>
#include <set>
#include <vector>

#include <cctype>

namespace {

using Tokens = std::vector<std::string>;

Tokens Cut(std::string_view i_folder, std::string_view i_name) {
    Tokens l_tokens;
    SearchTokenCutter l_cutter;
    l_cutter.Cut(i_folder, i_name, [&](std::string_view i_token) { l_tokens.emplace_back(i_token); });
    return l_tokens;
}

// Both ways of cutting, in full.
std::set<std::string> AllRuns(const std::string& i_text) {
    std::set<std::string> l_runs;
    std::string l_word, l_punctuated;
    const auto l_end = [&](std::string& io_run) {
        if (!io_run.empty())
            l_runs.insert(io_run);
        io_run.clear();
    };
    for (const char l_char : i_text + "/") {
        const auto l_byte = static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(l_char)));
        if (l_byte >= 0x80 || std::isalnum(l_byte))
            l_word += static_cast<char>(l_byte);
        else
            l_end(l_word);
        if (l_byte != ' ' && l_byte != '/' && l_byte != '\\')
            l_punctuated += static_cast<char>(l_byte);
        else
            l_end(l_punctuated);
    }
    return l_runs;
}

} // namespace

TEST(SearchTokens, FindsWordsFirstAndThenWordsWithTheirPunctuation) {
    EXPECT_EQ(Cut("/music", "song-title.mp3"), (Tokens{"music", "song", "title", "mp3", "song-title.mp3"}));
    EXPECT_EQ(Cut("/A B/c'd", "01. X (live).MP3"),
              (Tokens{"a", "b", "c", "d", "01", "x", "live", "mp3", "c'd", "01.", "(live).mp3"}));
    EXPECT_EQ(Cut("/m\\n", "a\tb--"), (Tokens{"m", "n", "a", "b", "a\tb--"}));
    EXPECT_EQ(Cut("/La la", "LA"), (Tokens{"la", "la", "la"}));
    EXPECT_EQ(Cut("/", "..."), (Tokens{"..."}));
    EXPECT_EQ(Cut("", ""), (Tokens{}));
}

TEST(SearchTokens, KeepsBytesOutsideAsciiWhole) {
    EXPECT_EQ(Cut("/\xC3\x84rzte", "\xC3\x84-\xFF\x80.ogg"),
              (Tokens{"\xC3\x84rzte", "\xC3\x84", "\xFF\x80", "ogg", "\xC3\x84-\xFF\x80.ogg"}));
    int l_separators = 0;
    for (int l_byte = 0; l_byte < 256; ++l_byte)
        l_separators += IsSearchTokenSeparator(static_cast<unsigned char>(l_byte));
    EXPECT_EQ(l_separators, 128 - 62);
}

TEST(SearchTokens, LeavesNoTokenOutOfAnyText) {
    static constexpr std::string_view c_alphabet = "aZ0-. /\\\xC3\t";
    std::mt19937 l_engine(7);
    SearchTokenCutter l_cutter;
    for (int l_round = 0; l_round < 3000; ++l_round) {
        std::string l_parts[2];
        for (std::string& l_part : l_parts)
            for (std::size_t l_left = l_engine() % 20; l_left > 0; --l_left)
                l_part += c_alphabet[l_engine() % c_alphabet.size()];
        std::set<std::string> l_tokens;
        l_cutter.Cut(l_parts[0], l_parts[1], [&](std::string_view i_token) { l_tokens.emplace(i_token); });
        ASSERT_EQ(l_tokens, AllRuns(l_parts[0] + "\\" + l_parts[1])) << l_parts[0] << " | " << l_parts[1];
    }
}
