#include "ui/chat_edit.h"

#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace {

class ChatEditTest : public testing::Test {
protected:
    ChatEditTest() {
        QVBoxLayout* const lp_layout = new QVBoxLayout(&m_window);
        mp_edit =
            new ChatEdit([this] { return std::vector<std::string_view>(m_names.begin(), m_names.end()); }, nullptr);
        mp_next = new QLineEdit;
        lp_layout->addWidget(mp_edit);
        lp_layout->addWidget(mp_next);
        m_window.show();
        mp_edit->setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    }

    void Press(Qt::Key i_key, Qt::KeyboardModifiers i_modifiers = {}) { QTest::keyClick(mp_edit, i_key, i_modifiers); }
    void Type(const char* ip_text) { QTest::keyClicks(mp_edit, QString::fromUtf8(ip_text)); }
    std::string Text() const { return mp_edit->text().toStdString(); }

    std::vector<std::string> m_names = {"bert", "Anna", "anton", "Ada Lovelace", "émile"};
    QWidget m_window;
    ChatEdit* mp_edit;
    QLineEdit* mp_next;
};

} // namespace

TEST_F(ChatEditTest, TabCompletesInRounds) {
    Type("a");
    const char* const l_rounds[] = {"Ada Lovelace: ", "Anna: ", "anton: ", "Ada Lovelace: "};
    for (const char* l_expected : l_rounds) {
        Press(Qt::Key_Tab);
        EXPECT_EQ(Text(), l_expected);
    }
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(Text(), "anton: ");
    Type("hi AN");
    Press(Qt::Key_Tab);
    EXPECT_EQ(Text(), "anton: hi Anna ");
    Press(Qt::Key_Tab);
    EXPECT_EQ(Text(), "anton: hi anton ");

    mp_edit->setText(QStringLiteral("I saw be there"));
    mp_edit->setCursorPosition(8);
    Press(Qt::Key_Tab);
    EXPECT_EQ(Text(), "I saw bert  there");
    EXPECT_EQ(mp_edit->cursorPosition(), 11);

    // A name with a blank goes on behind it.
    mp_edit->setText(QStringLiteral("ada l"));
    Press(Qt::Key_Tab);
    EXPECT_EQ(Text(), "Ada Lovelace: ");
    EXPECT_TRUE(mp_edit->hasFocus());
}

TEST_F(ChatEditTest, TabLeavesTheLineWhereNothingCompletes) {
    Press(Qt::Key_Tab);
    EXPECT_TRUE(mp_next->hasFocus());
    mp_edit->setFocus();
    Type("xyz");
    Press(Qt::Key_Tab);
    EXPECT_TRUE(mp_next->hasFocus());
    EXPECT_EQ(Text(), "xyz");
    mp_edit->setFocus();
    mp_edit->setText(QStringLiteral("an"));
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_FALSE(mp_edit->hasFocus()) << "back goes only through a round";

    // What cannot be shown as it is would be sent as something that nobody sees.
    m_names = {"an\u202Eton", "an\nna", std::string(131072, 'a'), "an\xff"};
    mp_edit->setFocus();
    mp_edit->setText(QStringLiteral("a"));
    Press(Qt::Key_Tab);
    EXPECT_EQ(Text(), "a");
}

TEST_F(ChatEditTest, UpAndDownTakeUpOwnLines) {
    Press(Qt::Key_Up);
    EXPECT_EQ(Text(), "");
    for (const char* l_line : {"one", "two", "two", "três"}) {
        mp_edit->setText(QString::fromUtf8(l_line));
        EXPECT_EQ(mp_edit->TakeLine(), l_line);
        EXPECT_EQ(Text(), "");
    }
    Type("draft");
    for (const char* l_expected : {"três", "two", "one", "one"}) {
        Press(Qt::Key_Up);
        EXPECT_EQ(Text(), l_expected);
    }
    for (const char* l_expected : {"two", "três", "draft", "draft"}) {
        Press(Qt::Key_Down);
        EXPECT_EQ(Text(), l_expected);
    }
    for (int l_line = 0; l_line < 500; ++l_line) {
        mp_edit->setText(QString::number(l_line));
        EXPECT_EQ(mp_edit->TakeLine(), std::to_string(l_line));
    }
    for (int l_step = 0; l_step < 500; ++l_step) {
        Press(Qt::Key_Up);
    }
    EXPECT_EQ(Text(), "400") << "the last hundred are kept";
}
