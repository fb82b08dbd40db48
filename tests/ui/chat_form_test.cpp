#include "ui/chat_form.h"

#include "hostile_texts.h"
#include "window_test.h"

#include "app/settings.h"
#include "net/limits.h"
#include "net/server.h"
#include "ui/chat_edit.h"
#include "ui/chat_view.h"
#include "ui/chat_waiting_form.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/ignore_list.h"

#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

namespace {

class ChatFormTest : public WindowTest {
protected:
    void OpenWindow() {
        Open();
        SetSetting("username", "Ada");
        m_window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    }
    static void Tell(const std::string& i_user, const std::string& i_text) {
        Q_EMIT gp_server->PrivateChat(i_user, i_text, 0, false);
    }
    static ChatForm* Form(const std::string& i_user) {
        return d.GetType("user")->GetItem(i_user)->HasItem("user_chat_widget").AsPointer<ChatForm>();
    }
    static std::string ChatText(const std::string& i_user) {
        return Form(i_user)->findChild<ChatView*>()->toPlainText().toStdString();
    }
    static std::vector<std::string> Alerts() {
        std::vector<std::string> l_texts;
        for (const QAction* lp_action : eventToolBar->actions()) {
            if (!lp_action->text().isEmpty()) {
                l_texts.push_back(lp_action->text().toStdString());
            }
        }
        return l_texts;
    }
    QTabWidget* Tabs() { return Find<QTabWidget>("chatTabControl"); }
};

using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

TEST_F(ChatFormTest, MessagesAlertUntilTheChatIsShown) {
    OpenWindow();
    Tell("bert", "hello <b>");
    Tell("bert", "again");
    EXPECT_EQ(ChatText("bert"), "[bert] hello <b>\n[bert] again");
    EXPECT_THAT(Alerts(), ElementsAre("bert"));
    m_window->OpenChatForm("bert");
    EXPECT_THAT(Alerts(), IsEmpty());
    ChatEdit* const lp_edit = Form("bert")->findChild<ChatEdit*>();
    EXPECT_TRUE(lp_edit->hasFocus());
    Tell("bert", "seen");
    EXPECT_THAT(Alerts(), IsEmpty());

    QTest::keyClicks(lp_edit, QStringLiteral("b"));
    QTest::keyClick(lp_edit, Qt::Key_Tab);
    QTest::keyClicks(lp_edit, QStringLiteral("http://a.example"));
    QTest::keyClick(lp_edit, Qt::Key_Return);
    QTest::keyClick(lp_edit, Qt::Key_Return);
    EXPECT_EQ(ChatText("bert"), "[bert] hello <b>\n[bert] again\n[bert] seen\n[Ada] bert: http://a.example");
    EXPECT_EQ(lp_edit->text(), QString());

    delete Form("bert");
    EXPECT_FALSE(d.GetType("user")->GetItem("bert")->HasItem("user_chat_widget"));
}

TEST_F(ChatFormTest, NothingShowsOfTheIgnored) {
    OpenWindow();
    SetIgnored("bert", true);
    Tell("bert", "hello");
    EXPECT_EQ(Tabs()->count(), 0);
    m_window->GetChatForm("bert");
    Tell("bert", "hello");
    EXPECT_EQ(ChatText("bert"), "");
    EXPECT_THAT(Alerts(), IsEmpty());
    SetIgnored("bert", false);
    Tell("bert", "friends");
    EXPECT_EQ(ChatText("bert"), "[bert] friends");
}

TEST_F(ChatFormTest, IgnoredUsersAreRemembered) {
    OpenWindow();
    SetIgnored("bert", true);
    SetIgnored("a/b\nc", true);
    SetIgnored("anna", true);
    SetIgnored("anna", false);
    Close();
    Open();
    EXPECT_THAT(IgnoredUsers(), ElementsAre("a/b\nc", "bert"));
    EXPECT_TRUE(IsIgnored("bert"));
    EXPECT_FALSE(IsIgnored("anna"));
}

TEST_F(ChatFormTest, AFloodOpensFiftyTabsAndTheRestWaits) {
    OpenWindow();
    for (int l_sender = 0; l_sender < 500; ++l_sender) {
        Tell("sender" + std::to_string(l_sender), "one");
        Tell("sender" + std::to_string(l_sender), "two");
    }
    ChatWaitingForm* const lp_waiting = Find<ChatWaitingForm>("chatWaitingForm");
    QTreeWidget* const lp_list = Find<QTreeWidget>("waitingList");
    EXPECT_EQ(Tabs()->count(), 51);
    EXPECT_EQ(Tabs()->indexOf(lp_waiting), 50);
    EXPECT_EQ(Alerts().size(), 51U);
    EXPECT_EQ(Alerts().back(), "Waiting messages");
    EXPECT_EQ(lp_list->topLevelItemCount(), 450);

    // The alert leads to the list, and the list to the chat.
    eventToolBar->actions().back()->trigger();
    EXPECT_TRUE(lp_list->isVisible());
    QTest::keyClick(lp_list, Qt::Key_W, Qt::ControlModifier);
    EXPECT_TRUE(lp_list->isVisible()) << "this tab is no chat to be closed";
    EXPECT_EQ(Alerts().size(), 50U);
    lp_list->setCurrentItem(lp_list->topLevelItem(0));
    Find<QPushButton>("openWaiting")->click();
    EXPECT_EQ(ChatText("sender50"), "[sender50] one\n[sender50] two");
    EXPECT_TRUE(Form("sender50")->isVisible());
    EXPECT_EQ(lp_list->topLevelItemCount(), 449);

    // However a chat is opened, what waited for it goes there.
    m_window->GetChatForm("sender400");
    EXPECT_EQ(ChatText("sender400"), "[sender400] one\n[sender400] two");
    Tell("sender400", "three");
    EXPECT_EQ(ChatText("sender400"), "[sender400] one\n[sender400] two\n[sender400] three");
    Tell("sender60", "three");
    EXPECT_FALSE(Form("sender60"));

    // The oldest go when there are too many, and the tab when there are none.
    for (int l_message = 0; l_message < 5000; ++l_message) {
        Tell("other" + std::to_string(l_message), std::string(131072, 'x'));
    }
    EXPECT_EQ(lp_list->topLevelItemCount(), static_cast<int>(limits::waitingChatMessages));
    m_window->GetChatForm("sender60");
    EXPECT_EQ(ChatText("sender60"), "");
    Find<QPushButton>("dismissWaiting")->click();
    EXPECT_EQ(Tabs()->indexOf(lp_waiting), -1);

    // With room again chats open by themselves again.
    for (int l_sender = 0; l_sender < 50; ++l_sender) {
        delete Form("sender" + std::to_string(l_sender));
    }
    Tell("newcomer", "hello");
    EXPECT_EQ(ChatText("newcomer"), "[newcomer] hello");
}

TEST_F(ChatFormTest, HostileNamesAndTextsAreShownAsText) {
    OpenWindow();
    for (const std::string& l_text : HostileTexts()) {
        Tell(l_text, l_text);
        ChatForm* const lp_form = Form(l_text);
        EXPECT_EQ(lp_form->findChild<ChatView*>()->document()->blockCount(), 1);
        EXPECT_EQ(Tabs()->tabText(Tabs()->indexOf(lp_form)), TitleText(l_text));
        EXPECT_LE(lp_form->findChild<ChatEdit*>()->placeholderText().size(), 2 * limits::labelText);
    }
    EXPECT_LT(Tabs()->tabBar()->sizeHint().width(), 20000);
    for (int l_sender = 0; l_sender < 50; ++l_sender) {
        Tell("sender" + std::to_string(l_sender), "hello");
    }
    const std::vector<std::string> l_texts = HostileTexts();
    for (const std::string& l_text : l_texts) {
        Tell("<b>" + l_text, l_text);
    }
    QTreeWidget* const lp_list = Find<QTreeWidget>("waitingList");
    ASSERT_GE(lp_list->topLevelItemCount(), static_cast<int>(l_texts.size()));
    for (int l_row = 0; l_row < lp_list->topLevelItemCount(); ++l_row) {
        EXPECT_LE(lp_list->topLevelItem(l_row)->text(0).size(), limits::cellText);
    }
}
