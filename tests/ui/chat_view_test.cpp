#include "ui/chat_view.h"

#include "hostile_texts.h"
#include "net/limits.h"
#include "ui/display_text.h"
#include "ui/row_colour.h"

#include <QDesktopServices>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include <gmock/gmock.h>

namespace {

// The anchors of the text, by what they show, with their addresses.
std::vector<std::pair<std::string, std::string>> Links(const ChatView& i_view) {
    std::vector<std::pair<std::string, std::string>> l_links;
    for (QTextBlock l_block = i_view.document()->begin(); l_block.isValid(); l_block = l_block.next()) {
        for (QTextBlock::iterator l_place = l_block.begin(); !l_place.atEnd(); ++l_place) {
            const QTextCharFormat l_format = l_place.fragment().charFormat();
            if (l_format.isAnchor()) {
                l_links.emplace_back(l_place.fragment().text().toStdString(), l_format.anchorHref().toStdString());
            }
        }
    }
    return l_links;
}

QColor ColourOf(const ChatView& i_view, const char* i_text) {
    const QTextCursor l_cursor = i_view.document()->find(QString::fromUtf8(i_text));
    return l_cursor.charFormat().foreground().color();
}

std::string LineOf(const ChatView& i_view, int i_line) {
    return i_view.document()->findBlockByNumber(i_line).text().toStdString();
}

class ChatViewTest : public testing::Test {
protected:
    ChatViewTest() {
        m_view.resize(500, 300);
        m_view.show();
    }

    void Say(const std::string& i_text) { m_view.AddChatLine(SaidLine("anna", i_text)); }
    void SayMany(int i_count) {
        for (int l_line = 0; l_line < i_count; ++l_line) {
            Say("line " + std::to_string(l_line) + " with some words");
        }
    }
    void FillToLimit() {
        for (int l_line = 0; m_view.HtmlSize() < ChatHtmlSizes::c_limit; ++l_line) {
            Say("<" + std::to_string(l_line) + "> & http://a.example/?x=1&y=2 " + std::string(l_line % 300, 'x'));
        }
    }
    bool IsAtEnd() const { return m_view.verticalScrollBar()->value() == m_view.verticalScrollBar()->maximum(); }

    ChatView m_view{ChatView::History::Bounded, nullptr};
};

} // namespace

TEST_F(ChatViewTest, ShowsForeignTextAsTextAndLinksOnlyWebAddresses) {
    for (const std::string& l_text : HostileTexts()) {
        m_view.clear();
        m_view.AddStatusLine(StatusLine("first"));
        m_view.AddStatusLine(SaidLine(l_text, l_text));
        EXPECT_EQ(LineOf(m_view, 1), "[" + LabelText(l_text).toStdString() + "] " + ChatLineText(l_text).toStdString());
        EXPECT_EQ(m_view.document()->blockCount(), 2);
        EXPECT_LE(m_view.document()->characterCount(), limits::chatLineText + limits::labelText + 20);
        for (const auto& [l_shown, l_address] : Links(m_view)) {
            EXPECT_EQ(l_shown, l_address);
            EXPECT_TRUE(l_address.starts_with("http://")) << l_address;
        }
        for (const QTextFormat& l_format : m_view.document()->allFormats()) {
            EXPECT_FALSE(l_format.isImageFormat());
        }
    }
    m_view.clear();
    Say("see <http://a.example/?a=1&b=2>, HTTP://no.example or https://b.example/(x).");
    using Pair = std::pair<std::string, std::string>;
    EXPECT_THAT(Links(m_view), testing::ElementsAre(Pair("http://a.example/?a=1&b=2", "http://a.example/?a=1&b=2"),
                                                    Pair("https://b.example/", "https://b.example/")));
    EXPECT_EQ(ColourOf(m_view, "anna"), QColor(Qt::blue));
    m_view.AddStatusLine(StatusLine("Disconnected."));
    EXPECT_EQ(LineOf(m_view, 1), "* Disconnected.");
    EXPECT_EQ(ColourOf(m_view, "Disconnected."), QColor(0, 128, 0));
}

TEST_F(ChatViewTest, LinksOpenOutside) {
    QTextBrowser l_outside; // stands for the desktop's program for web addresses
    QDesktopServices::setUrlHandler(QStringLiteral("http"), &l_outside, "setSource");
    Say("look: http://a.example/x");
    const QTextCursor l_link = m_view.document()->find(QStringLiteral("a.example"));
    QTest::mouseClick(m_view.viewport(), Qt::LeftButton, {}, m_view.cursorRect(l_link).center());
    QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
    EXPECT_EQ(l_outside.source(), QUrl(QStringLiteral("http://a.example/x")));
    EXPECT_EQ(LineOf(m_view, 0), "[anna] look: http://a.example/x") << "and the chat stays on show";
}

TEST_F(ChatViewTest, TrimsLikeTheRuleOnTheWholeHtml) {
    FillToLimit();
    const QString l_before = m_view.toHtml();
    EXPECT_EQ(m_view.HtmlSize(), l_before.size());
    m_view.AddStatusLine(StatusLine("no reason to trim"));
    EXPECT_GT(m_view.HtmlSize(), l_before.size());

    const QString l_html = m_view.toHtml();
    const QString l_rest = l_html.mid(l_html.indexOf(QLatin1Char('\n'), 50000) + 1);
    QTextDocument l_expected;
    l_expected.setHtml(l_rest);
    Say("the last");
    EXPECT_EQ(m_view.toPlainText(), l_expected.toPlainText() + QStringLiteral("\n[anna] the last"));
    EXPECT_EQ(m_view.HtmlSize(), m_view.toHtml().size());
    EXPECT_LT(m_view.HtmlSize(), 202000);
}

TEST_F(ChatViewTest, TrimsInsideALineThatIsTooLong) {
    Say("gone");
    m_view.AddStatusLine({{ChatPart::Plain, QStringLiteral("xxxxxxxx ").repeated(33333)}});
    const qsizetype l_size = m_view.toHtml().size();
    Say("the last");
    EXPECT_THAT(LineOf(m_view, 0), testing::MatchesRegex("[x ]+"));
    EXPECT_NEAR(static_cast<double>(LineOf(m_view, 0).size()), static_cast<double>(l_size - 50000), 50);
    EXPECT_EQ(LineOf(m_view, 1), "[anna] the last");
    for (int l_line = 0; l_line < 2000; ++l_line) {
        Say("more");
    }
    EXPECT_THAT(m_view.toPlainText().toStdString(), testing::Not(testing::HasSubstr("x")));
}

TEST_F(ChatViewTest, FollowsTheEndUntilTheReaderScrollsUp) {
    SayMany(100);
    EXPECT_TRUE(IsAtEnd());
    m_view.resize(260, 200);
    QCoreApplication::processEvents();
    EXPECT_TRUE(IsAtEnd());
    SayMany(10);
    EXPECT_TRUE(IsAtEnd());

    FillToLimit();
    EXPECT_TRUE(IsAtEnd());
    m_view.verticalScrollBar()->setValue(m_view.verticalScrollBar()->maximum() - 1000);
    const QPoint l_corner(5, 5);
    const std::string l_shown = m_view.cursorForPosition(l_corner).block().text().toStdString();
    Say("this one trims");
    Say("and another");
    EXPECT_LT(m_view.HtmlSize(), ChatHtmlSizes::c_limit);
    EXPECT_EQ(m_view.cursorForPosition(l_corner).block().text().toStdString(), l_shown);
    EXPECT_FALSE(IsAtEnd());
    m_view.ShowEnd();
    Say("once more");
    EXPECT_TRUE(IsAtEnd());
}

TEST_F(ChatViewTest, FindsUpwardsAndDownwardsRoundTheEnds) {
    SayMany(30);
    EXPECT_TRUE(m_view.Find(QStringLiteral("WORDS"), true));
    EXPECT_EQ(m_view.textCursor().blockNumber(), 29);
    EXPECT_TRUE(m_view.Find(QStringLiteral("words"), true));
    EXPECT_EQ(m_view.textCursor().blockNumber(), 28);
    EXPECT_TRUE(m_view.Find(QStringLiteral("line 3 "), true));
    EXPECT_EQ(m_view.textCursor().blockNumber(), 3);
    EXPECT_FALSE(IsAtEnd());
    EXPECT_TRUE(m_view.Find(QStringLiteral("line 2 "), false));
    EXPECT_EQ(m_view.textCursor().blockNumber(), 2) << "round the end";
    const int l_place = m_view.verticalScrollBar()->value();
    EXPECT_FALSE(m_view.Find(QStringLiteral("not there"), false));
    EXPECT_EQ(m_view.verticalScrollBar()->value(), l_place);
}

TEST_F(ChatViewTest, ColoursFollowThePalette) {
    m_view.AddStatusLine(StatusLine("Disconnected."));
    Say("http://a.example/");
    QPalette l_dark;
    l_dark.setColor(QPalette::Base, QColor(30, 30, 30));
    l_dark.setColor(QPalette::AlternateBase, QColor(40, 40, 40));
    l_dark.setColor(QPalette::Text, Qt::white);
    m_view.setPalette(l_dark);
    for (const char* l_part : {"anna", "Disconnected.", "a.example"}) {
        EXPECT_GE(ContrastRatio(ColourOf(m_view, l_part), QColor(30, 30, 30)), 4.5) << l_part;
    }
    EXPECT_EQ(Links(m_view).size(), 1U);
    m_view.setPalette(QPalette());
    EXPECT_EQ(ColourOf(m_view, "anna"), QColor(Qt::blue));
}
