// The "Users" page: the user list with who is online and in which groups, and the users from whom all shares are
// withheld. Both follow the store; a user can be in both.
#pragma once

#include "store/data.h"

#include <QWidget>

class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;

class UserListForm : public QWidget, public DataHandler {
    Q_OBJECT

public:
    explicit UserListForm(QWidget* ip_parent = nullptr);

    // Fills the lists, has the server follow every user of the list, and follows the store from now on. Once, after the
    // store has been loaded; needs gp_server, sizeManager and actionBar.
    void Init();

private:
    void BuildLayout();
    QWidget* MakePage(const char* ip_name, QTreeWidget* ip_list);
    void Fill();
    void WatchUsers();
    void RegisterActions();

    void AddUserRow(ItemPtr i_user);
    void AddUnsharedRow(ItemPtr i_user);
    void UpdateUserGroupsDisplay(ItemPtr i_user);

    void OnUserOnline(Item* ip_user);
    void OnUserOffline(Item* ip_user);
    void OnUserAddedToList(Item* ip_user);
    void OnUserRemovedFromList(Item* ip_user);
    void OnUserUnshared(Item* ip_user);
    void OnUserReshared(Item* ip_user);
    void OnUserGroupAdded(Item* ip_user);
    void OnUserGroupRemoved(Item* ip_user);

    void OnActionTriggered(std::string i_id);
    void OnUserActivated(QTreeWidgetItem* ip_row);
    void OnContextMenuRequested(QTreeWidget* ip_list, const QPoint& i_point);

    QTabWidget* mp_tabWidget = nullptr;
    QWidget* mp_userListTab = nullptr;
    QTreeWidget* mp_userList = nullptr;
    QTreeWidget* mp_unsharedList = nullptr;
};
