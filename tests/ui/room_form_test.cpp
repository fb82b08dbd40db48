#include "ui/room_form.h"

#include "hostile_texts.h"
#include "window_test.h"

#include "app/settings.h"
#include "net/limits.h"
#include "net/server.h"
#include "ui/action_set_tool_bar.h"
#include "ui/chat_edit.h"
#include "ui/chat_find_bar.h"
#include "ui/chat_view.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/ignore_list.h"
#include "ui/room_tab_widget.h"
#include "ui/room_user_list.h"
#include "ui/size_manager.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QTabWidget>
#include <QTest>

#include <ctime>

namespace {

constexpr int c_user = 2;

ItemPtr Room(const std::string& i_name) {
    return d.GetType("room")->GetItem(i_name);
}

void SetAttributes(const std::string& i_user, int i_speed, int i_files, const std::string& i_country) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    l_user.Connect(d.GetType("average_download_speed")->GetItem(i_speed));
    l_user.Connect(d.GetType("shared_files_count")->GetItem(i_files));
    l_user.Connect(d.GetType("country_code")->GetItem(i_country));
}

// As the server's message that someone came in.
void Join(const std::string& i_room, const std::string& i_user, int i_speed = 0, int i_files = 0,
          const std::string& i_country = "") {
    Room(i_room).Connect(d.GetType("user")->GetItem(i_user));
    SetAttributes(i_user, i_speed, i_files, i_country);
}

class RoomFormTest : public WindowTest {
protected:
    void OpenIn(const std::string& i_room) {
        Open();
        SetSetting("username", "Ada");
        m_window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
        Room(i_room).NewItem("in_room");
    }
    RoomForm* Form(const std::string& i_room) { return Room(i_room).HasItem("room_form").AsPointer<RoomForm>(); }
    template <typename Widget>
    Widget* In(const std::string& i_room) {
        return Form(i_room)->findChild<Widget*>();
    }
    std::string ChatText(const std::string& i_room) { return In<ChatView>(i_room)->toPlainText().toStdString(); }
    std::vector<std::vector<std::string>> Rows(const std::string& i_room) {
        QCoreApplication::processEvents(); // sorting waits for the event loop
        const QTreeWidget* const lp_list = In<RoomUserList>(i_room);
        std::vector<std::vector<std::string>> l_rows;
        for (int l_row = 0; l_row < lp_list->topLevelItemCount(); ++l_row) {
            const QTreeWidgetItem* const lp_row = lp_list->topLevelItem(l_row);
            l_rows.push_back({lp_row->text(2).toStdString(), lp_row->text(3).toStdString(),
                              lp_row->text(4).toStdString(), lp_row->icon(1).isNull() ? "" : "flag"});
        }
        return l_rows;
    }
    std::vector<std::string> Names(const std::string& i_room) {
        std::vector<std::string> l_names;
        for (const auto& l_row : Rows(i_room)) {
            l_names.push_back(l_row.at(0));
        }
        return l_names;
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
};

using testing::ElementsAre;

} // namespace

TEST_F(RoomFormTest, ListsUsersOnceAllIsKnownAndFollowsThem) {
    OpenIn("Hafen");
    Room("Hafen").Connect(d.GetType("user")->GetItem("early"));
    EXPECT_TRUE(Rows("Hafen").empty());
    SetAttributes("early", 1536, 1234567, "DE");
    Join("Hafen", "Bert", 0, 0, "");
    Join("Mole", "elsewhere", 1, 1, "fr");
    Join("Hafen", "anna", 10240, 9, "nowhere");
    Join("Hafen", "Cleo", 2048, 10, "catalonia");
    using Row = std::vector<std::string>;
    EXPECT_THAT(Rows("Hafen"), ElementsAre(Row{"anna", "9", "10.0", ""}, Row{"Bert", "", "", ""},
                                           Row{"Cleo", "10", "2.0", "flag"}, Row{"early", "1,234,567", "1.5", "flag"}));

    QTreeWidget* const lp_list = In<RoomUserList>("Hafen");
    lp_list->sortByColumn(3, Qt::AscendingOrder);
    EXPECT_THAT(Names("Hafen"), ElementsAre("Bert", "anna", "Cleo", "early"));
    lp_list->sortByColumn(4, Qt::DescendingOrder);
    EXPECT_THAT(Names("Hafen"), ElementsAre("anna", "Cleo", "early", "Bert"));
    lp_list->sortByColumn(1, Qt::AscendingOrder);
    EXPECT_THAT(Names("Hafen"), ElementsAre("Bert", "Cleo", "early", "anna"));

    lp_list->sortByColumn(4, Qt::DescendingOrder);
    SetAttributes("Bert", 99999, 5, "at");
    EXPECT_THAT(Rows("Hafen").front(), Row({"Bert", "5", "97.7", "flag"}));
    SetAttributes("Bert", -5, -1, "");
    EXPECT_THAT(Rows("Hafen").back(), Row({"Bert", "", "", ""}));
    Room("Hafen").Disconnect(d.GetType("user")->GetItem("Bert"));
    Room("Mole").Disconnect(d.GetType("user")->GetItem("elsewhere"));
    EXPECT_EQ(Rows("Hafen").size(), 3U);
}

TEST_F(RoomFormTest, AUserHasTheMenuOfUsers) {
    OpenIn("Hafen");
    Join("Hafen", "bert");
    QTreeWidget* const lp_list = In<RoomUserList>("Hafen");
    QCoreApplication::processEvents();
    const QPoint l_point = lp_list->visualItemRect(lp_list->topLevelItem(0)).center();
    Q_EMIT lp_list->customContextMenuRequested(QPoint(l_point.x(), lp_list->viewport()->height() - 1));
    EXPECT_FALSE(QApplication::activePopupWidget()) << "there is nobody";
    Q_EMIT lp_list->customContextMenuRequested(l_point);
    QMenu* const lp_menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(lp_menu);
    lp_menu->actions().first()->trigger();
    EXPECT_TRUE(d.GetType("user")->GetItem("bert")->HasItem("user_chat_widget")) << "the first entry opens a chat";
}

TEST_F(RoomFormTest, ChatGoesToItsRoomAndSurvivesADisconnection) {
    OpenIn("Hafen");
    Room("Mole").NewItem("in_room");
    Q_EMIT gp_server->RoomChat("Hafen", "bert", "Grüße <b>&amp;</b>  zwei");
    Q_EMIT gp_server->RoomChat("Mole", "anna", "here");
    Q_EMIT gp_server->Disconnected();
    Q_EMIT gp_server->Connected();
    EXPECT_EQ(ChatText("Hafen"), "[bert] Grüße <b>&amp;</b>  zwei\n* Disconnected.\n* Reconnected.");
    EXPECT_EQ(ChatText("Mole"), "[anna] here\n* Disconnected.\n* Reconnected.");

    ChatEdit* const lp_edit = In<ChatEdit>("Hafen");
    lp_edit->setText(QStringLiteral("said"));
    QTest::keyClick(lp_edit, Qt::Key_Return);
    EXPECT_EQ(lp_edit->text(), QString());
    EXPECT_THAT(ChatText("Hafen"), testing::Not(testing::HasSubstr("said"))) << "it comes from the server";
    QTest::keyClick(lp_edit, Qt::Key_Up);
    EXPECT_EQ(lp_edit->text(), QStringLiteral("said"));
    Join("Hafen", "bert");
    lp_edit->clear();
    QTest::keyClicks(lp_edit, QStringLiteral("b"));
    QTest::keyClick(lp_edit, Qt::Key_Tab);
    EXPECT_EQ(lp_edit->text(), QStringLiteral("bert: "));
}

TEST_F(RoomFormTest, LeavingTakesTheTabAndComingBackMakesANewOne) {
    OpenIn("Hafen");
    QTabWidget* const lp_tabs = Find<QTabWidget>("roomsTabControl");
    ASSERT_EQ(lp_tabs->count(), 1);
    Room("Hafen").NewItem("in_room");
    EXPECT_EQ(lp_tabs->count(), 1);
    const QPointer<RoomForm> l_first = Form("Hafen");
    Q_EMIT gp_server->RoomChat("Hafen", "bert", "before");

    Room("Hafen").Disconnect("in_room");
    Room("Hafen").NewItem("in_room"); // before the event loop has come round
    EXPECT_EQ(lp_tabs->count(), 1);
    EXPECT_NE(Form("Hafen"), l_first);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(l_first);
    EXPECT_EQ(ChatText("Hafen"), "");
    Q_EMIT gp_server->RoomChat("Hafen", "bert", "after");
    EXPECT_EQ(ChatText("Hafen"), "[bert] after");
    Room("Hafen").Disconnect("in_room");
    EXPECT_EQ(lp_tabs->count(), 0);
}

TEST_F(RoomFormTest, AutojoinShowsInItsAction) {
    OpenIn("Hafen");
    Form("Hafen")->setFocus();
    const auto l_texts = [] {
        std::vector<std::string> l_result;
        for (const QAction* lp_action : actionBar->actions()) {
            l_result.push_back(lp_action->text().toStdString());
        }
        return l_result;
    };
    EXPECT_THAT(l_texts(), testing::Contains("Auto-Join Room [off]"));
    Room("Hafen").NewItem("room_autojoin");
    EXPECT_THAT(l_texts(), testing::Contains("Auto-Join Room [on]"));
    Room("Hafen").Disconnect("room_autojoin");
    EXPECT_THAT(l_texts(), testing::Contains("Auto-Join Room [off]"));
    EXPECT_EQ(actionBar->GetKey(QStringLiteral("room")), QStringLiteral("Hafen"));
}

TEST_F(RoomFormTest, OwnNameAlertsUntilTheRoomIsShown) {
    OpenIn("Hafen");
    QTabWidget* const lp_rooms = Find<QTabWidget>("roomsTabControl");
    Q_EMIT gp_server->RoomChat("Hafen", "bert", "Ada is looking at this");
    EXPECT_THAT(Alerts(), ElementsAre());
    Room("Mole").NewItem("in_room"); // comes to the front
    for (const char* l_text : {"adage", "Canada", "nothing", ""}) {
        Q_EMIT gp_server->RoomChat("Hafen", "bert", l_text);
    }
    Q_EMIT gp_server->RoomChat("Hafen", "Ada", "I, Ada");
    EXPECT_THAT(Alerts(), ElementsAre());

    SetIgnored("bert", true);
    Q_EMIT gp_server->RoomChat("Hafen", "bert", "Ada!");
    EXPECT_THAT(Alerts(), ElementsAre());
    EXPECT_THAT(ChatText("Hafen"), testing::Not(testing::HasSubstr("Ada!")));
    EXPECT_THAT(IgnoredUsers(), ElementsAre("bert"));
    SetIgnored("bert", false);
    EXPECT_TRUE(IgnoredUsers().empty());

    Q_EMIT gp_server->RoomChat("Hafen", "bert", "hey ADA, there");
    EXPECT_THAT(Alerts(), ElementsAre("bert in Hafen"));
    EXPECT_FALSE(lp_rooms->tabIcon(lp_rooms->indexOf(Form("Hafen"))).isNull());
    lp_rooms->setCurrentWidget(Form("Hafen"));
    EXPECT_THAT(Alerts(), ElementsAre());
    EXPECT_TRUE(lp_rooms->tabIcon(lp_rooms->indexOf(Form("Hafen"))).isNull());
}

TEST_F(RoomFormTest, FindBarOpensAndClosesByKeys) {
    OpenIn("Hafen");
    Q_EMIT gp_server->RoomChat("Hafen", "bert", "a needle");
    ChatEdit* const lp_edit = In<ChatEdit>("Hafen");
    ChatFindBar* const lp_bar = In<ChatFindBar>("Hafen");
    QLineEdit* const lp_find = lp_bar->findChild<QLineEdit*>();
    QTest::keyClick(lp_edit, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(lp_find->hasFocus());
    QTest::keyClicks(lp_find, QStringLiteral("needle"));
    QTest::keyClick(lp_find, Qt::Key_Return);
    EXPECT_EQ(In<ChatView>("Hafen")->textCursor().selectedText(), QStringLiteral("needle"));
    QTest::keyClicks(lp_find, QStringLiteral("s"));
    QTest::keyClick(lp_find, Qt::Key_Return);
    EXPECT_EQ(Text<QLabel>("findAnswer"), "Not found");
    QTest::keyClick(lp_find, Qt::Key_Escape);
    EXPECT_FALSE(lp_bar->isVisible());
    EXPECT_TRUE(lp_edit->hasFocus());
}

TEST_F(RoomFormTest, HostileNamesAndTextsAreShownAsText) {
    Open();
    SetSetting("username", "Ada");
    m_window->show();
    QTabWidget* const lp_tabs = Find<QTabWidget>("roomsTabControl");
    for (const std::string& l_text : HostileTexts()) {
        Room(l_text).NewItem("in_room");
        Join(l_text, l_text, 1, 1, l_text);
        const std::string l_name = Room(l_text).AsString(); // a value ends at a zero byte
        RoomForm* const lp_form = Form(l_text);
        Q_EMIT gp_server->RoomChat(l_name, l_text, l_text + " Ada");
        EXPECT_EQ(lp_tabs->tabText(lp_tabs->indexOf(lp_form)), TitleText(l_name));
        EXPECT_EQ(Names(l_text).at(0), CellText(l_name).toStdString());
        EXPECT_THAT(Rows(l_text).at(0).at(3), "");
        EXPECT_EQ(lp_form->findChild<ChatView*>()->document()->blockCount(), 1);
        const QString l_tip = lp_form->findChild<RoomUserList*>()->topLevelItem(0)->toolTip(1);
        EXPECT_FALSE(l_tip.contains(QLatin1Char('<'))) << l_tip.toStdString();
    }
    EXPECT_LT(lp_tabs->tabBar()->sizeHint().width(), 20000);
    for (const std::string& l_alert : Alerts()) {
        EXPECT_LE(l_alert.size(), 8U * limits::labelText) << l_alert;
    }
}

TEST_F(RoomFormTest, SizesAreSharedByAllRooms) {
    OpenIn("Hafen");
    QSplitter* const lp_first = In<QSplitter>("Hafen");
    lp_first->setSizes({300, 300});
    Q_EMIT lp_first->splitterMoved(300, 1);
    In<RoomUserList>("Hafen")->header()->resizeSection(c_user, 123);
    Room("Mole").NewItem("in_room");
    QCoreApplication::processEvents();
    EXPECT_EQ(In<RoomUserList>("Mole")->columnWidth(c_user), 123);
    EXPECT_EQ(In<QSplitter>("Mole")->sizes(), lp_first->sizes());
}

// Time of this process, so that a busy machine does not count.
TEST_F(RoomFormTest, TenThousandUsersDoNotBlockTheWindow) {
    OpenIn("Hafen");
    constexpr int l_count = 10000;
    std::vector<ItemPtr> l_users;
    for (int l_user = 0; l_user < l_count; ++l_user) {
        const std::string l_name = "user " + std::to_string(l_user * 7919 % l_count);
        SetAttributes(l_name, l_user * 31 % 5000, l_user, l_user % 3 ? "de" : "fr");
        l_users.push_back(d.GetType("user")->GetItem(l_name));
    }
    RoomUserList* const lp_list = In<RoomUserList>("Hafen");
    const auto l_milliseconds = [](const std::function<void()>& i_work) {
        const std::clock_t l_start = std::clock();
        i_work();
        QCoreApplication::processEvents();
        return 1000.0 * static_cast<double>(std::clock() - l_start) / CLOCKS_PER_SEC;
    };
    const double l_listed = l_milliseconds([&] {
        for (const ItemPtr& l_user : l_users) {
            lp_list->ShowUser(l_user);
        }
    });
    ASSERT_EQ(lp_list->topLevelItemCount(), l_count);
    EXPECT_EQ(lp_list->topLevelItem(0)->text(c_user), QStringLiteral("user 0"));
    const double l_sorted = l_milliseconds([&] { lp_list->sortByColumn(3, Qt::DescendingOrder); });
    EXPECT_EQ(lp_list->topLevelItem(0)->text(3), QStringLiteral("9,999"));
    const double l_oneMore = l_milliseconds([&] { Join("Hafen", "last", 1, 1000000, "de"); });
    EXPECT_EQ(lp_list->topLevelItem(0)->text(c_user), QStringLiteral("last"));
    RecordProperty("milliseconds", std::to_string(l_listed) + " " + std::to_string(l_sorted));
#ifndef TIDEWELL_CHECK_INVARIANTS
    EXPECT_LT(l_listed + l_sorted, 200);
#else
    EXPECT_LT(l_listed + l_sorted, 1000) << "without optimisation";
#endif
    EXPECT_LT(l_oneMore, l_listed);
}
