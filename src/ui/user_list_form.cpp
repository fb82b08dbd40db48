#include "ui/user_list_form.h"

#include "app/text.h"
#include "net/server.h"
#include "ui/action_set_tool_bar.h"
#include "ui/add_user_dialog.h"
#include "ui/display_text.h"
#include "ui/empty_list_hint.h"
#include "ui/focus_widget.h"
#include "ui/main_window.h"
#include "ui/row_name.h"
#include "ui/size_manager.h"
#include "ui/tab_page.h"
#include "ui/user_group_config_dialog.h"
#include "ui/user_list_ignore_dialog.h"
#include "ui/user_list_row.h"
#include "ui/user_menu_options.h"

#include <QHeaderView>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

enum Column { UserColumn, OnlineColumn, GroupsColumn };

constexpr int c_userWidth = 200;
constexpr int c_onlineWidth = 100;

QTreeWidget* MakeList(const char* ip_name, const QStringList& i_headers) {
    QTreeWidget* const lp_list = new QTreeWidget;
    lp_list->setObjectName(QLatin1String(ip_name));
    lp_list->setHeaderLabels(i_headers);
    lp_list->setColumnWidth(UserColumn, c_userWidth);
    lp_list->setRootIsDecorated(false);
    lp_list->setItemsExpandable(false);
    lp_list->setUniformRowHeights(true);
    lp_list->setAllColumnsShowFocus(true);
    lp_list->setContextMenuPolicy(Qt::CustomContextMenu);
    return lp_list;
}

QTreeWidgetItem* MakeRow(QTreeWidget* ip_list, ItemPtr i_user, const char* ip_nodeType) {
    QTreeWidgetItem* const lp_row = new UserListRow;
    lp_row->setText(UserColumn, CellText(i_user.AsView()));
    SetRowName(*lp_row, i_user.AsView());
    ip_list->addTopLevelItem(lp_row);
    i_user.Connect(d.GetType(ip_nodeType)->GetItem(lp_row));
    return lp_row;
}

// Null if the user has none.
QTreeWidgetItem* RowOf(ItemPtr i_user, const char* ip_nodeType) {
    return i_user[ip_nodeType].AsPointer<QTreeWidgetItem>();
}

void RemoveRow(ItemPtr i_user, const char* ip_nodeType) {
    const ItemPtr l_node = i_user[ip_nodeType];
    if (l_node) {
        delete l_node.AsPointer<QTreeWidgetItem>();
        l_node.Remove();
    }
}

void CreateNodeType(const char* ip_name) {
    d.NewType(ip_name, true, false, true)->RelateToType(d.GetType("user"), One, One, false);
}

// Paths, told with the user.
PathNode* UserWith(const char* ip_type, PathNodeRelation i_relation) {
    PathNode* const lp_user = new PathNode(d, "user");
    new PathNode(lp_user, ip_type, i_relation);
    return lp_user;
}

PathNode* ListedUserWith(const char* ip_type, PathNodeRelation i_relation) {
    PathNode* const lp_user = UserWith(ip_type, i_relation);
    new PathNode(lp_user, "in_user_list", ConnectedCondition);
    return lp_user;
}

PathNode* UserWithGroup(PathNodeRelation i_relation) {
    PathNode* const lp_user = new PathNode(d, "user");
    new PathNode(new PathNode(lp_user, "in_user_list", ConnectedCondition), "user_list_group", i_relation);
    return lp_user;
}

void SortByUser(QTreeWidget* ip_list) {
    ip_list->setSortingEnabled(true);
    ip_list->sortByColumn(UserColumn, Qt::AscendingOrder);
}

} // namespace

UserListForm::UserListForm(QWidget* ip_parent) : QWidget(ip_parent) {
    BuildLayout();
}

void UserListForm::BuildLayout() {
    mp_userList = MakeList("userList", {tr("User"), tr("Online Status"), tr("Groups")});
    mp_userList->setColumnWidth(OnlineColumn, c_onlineWidth);
    mp_userList->setAccessibleName(tr("User List"));
    new EmptyListHint(mp_userList,
                      tr("Your user list is empty. Users come into it by \"Add User\" above, or by the menu "
                         "that a right click on a user opens anywhere."));
    mp_unsharedList = MakeList("unsharedList", {tr("User")});
    mp_unsharedList->setAccessibleName(tr("Unshared"));
    new EmptyListHint(mp_unsharedList, tr("Nobody is shut out of your shared files."));

    mp_tabWidget = new QTabWidget;
    mp_tabWidget->setObjectName(QStringLiteral("tabWidget"));
    mp_tabWidget->tabBar()->setAccessibleName(tr("Lists of users"));
    mp_userListTab = MakePage("userListTab", mp_userList);
    mp_tabWidget->addTab(mp_userListTab, tr("User List"));
    mp_tabWidget->addTab(MakePage("unsharedListTab", mp_unsharedList), tr("Unshared"));
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(mp_tabWidget);

    for (QTreeWidget* lp_list : {mp_userList, mp_unsharedList}) {
        connect(lp_list, &QTreeWidget::customContextMenuRequested, this,
                [this, lp_list](const QPoint& i_point) { OnContextMenuRequested(lp_list, i_point); });
        connect(lp_list, &QTreeWidget::itemActivated, this, &UserListForm::OnUserActivated);
    }
}

QWidget* UserListForm::MakePage(const char* ip_name, QTreeWidget* ip_list) {
    QWidget* const lp_page = new QWidget;
    lp_page->setObjectName(QLatin1String(ip_name));
    lp_page->setFocusProxy(ip_list);
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    UseWholeTab(lp_layout);
    lp_layout->addWidget(ip_list);
    return lp_page;
}

void UserListForm::Init() {
    CreateNodeType("user_list_node");
    CreateNodeType("unshared_list_node");
    Fill();
    WatchUsers();
    RegisterActions();
    sizeManager->RegisterTreeWidget(QStringLiteral("user_list"), mp_userList);
}

void UserListForm::Fill() {
    for (Item* lp_user : g("user").Connected("in_user_list")) {
        AddUserRow(lp_user);
    }
    SortByUser(mp_userList);
    for (Item* lp_user : g("user").Connected("unshared")) {
        AddUnsharedRow(lp_user);
    }
    SortByUser(mp_unsharedList);
}

void UserListForm::WatchUsers() {
    const auto l_watch = [this](PathNode* ip_path, void (UserListForm::*i_method)(Item*)) {
        d.AddPathEventHandler(ip_path, MakeHandler(this, i_method));
    };
    l_watch(ListedUserWith("is_online", NewlyConnected), &UserListForm::OnUserOnline);
    l_watch(ListedUserWith("is_online", NewlyDisconnected), &UserListForm::OnUserOffline);
    l_watch(UserWith("in_user_list", NewlyConnected), &UserListForm::OnUserAddedToList);
    l_watch(UserWith("in_user_list", NewlyDisconnected), &UserListForm::OnUserRemovedFromList);
    l_watch(UserWith("unshared", NewlyConnected), &UserListForm::OnUserUnshared);
    l_watch(UserWith("unshared", NewlyDisconnected), &UserListForm::OnUserReshared);
    l_watch(UserWithGroup(NewlyConnected), &UserListForm::OnUserGroupAdded);
    l_watch(UserWithGroup(NewlyDisconnected), &UserListForm::OnUserGroupRemoved);
}

void UserListForm::RegisterActions() {
    const auto l_add = [](const char* ip_id, const QString& i_text, const char* ip_icon) {
        actionBar->AddSetAction("user_list", ip_id, ToUtf8(i_text), ip_icon, false);
    };
    l_add("manual_add_user", tr("Add User"), ":/icons/add_user_icon");
    l_add("configure_user_groups", tr("Configure User Groups"), ":/icons/users_icon");
    l_add("configure_ignored_users", tr("Ignored Users"), ":/icons/remove_user_icon");
    actionBar->RegisterWidget(mp_userListTab, QStringLiteral("user_list"));
    actionBar->AutoFocusTabWidget(mp_tabWidget);
    connect(actionBar, &ActionSetToolBar::ActionTriggered, this, &UserListForm::OnActionTriggered);
}

void UserListForm::AddUserRow(ItemPtr i_user) {
    QTreeWidgetItem* const lp_row = MakeRow(mp_userList, i_user, "user_list_node");
    if (i_user.IsConnected("is_online")) {
        lp_row->setText(OnlineColumn, tr("Online"));
    }
    gp_server->TrackUser(i_user.AsString());
    UpdateUserGroupsDisplay(i_user);
}

void UserListForm::AddUnsharedRow(ItemPtr i_user) {
    MakeRow(mp_unsharedList, i_user, "unshared_list_node");
}

void UserListForm::UpdateUserGroupsDisplay(ItemPtr i_user) {
    QTreeWidgetItem* const lp_row = RowOf(i_user, "user_list_node");
    if (!lp_row) {
        return;
    }
    std::string l_names;
    for (const Item* lp_group : i_user["in_user_list"].GetItems("user_list_group").SortAlphabetic(true)) {
        l_names += l_names.empty() ? "" : ", ";
        l_names += lp_group->AsView();
    }
    lp_row->setText(GroupsColumn, CellText(l_names));
}

void UserListForm::OnUserOnline(Item* ip_user) {
    if (QTreeWidgetItem* const lp_row = RowOf(ip_user, "user_list_node")) {
        lp_row->setText(OnlineColumn, tr("Online"));
    }
}

void UserListForm::OnUserOffline(Item* ip_user) {
    if (QTreeWidgetItem* const lp_row = RowOf(ip_user, "user_list_node")) {
        lp_row->setText(OnlineColumn, QString());
    }
}

void UserListForm::OnUserAddedToList(Item* ip_user) {
    AddUserRow(ip_user);
}

void UserListForm::OnUserRemovedFromList(Item* ip_user) {
    RemoveRow(ip_user, "user_list_node");
}

void UserListForm::OnUserUnshared(Item* ip_user) {
    AddUnsharedRow(ip_user);
}

void UserListForm::OnUserReshared(Item* ip_user) {
    RemoveRow(ip_user, "unshared_list_node");
}

void UserListForm::OnUserGroupAdded(Item* ip_user) {
    UpdateUserGroupsDisplay(ip_user);
}

void UserListForm::OnUserGroupRemoved(Item* ip_user) {
    UpdateUserGroupsDisplay(ip_user);
}

void UserListForm::OnActionTriggered(std::string i_id) {
    if (i_id == "manual_add_user") {
        (new AddUserDialog(mainWindow))->show();
    } else if (i_id == "configure_user_groups") {
        if (userGroupConfigDialog) {
            FocusWidget(userGroupConfigDialog);
        } else {
            (new UserGroupConfigDialog(mainWindow))->show();
        }
    } else if (i_id == "configure_ignored_users") {
        (new IgnoredUsersDialog(mainWindow))->show();
    }
}

void UserListForm::OnUserActivated(QTreeWidgetItem* ip_row) {
    mainWindow->OpenChatForm(RowName(*ip_row));
}

void UserListForm::OnContextMenuRequested(QTreeWidget* ip_list, const QPoint& i_point) {
    if (const QTreeWidgetItem* const lp_row = ip_list->itemAt(i_point)) {
        OpenUserMenu(RowName(*lp_row), ip_list->viewport()->mapToGlobal(i_point), this);
    }
}
