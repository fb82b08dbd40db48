// The context menu for a user, the same in every list of users: rooms, transfers, search results, the user list.
#pragma once

#include <QObject>

#include <string>

class QMenu;
class QPoint;
class QWidget;

class UserMenuOptions : public QObject {
    Q_OBJECT

public:
    // Fills the menu for this user as the store knows them now, if it does. The name is the user's bytes, not a text
    // made for display. The menu's actions work for as long as this object lives.
    UserMenuOptions(QMenu* ip_menu, std::string i_user, QObject* ip_parent);

private:
    void OnMessageUser();
    void OnSetUserGroups();
    void OnRemoveUser();
    void OnAddUser();
    void OnBrowseUser();
    void OnUnshareFilesFromUser();
    void OnReshareFilesWithUser();

    // Of the action that calls.
    std::string SenderUser() const;
};

// Opens that menu and returns at once: no list of users waits for its user, who may close its tab meanwhile. The menu
// frees itself.
void OpenUserMenu(const std::string& i_user, const QPoint& i_globalPosition, QWidget* ip_parent);
