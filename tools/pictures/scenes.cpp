#include "scenes.h"

#include "store/data.h"
#include "ui/add_shared_folder_dialog.h"
#include "ui/add_user_dialog.h"
#include "ui/change_listening_port_dialog.h"
#include "ui/change_server_dialog.h"
#include "ui/change_username_password_dialog.h"
#include "ui/chat_find_bar.h"
#include "ui/create_room_dialog.h"
#include "ui/data_dialog.h"
#include "ui/main_window.h"
#include "ui/notice_bar.h"
#include "ui/shared_files_rescanned_dialog.h"
#include "ui/user_group_config_dialog.h"
#include "ui/user_groups_dialog.h"
#include "ui/user_list_ignore_dialog.h"
#include "ui/user_menu_options.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QTabWidget>
#include <QTreeWidget>

namespace {

enum Page { Transfers, Rooms, Chat, Search, Users, Shares, Options, Diagnostics };

// The widget of that name, in the whole window or in one page.
template <class Widget>
Widget* Find(const char* ip_name, const QWidget* ip_in = mainWindow) {
    return ip_in->findChild<Widget*>(QLatin1String(ip_name));
}

QTabWidget* Tabs(const char* ip_name) {
    return Find<QTabWidget>(ip_name);
}

// The focus in the page, as after a click: the tool bar shows what can be done there.
QWidget* ShowPage(Page i_page, QWidget* ip_focus = nullptr) {
    for (QDialog* const lp_dialog : mainWindow->findChildren<QDialog*>()) {
        lp_dialog->close();
    }
    mainWindow->activateWindow();
    Tabs("tabControl")->setCurrentIndex(i_page);
    (ip_focus ? ip_focus : Tabs("tabControl")->currentWidget())->setFocus();
    return mainWindow;
}

QWidget* ShowTree(Page i_page, const char* ip_tree) {
    QTreeWidget* const lp_tree = Find<QTreeWidget>(ip_tree);
    ShowPage(i_page, lp_tree);
    lp_tree->expandAll();
    lp_tree->setCurrentItem(lp_tree->topLevelItem(0));
    return mainWindow;
}

QWidget* ShowTransfers(int i_tab, const char* ip_tree) {
    Tabs("transfersTabControl")->setCurrentIndex(i_tab);
    return ShowTree(Transfers, ip_tree);
}

QWidget* ShowRoom() {
    Tabs("roomsTabControl")->setCurrentIndex(0);
    return ShowPage(Rooms, Tabs("roomsTabControl")->currentWidget());
}

QWidget* ShowChat(int i_tab) {
    Tabs("chatTabControl")->setCurrentIndex(i_tab);
    return ShowPage(Chat, Tabs("chatTabControl")->currentWidget());
}

QWidget* ShowChatSearch() {
    ShowChat(0);
    ChatFindBar* const lp_bar = Tabs("chatTabControl")->currentWidget()->findChild<ChatFindBar*>();
    lp_bar->Open();
    QLineEdit* const lp_edit = lp_bar->findChild<QLineEdit*>();
    lp_edit->setText(QStringLiteral("bell"));
    QKeyEvent l_return(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(lp_edit, &l_return);
    return mainWindow;
}

QWidget* ShowSearch(int i_tab, const QString& i_filter) {
    Tabs("searchTabControl")->setCurrentIndex(i_tab);
    QWidget* const lp_tab = Tabs("searchTabControl")->currentWidget();
    QTreeWidget* const lp_tree = lp_tab->findChild<QTreeWidget*>();
    ShowPage(Search, lp_tree);
    lp_tree->expandAll();
    lp_tree->setCurrentItem(lp_tree->topLevelItem(0));
    lp_tab->findChild<QLineEdit*>()->setText(i_filter);
    return mainWindow;
}

QWidget* ShowUsers(int i_tab, const char* ip_tree) {
    Find<QWidget>("userListForm")->findChild<QTabWidget*>()->setCurrentIndex(i_tab);
    return ShowTree(Users, ip_tree);
}

QWidget* ShowShare() {
    QWidget* const lp_page = Find<QWidget>("sharesForm");
    QTreeWidget* const lp_folders = Find<QTreeWidget>("folderTree", lp_page);
    ShowPage(Shares, lp_folders);
    const auto l_found = lp_folders->findItems(QStringLiteral("Bells"), Qt::MatchStartsWith | Qt::MatchRecursive);
    if (!l_found.isEmpty()) {
        lp_folders->setCurrentItem(l_found.constFirst());
    }
    return mainWindow;
}

QWidget* ShowOptions(int i_page) {
    Tabs("optionsTabControl")->setCurrentIndex(i_page);
    return ShowPage(Options, Find<QWidget>(i_page == 0 ? "loginPage" : "sharedFoldersList"));
}

QWidget* ShowDiagnostics(int i_tab) {
    Find<QWidget>("diagnosticsForm")->findChild<QTabWidget*>()->setCurrentIndex(i_tab);
    return ShowPage(Diagnostics);
}

QWidget* ShowNotice() {
    Find<NoticeBar>("noticeBar")
        ->ShowNotice(QStringLiteral("The file with your settings and lists is damaged. What could be read has been "
                                    "loaded. The damaged file is kept as /home/newcomer/.Tidewell.damaged."));
    return ShowPage(Rooms, Find<QWidget>("roomList"));
}

QWidget* Shown(QWidget* ip_dialog) {
    ip_dialog->show();
    return ip_dialog;
}

template <class Dialog>
Scene DialogScene(const char* ip_name) {
    return {ip_name, [] { return Shown(new Dialog(mainWindow)); }};
}

QWidget* ShowSharingWithGroups() {
    QWidget* const lp_dialog = Shown(new AddSharedFolderDialog(mainWindow));
    Find<QLineEdit>("selectedFolderEdit", lp_dialog)->setText(QStringLiteral("/home/newcomer/Music/Sea songs"));
    Find<QCheckBox>("everyoneCheckBox", lp_dialog)->setChecked(false);
    Find<QCheckBox>("userListCheckBox", lp_dialog)->setChecked(false);
    Find<QListWidget>("groupsListWidget", lp_dialog)->item(0)->setCheckState(Qt::Checked);
    return lp_dialog;
}

QWidget* ShowRescanned() {
    auto* const lp_dialog = new SharedFilesRescannedDialog(mainWindow);
    lp_dialog->Append(SharedFilesRescannedDialog::tr("%1 files added.").arg(128));
    lp_dialog->Append(SharedFilesRescannedDialog::tr("%1 files removed.").arg(3));
    return Shown(lp_dialog);
}

QWidget* ShowGroupPriorities() {
    QWidget* const lp_dialog = Shown(new UserGroupConfigDialog(mainWindow));
    Find<QListWidget>("groupList", lp_dialog)->setCurrentRow(0);
    return lp_dialog;
}

QWidget* ShowStore() {
    DataDialog* const lp_dialog = new DataDialog(&d, mainWindow);
    lp_dialog->SetSave([] { return SaveResult(); });
    lp_dialog->show();
    QTreeWidget* const lp_types = Find<QTreeWidget>("typeList", lp_dialog);
    if (const auto l_found = lp_types->findItems(QStringLiteral("user"), Qt::MatchExactly); !l_found.isEmpty()) {
        lp_types->setCurrentItem(l_found.constFirst());
    }
    QListWidget* const lp_items = Find<QListWidget>("itemList", lp_dialog);
    if (lp_items->count() != 0) {
        lp_items->setCurrentRow(0);
        lp_dialog->OnItemClicked(lp_items->item(0));
    }
    return lp_dialog;
}

QWidget* ShowUserMenu() {
    QMenu* const lp_menu = new QMenu(mainWindow);
    new UserMenuOptions(lp_menu, "Marlo", lp_menu);
    return Shown(lp_menu);
}

QWidget* OpenBox() {
    for (QWidget* const lp_widget : QApplication::topLevelWidgets()) {
        if (lp_widget->isVisible() && qobject_cast<QMessageBox*>(lp_widget)) {
            return lp_widget;
        }
    }
    return mainWindow;
}

} // namespace

std::vector<Scene> Scenes() {
    return {
        {"transfers", [] { return ShowTransfers(0, "downloadsList"); }},
        {"transfers_uploads", [] { return ShowTransfers(1, "uploadsList"); }},
        {"rooms", [] { return ShowPage(Rooms, Find<QWidget>("roomList")); }},
        {"room", ShowRoom},
        {"chat", [] { return ShowChat(0); }},
        {"chat_find", ShowChatSearch},
        {"search", [] { return ShowSearch(0, QString()); }},
        {"search_filter", [] { return ShowSearch(0, QStringLiteral("fog")); }},
        {"search_waiting", [] { return ShowSearch(1, QString()); }},
        {"users", [] { return ShowUsers(0, "userList"); }},
        {"users_unshared", [] { return ShowUsers(1, "unsharedList"); }},
        {"shares", ShowShare},
        {"options_login", [] { return ShowOptions(0); }},
        {"options_file_sharing", [] { return ShowOptions(1); }},
        {"diagnostics", [] { return ShowDiagnostics(0); }},
        {"diagnostics_logs", [] { return ShowDiagnostics(1); }},
        {"notice", ShowNotice},
        DialogScene<ChangeUsernamePasswordDialog>("dialog_username_password"),
        DialogScene<ChangeListeningPortDialog>("dialog_listening_port"),
        DialogScene<ChangeServerDialog>("dialog_server"),
        DialogScene<CreateRoomDialog>("dialog_create_room"),
        {"dialog_add_shared_folder", ShowSharingWithGroups},
        {"dialog_shared_files_rescanned", ShowRescanned},
        DialogScene<AddUserDialog>("dialog_add_user"),
        {"dialog_user_groups", [] { return Shown(new UserGroupsDialog("Marlo", mainWindow)); }},
        {"dialog_group_priorities", ShowGroupPriorities},
        DialogScene<IgnoredUsersDialog>("dialog_ignored_users"),
        {"dialog_store", ShowStore},
        {"menu_user", ShowUserMenu},
    };
}

std::vector<Scene> FirstScenes() {
    return {
        {"first_box", OpenBox},
        {"first_login", [] { return ShowOptions(0); }},
        {"first_transfers", [] { return ShowPage(Transfers, Find<QWidget>("downloadsList")); }},
        {"first_rooms", [] { return ShowPage(Rooms, Find<QWidget>("roomList")); }},
        {"first_chat", [] { return ShowPage(Chat); }},
        {"first_search", [] { return ShowPage(Search, Find<QWidget>("searchEdit")); }},
        {"first_users", [] { return ShowPage(Users, Find<QWidget>("userList")); }},
        {"first_shares", [] { return ShowPage(Shares); }},
        {"first_file_sharing", [] { return ShowOptions(1); }},
    };
}
