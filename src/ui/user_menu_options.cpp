#include "ui/user_menu_options.h"

#include "peer/peer_messenger.h"
#include "store/data.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/focus_widget.h"
#include "ui/icon.h"
#include "ui/main_window.h"
#include "ui/user_groups_dialog.h"

#include <QAction>
#include <QByteArray>
#include <QMenu>

namespace {

ItemPtr UserItem(const std::string& i_user) {
    return d.GetType("user")->GetItem(i_user);
}

void OpenUserGroups(const std::string& i_user) {
    UserGroupsDialog* const lp_dialog = new UserGroupsDialog(i_user, mainWindow);
    lp_dialog->show();
}

// The tab of the list that the user has sent us, if one stands.
QWidget* ShareTab(const std::string& i_user) {
    const ItemPtr l_share = d.GetType("user")->HasItem(i_user)["user_share"];
    return l_share ? l_share["user_share_tab"].AsPointer<QWidget>() : nullptr;
}

} // namespace

UserMenuOptions::UserMenuOptions(QMenu* ip_menu, std::string i_user, QObject* ip_parent) : QObject(ip_parent) {
    const auto l_add = [&](const QString& i_text, const char* ip_icon, void (UserMenuOptions::*i_slot)()) {
        QAction* const lp_action = ip_menu->addAction(LoadIcon(QLatin1String(ip_icon)), i_text);
        lp_action->setData(QByteArray::fromStdString(i_user));
        connect(lp_action, &QAction::triggered, this, i_slot);
    };
    const ItemPtr l_user = d.GetType("user")->HasItem(i_user);

    l_add(tr("Message user"), ":/icons/chat_icon", &UserMenuOptions::OnMessageUser);
    if (l_user && l_user.IsConnected("in_user_list")) {
        l_add(tr("Set user's groups"), ":/icons/users_icon", &UserMenuOptions::OnSetUserGroups);
        l_add(tr("Remove user from list"), ":/icons/remove_user_icon", &UserMenuOptions::OnRemoveUser);
    } else {
        l_add(tr("Add user to list"), ":/icons/add_user_icon", &UserMenuOptions::OnAddUser);
    }
    l_add(tr("Browse user's files"), ":/icons/browse_icon", &UserMenuOptions::OnBrowseUser);
    ip_menu->addSeparator();
    if (l_user && l_user.IsConnected("unshared")) {
        l_add(tr("Re-share files with user"), ":/icons/browse_icon", &UserMenuOptions::OnReshareFilesWithUser);
    } else {
        l_add(tr("Unshare files from user"), ":/icons/browse_icon", &UserMenuOptions::OnUnshareFilesFromUser);
    }
}

std::string UserMenuOptions::SenderUser() const {
    return qobject_cast<QAction*>(sender())->data().toByteArray().toStdString();
}

void UserMenuOptions::OnMessageUser() {
    mainWindow->OpenChatForm(SenderUser());
}

// The user may have left the list while the menu stood open.
void UserMenuOptions::OnSetUserGroups() {
    const std::string l_user = SenderUser();
    if (UserItem(l_user).IsConnected("in_user_list")) {
        OpenUserGroups(l_user);
    }
}

void UserMenuOptions::OnRemoveUser() {
    UserItem(SenderUser()).Disconnect("in_user_list");
}

void UserMenuOptions::OnAddUser() {
    const std::string l_user = SenderUser();
    UserItem(l_user).NewItem("in_user_list");
    OpenUserGroups(l_user);
}

void UserMenuOptions::OnBrowseUser() {
    const std::string l_user = SenderUser();
    if (QWidget* const lp_tab = ShareTab(l_user)) {
        FocusWidgetAndParents(lp_tab);
    } else {
        peerMessenger->GetUserSharedFiles(l_user);
    }
}

void UserMenuOptions::OnUnshareFilesFromUser() {
    transferQueueManager->UnshareUser(SenderUser());
}

void UserMenuOptions::OnReshareFilesWithUser() {
    transferQueueManager->ReshareUser(SenderUser());
}

void OpenUserMenu(const std::string& i_user, const QPoint& i_globalPosition, QWidget* ip_parent) {
    QMenu* const lp_menu = new QMenu(ip_parent);
    lp_menu->setAttribute(Qt::WA_DeleteOnClose);
    new UserMenuOptions(lp_menu, i_user, lp_menu);
    lp_menu->popup(i_globalPosition);
}
