#pragma once

#include "store/data.h"

#include <QDialog>

#include <string>

class QListWidget;
class QListWidgetItem;

// Which groups a user of the user list belongs to, and new groups. Every change counts at once. Follows what happens
// to the groups elsewhere, closes when the user leaves the list, and frees itself when it closes.
class UserGroupsDialog : public QDialog, public DataHandler {
    Q_OBJECT

public:
    UserGroupsDialog(std::string i_user, QWidget* ip_parent);

private:
    void BuildLayout();
    void WatchStore();
    void AddRow(Item* ip_group);
    // The user's entry in the user list; null if it has gone.
    ItemPtr Entry() const;
    Qt::CheckState CheckStateOf(ItemPtr i_group) const;

    void OnUserGroupAdded(Item* ip_group);
    void OnMembershipChanged(ConnectionInfo& i_info);
    void OnUserRemovedFromList(ConnectionInfo& i_info);
    void OnNewGroupEntered(const std::string& i_name);
    void OnGroupItemChanged(QListWidgetItem* ip_row);

    std::string m_user;
    QListWidget* mp_groupListWidget = nullptr;
};
