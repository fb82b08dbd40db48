#include "app/text.h"

#include <gtest/gtest.h>

TEST(PathText, NameFolderAndParentDropTrailingSeparators) {
    struct Case {
        const char* path;
        const char* name;
        const char* folder;
        const char* parent;
    };
    const Case l_cases[] = {
        {"", "", "", ""},        {"plain", "plain", "plain", "plain"},
        {"a/b/", "b", "a", "a"}, {"a\\b/c", "c", "a\\b", "a\\b"},
        {"/top", "top", "", ""}, {"a/b//", "", "a/b", "a"},
        {"//", "", "", ""},
    };
    for (const Case& l_case : l_cases) {
        SCOPED_TRACE(l_case.path);
        EXPECT_EQ(GetFileName(l_case.path), l_case.name);
        EXPECT_EQ(GetFolder(l_case.path), l_case.folder);
        EXPECT_EQ(GetParentFolder(l_case.path), l_case.parent);
    }
}

TEST(PathText, ExtensionIsLowerCaseBehindTheLastDot) {
    EXPECT_EQ(GetFileExtension("Song.MP3"), "mp3");
    EXPECT_EQ(GetFileExtension("archive.tar.Gz"), "gz");
    EXPECT_EQ(GetFileExtension("none"), "");
    EXPECT_EQ(GetFileExtension("dot."), "");
}

TEST(PathText, AbsoluteNameShrinksRunsAndLeavesMultiByteCharacters) {
    EXPECT_EQ(GetAbsoluteFileName("Music\\Pop//Song.MP3"), "music\\pop/song.mp3");
    EXPECT_EQ(GetAbsoluteFileName("\\/A/\\"), "\\a");
    EXPECT_EQ(GetAbsoluteFileName("\xC3\x84.TXT"), "\xC3\x84.txt");
    EXPECT_EQ(GetAbsoluteFileName(""), "");
    EXPECT_EQ(GetAbsoluteFileName("///"), "");
}

TEST(PathText, ReversedComponentsHaveNoEmptyOnes) {
    EXPECT_EQ(ReversePathname("a\\b/c"), "c/b/a");
    EXPECT_EQ(ReversePathname("a//b\\\\c//"), "c/b/a");
    EXPECT_EQ(ReversePathname("/base/x"), "x/base");
    EXPECT_EQ(ReversePathname("\\\\"), "");
}

TEST(NumberText, CommasAndSeconds) {
    EXPECT_EQ(CommafyNumber(1234567).toStdString(), "1,234,567");
    EXPECT_EQ(CommafyNumber(999).toStdString(), "999");
    EXPECT_EQ(CommafyNumber(1000).toStdString(), "1,000");
    EXPECT_TRUE(CommafyNumber(0).isEmpty());
    EXPECT_TRUE(CommafyNumber(-5000).isEmpty());

    EXPECT_EQ(FormatSeconds(0), "0m0s");
    EXPECT_EQ(FormatSeconds(59), "0m59s");
    EXPECT_EQ(FormatSeconds(3661), "1h1m1s");
    EXPECT_EQ(FormatSeconds(86400), "1d0h0m0s");
}

TEST(NumberText, BitsCountFromOne) {
    EXPECT_TRUE(GetBit(1, 1));
    EXPECT_FALSE(GetBit(1, 2));
    EXPECT_TRUE(GetBit(0x80000000u, 32));
    EXPECT_FALSE(GetBit(0xFFFFFFFFu, 0));
    EXPECT_FALSE(GetBit(0xFFFFFFFFu, 33));
}

TEST(Markup, EscapesOnceAndLinksOnlyWebAddresses) {
    EXPECT_EQ(EscapeHTML(QStringLiteral("&lt;<b>")).toStdString(), "&amp;lt;&lt;b&gt;");
    EXPECT_EQ(ConvertLinks(QStringLiteral("see http://a.example/x?y=1, or (https://b.example).")).toStdString(),
              "see <a href=\"http://a.example/x?y=1\">http://a.example/x?y=1</a>, or "
              "(<a href=\"https://b.example\">https://b.example</a>).");
    EXPECT_EQ(ConvertLinks(QStringLiteral("HTTP://a.example xhttp://b.example file:///etc")).toStdString(),
              "HTTP://a.example xhttp://b.example file:///etc");
}

TEST(Conversion, BrokenUtf8BecomesReplacementCharacters) {
    EXPECT_EQ(ToUtf8(ToQString("\xC3\xA4\xE2\x82\xAC")), "\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(ToUtf8(ToQString("a\xFF")), "a\xEF\xBF\xBD");
    EXPECT_EQ(ToQString(std::string_view("a\0b", 3)).size(), 3);
}
