#include "hostile_texts.h"
#include "showable_text.h"
#include "window_test.h"

#include "app/settings.h"
#include "ui/add_user_dialog.h"
#include "ui/ignore_list.h"
#include "ui/user_group_config_dialog.h"
#include "ui/user_groups_dialog.h"
#include "ui/user_list_ignore_dialog.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QWindow>

using testing::ElementsAre;

namespace {

ItemPtr User(const std::string& i_name) {
    return d.GetType("user")->GetItem(i_name);
}

ItemPtr Group(const std::string& i_name) {
    return d.GetType("user_list_group")->GetItem(i_name);
}

template <typename Widget>
Widget* Part(const QWidget* ip_dialog, const char* i_name) {
    Widget* const lp_part = ip_dialog->findChild<Widget*>(QLatin1String(i_name));
    if (!lp_part) {
        ADD_FAILURE() << "no " << i_name;
        std::abort();
    }
    return lp_part;
}

// Each with "+" before it if it is checked.
std::vector<std::string> Rows(const QListWidget* ip_list) {
    std::vector<std::string> l_rows;
    for (int l_row = 0; l_row < ip_list->count(); ++l_row) {
        const QListWidgetItem* const lp_row = ip_list->item(l_row);
        l_rows.push_back((lp_row->checkState() == Qt::Checked ? "+" : "") + lp_row->text().toStdString());
    }
    return l_rows;
}

std::vector<std::string> GroupsOf(const std::string& i_user) {
    std::vector<std::string> l_names;
    for (const Item* lp_group : User(i_user)["in_user_list"].GetItems("user_list_group").SortAlphabetic(true)) {
        l_names.push_back(lp_group->AsString());
    }
    return l_names;
}

class UserDialogsTest : public WindowTest {
protected:
    UserDialogsTest() { Open(); }

    UserGroupsDialog* OpenGroups(const std::string& i_user) {
        User(i_user).NewItem("in_user_list");
        return Shown(new UserGroupsDialog(i_user, m_window.get()));
    }
    template <class Dialog>
    Dialog* Shown(Dialog* ip_dialog) {
        ip_dialog->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(ip_dialog));
        return ip_dialog;
    }
    static bool IsGone(const QPointer<QDialog>& i_dialog) {
        return QTest::qWaitFor([&] { return !i_dialog; });
    }
};

} // namespace

TEST_F(UserDialogsTest, GroupsOfAUserAreChecked) {
    Group("work");
    UserGroupsDialog* const lp_anna = OpenGroups("anna");
    UserGroupsDialog* const lp_again = OpenGroups("anna");
    UserGroupsDialog* const lp_bert = OpenGroups("bert");
    Shown(new UserGroupConfigDialog(m_window.get()));
    EXPECT_EQ(lp_anna->windowTitle().toStdString(), "User Groups for [anna]");
    QListWidget* const lp_groups = Part<QListWidget>(lp_anna, "groupListWidget");
    EXPECT_THAT(Rows(lp_groups), ElementsAre("work"));

    // A group made in one shows in all.
    Part<QLineEdit>(lp_bert, "newGroupEdit")->setText(QStringLiteral("  Choir \t"));
    Part<QPushButton>(lp_bert, "newGroupButton")->click();
    EXPECT_EQ(Part<QLineEdit>(lp_bert, "newGroupEdit")->text(), QString());
    for (const QDialog* lp_dialog : {lp_anna, lp_again, lp_bert}) {
        EXPECT_THAT(Rows(Part<QListWidget>(lp_dialog, "groupListWidget")), ElementsAre("Choir", "work"));
    }
    EXPECT_THAT(Rows(Part<QListWidget>(userGroupConfigDialog, "groupList")), ElementsAre("Choir", "work"));
    for (const char* lp_nothingNew : {"work", "  \t", ""}) {
        Part<QLineEdit>(lp_bert, "newGroupEdit")->setText(QLatin1String(lp_nothingNew));
        Part<QPushButton>(lp_bert, "newGroupButton")->click();
    }
    EXPECT_EQ(d.GetType("user_list_group")->CountItems(), 2U);
    EXPECT_THAT(GroupsOf("anna"), ElementsAre());

    lp_groups->item(0)->setCheckState(Qt::Checked);
    lp_groups->item(1)->setCheckState(Qt::Checked);
    EXPECT_THAT(GroupsOf("anna"), ElementsAre("Choir", "work"));
    EXPECT_THAT(Rows(Part<QListWidget>(lp_again, "groupListWidget")), ElementsAre("+Choir", "+work"));
    EXPECT_THAT(Rows(Part<QListWidget>(lp_bert, "groupListWidget")), ElementsAre("Choir", "work"));
    lp_groups->item(0)->setCheckState(Qt::PartiallyChecked);
    EXPECT_THAT(GroupsOf("anna"), ElementsAre("Choir", "work"));
    lp_groups->item(0)->setCheckState(Qt::Unchecked);
    EXPECT_THAT(GroupsOf("anna"), ElementsAre("work"));
    EXPECT_THAT(GroupsOf("bert"), ElementsAre());
    EXPECT_THAT(Rows(Part<QListWidget>(OpenGroups("anna"), "groupListWidget")), ElementsAre("Choir", "+work"));
}

TEST_F(UserDialogsTest, PrioritiesAreSetAndSurviveARestart) {
    for (const char* lp_group : {"high", "low", "none"}) {
        Group(lp_group);
    }
    Group("high").Connect(d.GetType("group_download_priority")->GetItem(7));
    QDialog* const lp_dialog = new UserGroupConfigDialog(m_window.get());
    EXPECT_EQ(lp_dialog->windowTitle().toStdString(), "Configure User Groups");
    QListWidget* const lp_groups = Part<QListWidget>(lp_dialog, "groupList");
    QSpinBox* const lp_priority = Part<QSpinBox>(lp_dialog, "prioritySpinBox");
    const auto l_choose = [&](const char* ip_group) {
        lp_groups->setCurrentItem(lp_groups->findItems(QLatin1String(ip_group), Qt::MatchExactly).at(0));
    };
    EXPECT_FALSE(lp_priority->isEnabled());
    EXPECT_EQ(Part<QGroupBox>(lp_dialog, "groupBox")->title(), QString());

    Shown(lp_dialog);
    l_choose("high");
    EXPECT_TRUE(lp_priority->isEnabled());
    EXPECT_EQ(lp_priority->value(), 7);
    EXPECT_EQ(Part<QGroupBox>(lp_dialog, "groupBox")->title().toStdString(), "high");
    l_choose("low");
    EXPECT_EQ(lp_priority->value(), 0);
    lp_priority->setFocus(Qt::TabFocusReason);
    QTest::keyClicks(lp_priority->findChild<QLineEdit*>(), QStringLiteral("3"));
    EXPECT_EQ(Group("low")["group_download_priority"].AsString(), "3");
    EXPECT_EQ(Group("high")["group_download_priority"].AsString(), "7");

    l_choose("none");
    lp_priority->setValue(99);
    EXPECT_EQ(Group("none")["group_download_priority"].AsString(), "99");
    lp_priority->setValue(0);
    EXPECT_FALSE(Group("none").IsConnected("group_download_priority"));

    // What does not fit into the box is left alone by looking at it.
    Group("high").Connect(d.GetType("group_download_priority")->GetItem(1000));
    l_choose("high");
    EXPECT_EQ(lp_priority->value(), 99);
    EXPECT_EQ(Group("high")["group_download_priority"].AsString(), "1000");
    Group("low").Remove();
    EXPECT_THAT(Rows(lp_groups), ElementsAre("high", "none"));

    Close();
    Open();
    EXPECT_EQ(Group("high")["group_download_priority"].AsString(), "1000");
    EXPECT_FALSE(Group("none").IsConnected("group_download_priority"));
    EXPECT_FALSE(HasSetting("group_priority/low")) << "left behind by its group";
}

TEST_F(UserDialogsTest, DamagedPrioritiesCountAsNone) {
    Close();
    Seed([] {
        for (const char* lp_value : {"-3", "0", "many", "99999999999999999999", "5"}) {
            Group(lp_value);
            SetSetting(std::string("group_priority/") + lp_value, lp_value);
        }
    });
    Open();
    EXPECT_EQ(d.GetType("group_download_priority")->CountItems(), 1U);
    EXPECT_EQ(Group("5")["group_download_priority"].AsString(), "5");
}

TEST_F(UserDialogsTest, AnswerToEscapeAndReturn) {
    const auto l_groups = [this] { return static_cast<QDialog*>(OpenGroups("anna")); };
    const auto l_config = [this] { return static_cast<QDialog*>(new UserGroupConfigDialog(m_window.get())); };
    const auto l_add = [this] { return static_cast<QDialog*>(new AddUserDialog(m_window.get())); };
    const auto l_ignore = [this] { return static_cast<QDialog*>(new IgnoredUsersDialog(m_window.get())); };
    const std::pair<std::function<QDialog*()>, bool> l_dialogs[] = {
        {l_groups, true}, {l_config, true}, {l_ignore, true}, {l_add, false}};
    for (const auto& [l_make, l_closesOnReturn] : l_dialogs) {
        const QPointer<QDialog> lp_escaped = Shown(l_make());
        EXPECT_FALSE(lp_escaped->isModal());
        QTest::keyClick(lp_escaped->focusWidget() ? lp_escaped->focusWidget() : lp_escaped, Qt::Key_Escape);
        EXPECT_TRUE(IsGone(lp_escaped));
        const QPointer<QDialog> lp_returned = Shown(l_make());
        QTest::keyClick(lp_returned->focusWidget() ? lp_returned->focusWidget() : lp_returned, Qt::Key_Return);
        if (l_closesOnReturn) {
            EXPECT_TRUE(IsGone(lp_returned));
        } else {
            EXPECT_TRUE(lp_returned->isVisible());
        }
    }
}

TEST_F(UserDialogsTest, ReturnTakesTheNameThatWasTyped) {
    const QPointer<QDialog> lp_groups = OpenGroups("anna");
    QLineEdit* const lp_group = Part<QLineEdit>(lp_groups, "newGroupEdit");
    QTest::keyClicks(lp_group, QStringLiteral("choir"));
    QTest::keyClick(lp_group, Qt::Key_Return);
    EXPECT_TRUE(d.GetType("user_list_group")->HasItem("choir"));
    ASSERT_TRUE(lp_groups && lp_groups->isVisible());
    QTest::keyClick(lp_group, Qt::Key_Return);
    EXPECT_TRUE(IsGone(lp_groups));

    QDialog* const lp_ignored = Shown(new IgnoredUsersDialog(m_window.get()));
    QLineEdit* const lp_user = Part<QLineEdit>(lp_ignored, "ignoreEdit");
    QListWidget* const lp_users = Part<QListWidget>(lp_ignored, "ignoredUsersList");
    for (const char* lp_name : {"troll", "Bore"}) {
        QTest::keyClicks(lp_user, QLatin1String(lp_name));
        QTest::keyClick(lp_user, Qt::Key_Return);
    }
    EXPECT_THAT(IgnoredUsers(), ElementsAre("Bore", "troll"));
    SetIgnored("noise", true); // from elsewhere
    EXPECT_THAT(Rows(lp_users), ElementsAre("Bore", "noise", "troll"));
    EXPECT_FALSE(Part<QPushButton>(lp_ignored, "stopIgnoringButton")->isEnabled());
    lp_users->item(0)->setSelected(true);
    lp_users->item(2)->setSelected(true);
    Part<QPushButton>(lp_ignored, "stopIgnoringButton")->click();
    EXPECT_THAT(IgnoredUsers(), ElementsAre("noise"));
    EXPECT_THAT(Rows(lp_users), ElementsAre("noise"));
}

TEST_F(UserDialogsTest, AddUserSaysWhatIsMissing) {
    QDialog* const lp_dialog = Shown(new AddUserDialog(m_window.get()));
    QLineEdit* const lp_name = Part<QLineEdit>(lp_dialog, "userNameEdit");
    const auto l_status = [&] { return Part<QLineEdit>(lp_dialog, "statusEdit")->text().toStdString(); };
    EXPECT_EQ(l_status(), "");
    lp_name->setText(QStringLiteral(" \t"));
    QTest::keyClick(lp_name, Qt::Key_Return);
    EXPECT_EQ(l_status(), "User name must not be empty.");
    lp_name->setText(QStringLiteral("anna"));
    QTest::keyClick(lp_name, Qt::Key_Return);
    EXPECT_EQ(l_status(), "Must be online to add a user to your list.");
    EXPECT_FALSE(lp_name->isReadOnly());
    EXPECT_FALSE(d.GetType("user")->HasItem("anna"));
}

TEST_F(UserDialogsTest, HostileNamesAreShownSafely) {
    for (const std::string& l_name : HostileTexts()) {
        Group(l_name);
    }
    QDialog* const lp_config = Shown(new UserGroupConfigDialog(m_window.get()));
    QListWidget* const lp_configured = Part<QListWidget>(lp_config, "groupList");
    for (int l_row = 0; l_row < 9; ++l_row) {
        lp_configured->setCurrentRow(l_row);
        const QString l_title = Part<QGroupBox>(lp_config, "groupBox")->title();
        EXPECT_TRUE(IsShowable(l_title, 70)) << l_title.toStdString();
        EXPECT_EQ(l_title.count(QLatin1Char('&')) % 2, 0) << "marks a shortcut";
        Part<QSpinBox>(lp_config, "prioritySpinBox")->setValue(l_row + 1);
    }
    for (const std::string& l_name : HostileTexts()) {
        EXPECT_TRUE(Group(l_name).IsConnected("group_download_priority")) << l_name.substr(0, 40);

        QDialog* const lp_groups = OpenGroups(l_name);
        EXPECT_TRUE(IsShowable(lp_groups->windowHandle()->title(), 64 + 19));
        QListWidget* const lp_list = Part<QListWidget>(lp_groups, "groupListWidget");
        for (int l_row = 0; l_row < 9; ++l_row) {
            EXPECT_TRUE(IsShowable(lp_list->item(l_row)->text(), 512));
            lp_list->item(l_row)->setCheckState(Qt::Checked);
        }
        EXPECT_EQ(GroupsOf(l_name).size(), 9U);
        delete lp_groups;
    }
    EXPECT_EQ(d.GetType("user_list_group")->CountItems(), 9U);
    // "[*]" has a meaning of its own in window titles.
    EXPECT_EQ(OpenGroups("*")->windowHandle()->title().toStdString(), "User Groups for [*]");
}
