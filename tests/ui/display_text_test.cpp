#include "ui/display_text.h"

#include "app/text.h"
#include "net/limits.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace {

std::string Shown(std::string_view i_text, int i_limit = 64) {
    return ToUtf8(DisplayText(ToQString(i_text), i_limit));
}

} // namespace

TEST(DisplayText, LeavesOrdinaryTextAlone) {
    for (const char* lp_text : {"", "plain", "<b>&amp;</b>", "日本語 العربية", "👩‍👩‍👧 e\u0301"}) {
        EXPECT_EQ(Shown(lp_text), lp_text);
    }
}

TEST(DisplayText, MakesControlAndDirectionMarksVisible) {
    EXPECT_EQ(Shown("photo\u202Egpj.exe"), "photo[U+202E]gpj.exe");
    EXPECT_EQ(Shown("a\nb\tc\x7F"), "a[U+000A]b[U+0009]c[U+007F]");
    EXPECT_EQ(Shown(std::string_view("a\0b", 3)), "a[U+0000]b");
    EXPECT_EQ(Shown("\u0085\u061C\u200B\u200E\u200F\u2028\u2066\u2069\uFEFF"),
              "[U+0085][U+061C][U+200B][U+200E][U+200F][U+2028][U+2066]…");
    EXPECT_EQ(Shown("\u2029\u2060"), "[U+2029][U+2060]");
    EXPECT_EQ(Shown("a\u00ADd\u3164\u2064\U000E0041"), "a[U+00AD]d[U+3164][U+2064][U+E0041]");
    const std::string l_pile = "x\u0301\u0302\u0303\u0304\u0305\u0306"; // all that a character may carry
    EXPECT_EQ(Shown(l_pile + "\u0307y" + l_pile), l_pile + "[U+0307]y" + l_pile);
}

TEST(DisplayText, CutsAtTheLimitAndNeverInsideACharacter) {
    EXPECT_EQ(Shown("12345", 5), "12345");
    EXPECT_EQ(Shown("123456", 5), "1234…");
    EXPECT_EQ(Shown("123😀", 5), "123😀"); // two UTF-16 units
    EXPECT_EQ(Shown("1234😀", 5), "1234…");
    EXPECT_EQ(Shown("123😀5", 5), "123…");
    EXPECT_EQ(Shown("1\n", 5), "1…"); // the mark has no room, and no half of it shows
    const QString l_half = QString(QChar(0xD83D)) + QLatin1Char('x') + QChar(0xDE00);
    EXPECT_EQ(ToUtf8(DisplayText(l_half, 5)), "\uFFFDx\uFFFD");
}

TEST(DisplayText, PlacesHaveTheirLimitsWhateverTheBytes) {
    const std::string l_long(131'072, 'x');
    std::string l_wide;
    for (int l_count = 0; l_count < 5000; ++l_count) {
        l_wide += "😀";
    }
    const std::string l_broken(131'072, '\xFF');
    for (const std::string& l_text : {l_long, l_wide, l_broken}) {
        EXPECT_LE(LabelText(l_text).size(), limits::labelText);
        EXPECT_GE(LabelText(l_text).size(), limits::labelText - 1);
        EXPECT_TRUE(LabelText(l_text).endsWith(QChar(0x2026)));
        EXPECT_LE(CellText(l_text).size(), limits::cellText);
        EXPECT_GE(CellText(l_text).size(), limits::cellText - 1);
        EXPECT_LE(ChatLineText(l_text).size(), limits::chatLineText);
        EXPECT_GE(ChatLineText(l_text).size(), limits::chatLineText - 1);
    }
    EXPECT_EQ(LabelText(std::string(64, 'x')).size(), 64);
    EXPECT_EQ(ToUtf8(TitleText("Rock & Roll")), "Rock && Roll");
}

TEST(DisplayText, ToolTipsAreNeverMarkup) {
    EXPECT_EQ(ToUtf8(ToolTipText("Rock & Roll < 3")), "Rock & Roll < 3");
    EXPECT_EQ(ToUtf8(ToolTipText("<b>x</b>&")), "<qt>&lt;b&gt;x&lt;/b&gt;&amp;</qt>");
    const QString l_long = ToolTipText(std::string(100'000, 'x'));
    EXPECT_LE(l_long.size(), 2 * limits::cellText);
    for (const QString& l_line : l_long.split(QLatin1Char('\n'))) {
        EXPECT_LE(l_line.size(), 80);
    }
}
