#include "hostile_texts.h"
#include "showable_text.h"
#include "window_test.h"

#include "peer/peer_messenger.h"
#include "ui/action_set_tool_bar.h"
#include "ui/add_user_dialog.h"
#include "ui/user_group_config_dialog.h"
#include "ui/user_groups_dialog.h"
#include "ui/user_list_ignore_dialog.h"
#include "ui/user_menu_options.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

using testing::ElementsAre;

namespace {

ItemPtr User(const std::string& i_name) {
    return d.GetType("user")->GetItem(i_name);
}

ItemPtr Group(const std::string& i_name) {
    return d.GetType("user_list_group")->GetItem(i_name);
}

// Each "user|online|groups", as they stand from top to bottom.
std::vector<std::string> Rows(const QTreeWidget* ip_list) {
    std::vector<std::string> l_rows;
    for (int l_row = 0; l_row < ip_list->topLevelItemCount(); ++l_row) {
        QStringList l_cells;
        for (int l_column = 0; l_column < ip_list->columnCount(); ++l_column) {
            l_cells.append(ip_list->topLevelItem(l_row)->text(l_column));
        }
        l_rows.push_back(l_cells.join(QLatin1Char('|')).toStdString());
    }
    return l_rows;
}

std::vector<std::string> Entries(const QMenu* ip_menu) {
    std::vector<std::string> l_texts;
    for (const QAction* lp_action : ip_menu->actions()) {
        l_texts.push_back(lp_action->isSeparator() ? "-" : lp_action->text().toStdString());
        EXPECT_TRUE(lp_action->isSeparator() || !lp_action->icon().pixmap(16).isNull()) << l_texts.back();
    }
    return l_texts;
}

class UserListTest : public WindowTest {
protected:
    void OpenUsersPage() {
        Open();
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
        // A start without a user name asks for one.
        ASSERT_TRUE(WaitFor([] { return OpenDialog<QMessageBox>() != nullptr; }));
        ASSERT_TRUE(QTest::qWaitFor([this] {
            for (QDialog* lp_first : m_window->findChildren<QDialog*>()) {
                lp_first->close();
            }
            return Count<QDialog>() == 0;
        }));
        m_window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
        QTabBar* const lp_tabs = Find<QTabWidget>("tabControl")->tabBar();
        QTest::mouseClick(lp_tabs, Qt::LeftButton, {}, lp_tabs->tabRect(4).center());
        ASSERT_TRUE(Users()->isVisible());
    }
    QTreeWidget* Users() { return Find<QTreeWidget>("userList"); }
    QTreeWidget* Unshared() { return Find<QTreeWidget>("unsharedList"); }

    void Choose(const std::string& i_user, const char* ip_entry) {
        QMenu l_menu;
        const UserMenuOptions l_options(&l_menu, i_user, nullptr);
        for (QAction* lp_action : l_menu.actions()) {
            if (lp_action->text() == QLatin1String(ip_entry)) {
                lp_action->trigger();
                return;
            }
        }
        ADD_FAILURE() << "no " << ip_entry;
    }
    void Trigger(const char* ip_action) {
        for (QAction* lp_action : Find<ActionSetToolBar>("mainToolBar")->actions()) {
            if (lp_action->text() == QLatin1String(ip_action)) {
                lp_action->trigger();
                return;
            }
        }
        ADD_FAILURE() << "no " << ip_action << " on the bar";
    }
    template <class Dialog>
    int Count() {
        return static_cast<int>(m_window->findChildren<Dialog*>().size());
    }
    template <class Dialog>
    Dialog* Only() {
        return Count<Dialog>() == 1 ? m_window->findChild<Dialog*>() : nullptr;
    }
};

} // namespace

TEST_F(UserListTest, ShowsWhatWasSavedAndFollowsTheStore) {
    Seed([] {
        const ItemPtr l_anna = User("anna").NewItem("in_user_list");
        l_anna.Connect(Group("work"));
        l_anna.Connect(Group("choir"));
        User("Bert").NewItem("in_user_list");
        User("carl").NewItem("unshared");
        User("anna").NewItem("unshared"); // one can be in both
    });
    OpenUsersPage();
    EXPECT_THAT(Rows(Users()), ElementsAre("anna||choir, work", "Bert||"));
    EXPECT_THAT(Rows(Unshared()), ElementsAre("anna", "carl"));
    EXPECT_TRUE(User("anna").IsConnected("is_tracked"));
    EXPECT_FALSE(User("carl").IsConnected("is_tracked"));
    EXPECT_EQ(Users()->headerItem()->text(1).toStdString(), "Online Status");
    EXPECT_EQ(Users()->columnWidth(0), 200);
    EXPECT_EQ(Users()->columnWidth(1), 100);

    User("anna").NewItem("is_online");
    User("dora").NewItem("is_online");
    User("dora").NewItem("in_user_list");
    EXPECT_TRUE(User("dora").IsConnected("is_tracked"));
    EXPECT_THAT(Rows(Users()), ElementsAre("anna|Online|choir, work", "Bert||", "dora|Online|"));
    User("anna").Disconnect("is_online");
    User("anna")["in_user_list"].Disconnect(Group("work"));
    User("Bert")["in_user_list"].Connect(Group("work"));
    EXPECT_THAT(Rows(Users()), ElementsAre("anna||choir", "Bert||work", "dora|Online|"));

    User("anna").Disconnect("in_user_list");
    User("anna").NewItem("is_online"); // no longer of interest here
    EXPECT_THAT(Rows(Users()), ElementsAre("Bert||work", "dora|Online|"));
    User("anna").NewItem("in_user_list");
    EXPECT_THAT(Rows(Users()), ElementsAre("anna|Online|", "Bert||work", "dora|Online|")) << "starts with no groups";
    EXPECT_TRUE(d.GetType("user_list_group")->HasItem("choir")) << "a group outlives its last member";

    User("dora").NewItem("unshared");
    User("anna").Disconnect("unshared");
    EXPECT_THAT(Rows(Unshared()), ElementsAre("carl", "dora"));
    EXPECT_EQ(Users()->topLevelItemCount(), 3);
}

TEST_F(UserListTest, MenuOffersWhatFitsTheUser) {
    Open();
    User("listed").NewItem("in_user_list");
    User("shut out").NewItem("unshared");
    User("both").NewItem("in_user_list");
    User("both").NewItem("unshared");
    const auto l_entries = [](const char* ip_user) {
        QMenu l_menu;
        const UserMenuOptions l_options(&l_menu, ip_user, nullptr);
        return Entries(&l_menu);
    };
    EXPECT_THAT(l_entries("nobody yet"),
                ElementsAre("Message user", "Add user to list", "Browse user's files", "-", "Unshare files from user"));
    EXPECT_FALSE(d.GetType("user")->HasItem("nobody yet")) << "looking at a menu makes no user";
    EXPECT_THAT(l_entries("listed"), ElementsAre("Message user", "Set user's groups", "Remove user from list",
                                                 "Browse user's files", "-", "Unshare files from user"));
    EXPECT_THAT(l_entries("shut out"), ElementsAre("Message user", "Add user to list", "Browse user's files", "-",
                                                   "Re-share files with user"));
    EXPECT_THAT(l_entries("both"), ElementsAre("Message user", "Set user's groups", "Remove user from list",
                                               "Browse user's files", "-", "Re-share files with user"));
}

TEST_F(UserListTest, MenuActsOnItsUser) {
    Open();
    m_window->show();
    for (const std::string& l_user : HostileTexts()) {
        Choose(l_user, "Add user to list");
        EXPECT_TRUE(User(l_user).IsConnected("in_user_list"));
        ASSERT_TRUE(Only<UserGroupsDialog>());
        Choose(l_user, "Set user's groups");
        EXPECT_EQ(Count<UserGroupsDialog>(), 2);
        Choose(l_user, "Remove user from list");
        EXPECT_FALSE(User(l_user).IsConnected("in_user_list"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return Count<UserGroupsDialog>() == 0; })) << "nothing is left to set";

        Choose(l_user, "Unshare files from user");
        EXPECT_TRUE(User(l_user).IsConnected("unshared"));
        Choose(l_user, "Re-share files with user");
        EXPECT_FALSE(User(l_user).IsConnected("unshared"));
        Choose(l_user, "Browse user's files");
        EXPECT_EQ(User(l_user).CountItems("unsent_message"), 1U);
        Choose(l_user, "Message user");
        EXPECT_TRUE(User(l_user).IsConnected("user_chat_widget"));
        EXPECT_EQ(Find<QTabWidget>("tabControl")->currentWidget(), Find<QTabWidget>("chatTabControl")->parentWidget());
    }
    EXPECT_EQ(d.GetType("user")->CountItems(), HostileTexts().size()) << "no other user was touched";
}

TEST_F(UserListTest, RowsOpenTheMenuAndTheChat) {
    Seed([] {
        for (const std::string& l_user : HostileTexts()) {
            User(l_user).NewItem("in_user_list").Connect(Group(l_user));
            User(l_user).NewItem("unshared");
        }
    });
    OpenUsersPage();
    ASSERT_EQ(Users()->topLevelItemCount(), 9);
    for (QTreeWidget* lp_list : {Users(), Unshared()}) {
        for (int l_row = 0; l_row < 9; ++l_row) {
            EXPECT_TRUE(IsShowable(lp_list->topLevelItem(l_row)->text(0), 512));
            EXPECT_TRUE(IsShowable(lp_list->topLevelItem(l_row)->text(lp_list->columnCount() - 1), 512));
        }
    }

    const auto l_ask = [this](QContextMenuEvent::Reason i_reason, QWidget* ip_target, const QPoint& i_point) -> QMenu* {
        QContextMenuEvent l_event(i_reason, i_point, ip_target->mapToGlobal(i_point));
        QApplication::sendEvent(ip_target, &l_event);
        return Find<QWidget>("userListForm")->findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    };
    QWidget* const lp_viewport = Users()->viewport();
    EXPECT_FALSE(l_ask(QContextMenuEvent::Mouse, lp_viewport, lp_viewport->rect().bottomRight())) << "no row there";
    for (int l_row = 0; l_row < 9; ++l_row) {
        const QRect l_place = Users()->visualItemRect(Users()->topLevelItem(l_row));
        const QPointer<QMenu> lp_menu = l_ask(QContextMenuEvent::Mouse, lp_viewport, l_place.center());
        ASSERT_TRUE(lp_menu && lp_menu->isVisible());
        EXPECT_EQ(Entries(lp_menu).size(), 6U);
        QTest::keyClick(lp_menu, Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !lp_menu; }));
    }

    // By keyboard, on the current row.
    Users()->setFocus();
    Users()->setCurrentItem(Users()->topLevelItem(4));
    const QPoint l_cursor = Users()->inputMethodQuery(Qt::ImCursorRectangle).toRect().center(); // as Qt places it
    const QPointer<QMenu> lp_menu = l_ask(QContextMenuEvent::Keyboard, Users(), l_cursor);
    ASSERT_TRUE(lp_menu);
    lp_menu->actions().at(2)->trigger();
    EXPECT_EQ(Users()->topLevelItemCount(), 8);
    lp_menu->close();

    // The name behind the row counts, not what it shows.
    Users()->setCurrentItem(Users()->topLevelItem(0));
    QTest::keyClick(Users(), Qt::Key_Return);
    EXPECT_EQ(d.GetType("user_chat_widget")->CountItems(), 1U);
    EXPECT_EQ(g("user_chat_widget").GetItems("user").size(), 1U);
    EXPECT_EQ(d.GetType("user")->CountItems(), 9U);
}

TEST_F(UserListTest, ToolBarOpensTheDialogs) {
    OpenUsersPage();
    Trigger("Add User");
    Trigger("Configure User Groups");
    EXPECT_TRUE(Only<AddUserDialog>());
    UserGroupConfigDialog* const lp_config = Only<UserGroupConfigDialog>();
    ASSERT_TRUE(lp_config);
    EXPECT_EQ(lp_config, userGroupConfigDialog);
    EXPECT_FALSE(lp_config->isModal());

    Only<AddUserDialog>()->activateWindow();
    Q_EMIT actionBar->ActionTriggered("configure_user_groups");
    EXPECT_EQ(Count<UserGroupConfigDialog>(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return lp_config->isActiveWindow(); }));
    Q_EMIT actionBar->ActionTriggered("manual_add_user");
    EXPECT_EQ(Count<AddUserDialog>(), 2);

    lp_config->close();
    EXPECT_TRUE(QTest::qWaitFor([] { return !userGroupConfigDialog; }));
    Q_EMIT actionBar->ActionTriggered("configure_user_groups");
    EXPECT_TRUE(userGroupConfigDialog);
    Q_EMIT actionBar->ActionTriggered("configure_ignored_users");
    EXPECT_TRUE(Only<IgnoredUsersDialog>());
}

TEST_F(UserListTest, ColumnsKeepTheirWidths) {
    OpenUsersPage();
    Users()->setColumnWidth(0, 231);
    Close();
    OpenUsersPage();
    EXPECT_EQ(Users()->columnWidth(0), 231);
    EXPECT_EQ(Users()->columnWidth(1), 100);
}
