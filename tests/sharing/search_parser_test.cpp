#include "sharing/search_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

struct Parsed {
    bool valid;
    Words included, parts, excluded;

    bool operator==(const Parsed&) const = default;
};

Parsed Parse(std::string_view i_text) {
    const auto l_words = [](const SearchWordSet& i_set) { return Words(i_set.begin(), i_set.end()); };
    SearchParser l_parser;
    const bool l_valid = l_parser.SetSearchText(i_text);
    return {l_valid, l_words(l_parser.GetIncludedTokenSet()), l_words(l_parser.GetIncludedPartTokenSet()),
            l_words(l_parser.GetExcludedTokenSet())};
}

} // namespace

TEST(SearchParser, SortsWordsByTheirMarks) {
    EXPECT_EQ(Parse("jazz -live *azz"), (Parsed{true, {"jazz"}, {"azz"}, {"live"}}));
    EXPECT_EQ(Parse("\t b  a\tb Jazz \xC3\xA9 "), (Parsed{true, {"Jazz", "a", "b", "\xC3\xA9"}, {}, {}}));
    EXPECT_EQ(Parse("--a **b -*c *-d e- f*g"), (Parsed{true, {"e-", "f*g"}, {"*b", "-d"}, {"*c", "-a"}}));
    EXPECT_EQ(Parse("a\nb"), (Parsed{true, {"a\nb"}, {}, {}}));
    EXPECT_EQ(Parse(std::string_view("a\0b", 3)), (Parsed{true, {std::string("a\0b", 3)}, {}, {}}));
}

TEST(SearchParser, TakesQuotedWordsWithTheirBlanks) {
    EXPECT_EQ(Parse("\"two words\" -\"no no\" *\" \""), (Parsed{true, {"two words"}, {" "}, {"no no"}}));
    EXPECT_EQ(Parse("\"a\"b \"c\"\"d\""), (Parsed{true, {"a", "b", "c", "d"}, {}, {}}));
    EXPECT_EQ(Parse("\"a\"-b \"c\"*\"d\""), (Parsed{true, {"a", "c"}, {"d"}, {"b"}}));
    EXPECT_EQ(Parse("a \"open end "), (Parsed{true, {"a", "open end "}, {}, {}}));
    EXPECT_EQ(Parse("\"-a\" \"*b\""), (Parsed{true, {"*b", "-a"}, {}, {}}));
}

TEST(SearchParser, RefusesTextsWithoutAWordToLookFor) {
    for (const char* l_text : {"", " \t ", "-live", "-\"live\"", "-", "*", "\"", "\"\"", "-\"", "*\"\""})
        EXPECT_FALSE(Parse(l_text).valid) << l_text;
    EXPECT_EQ(Parse("-b -a"), (Parsed{false, {}, {}, {"a", "b"}}));
    EXPECT_TRUE(Parse("*azz").valid);
}

TEST(SearchParser, StopsAtAFaultAndKeepsWhatStoodBefore) {
    for (const char* l_fault : {"- c", "*\tc", "\"\" c", "ab\"cd c", "ab\" c", "-ab\"cd\" c", "-", "*", "\"", "*\""})
        EXPECT_EQ(Parse(std::string("b a ") + l_fault), (Parsed{false, {"a", "b"}, {}, {}})) << l_fault;
}

TEST(SearchParser, TakesTheLongestTextOfDistinctWords) {
    std::string l_text;
    for (int l_word = 0; l_text.size() < 0x20000; ++l_word)
        l_text += std::to_string(l_word) + " ";
    SearchParser l_parser;
    EXPECT_TRUE(l_parser.SetSearchText(l_text));
    EXPECT_GT(l_parser.GetIncludedTokenSet().size(), 20'000U);
}
