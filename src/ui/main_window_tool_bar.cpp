// The sets of actions that the tool bar shows as the focus moves, and what each action does.
#include "ui/main_window.h"

#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/change_listening_port_dialog.h"
#include "ui/change_server_dialog.h"
#include "ui/create_room_dialog.h"
#include "ui/main_window_layout.h"
#include "ui/room_tab_widget.h"

#include <QShortcut>
#include <QTabWidget>
#include <QTreeWidget>

#include <map>

namespace {

struct ActionRow {
    const char* set;
    const char* id;
    const char* label;
    const char* icon;
    bool needsListSelection;
};

constexpr const char* c_roomIcon = ":/icons/room_icon";
constexpr const char* c_browseIcon = ":/icons/browse_icon";
constexpr const char* c_onlineIcon = ":/icons/online_icon";

// The order is that of the buttons.
constexpr ActionRow c_actions[] = {
    {"room_list", "enter_room", QT_TRANSLATE_NOOP("MainWindow", "Enter Room"), c_roomIcon, false},
    {"room_list", "create_room", QT_TRANSLATE_NOOP("MainWindow", "Create Room"), c_roomIcon, false},
    {"room_list", "refresh_room_list", QT_TRANSLATE_NOOP("MainWindow", "Refresh Room List"), c_roomIcon, false},
    {"room", "leave_room", QT_TRANSLATE_NOOP("MainWindow", "Leave Room"), c_roomIcon, false},
    {"room", "toggle_room_autojoin", QT_TRANSLATE_NOOP("MainWindow", "Toggle Room Autojoin"), c_roomIcon, false},
    {"shared_folders", "set_download_folder", QT_TRANSLATE_NOOP("MainWindow", "Set Download Folder"), c_browseIcon,
     false},
    {"shared_folders", "share_folder", QT_TRANSLATE_NOOP("MainWindow", "Share Folder"), c_browseIcon, false},
    {"shared_folders", "unshare_folder", QT_TRANSLATE_NOOP("MainWindow", "Unshare Folder"), c_browseIcon, false},
    {"shared_folders", "rescan_shares", QT_TRANSLATE_NOOP("MainWindow", "Rescan Shares"), c_browseIcon, false},
    {"login_options", "set_user_pass", QT_TRANSLATE_NOOP("MainWindow", "Change Username/Password"), c_onlineIcon,
     false},
    {"login_options", "set_listening_port", QT_TRANSLATE_NOOP("MainWindow", "Change Listening Port"), c_onlineIcon,
     false},
    {"login_options", "set_server", QT_TRANSLATE_NOOP("MainWindow", "Change Server"), c_onlineIcon, false},
    {"user", "message_user", QT_TRANSLATE_NOOP("MainWindow", "Message User"), ":/icons/chat_icon", true},
    {"user", "browse_user", QT_TRANSLATE_NOOP("MainWindow", "Browse User's Files"), c_browseIcon, true},
    {"user", "add_user", QT_TRANSLATE_NOOP("MainWindow", "Add User"), ":/icons/add_user_icon", true},
};

template <class Dialog>
void OpenDialog(QWidget* ip_parent) {
    (new Dialog(ip_parent))->show();
}

} // namespace

void MainWindow::CreateToolBarSets() {
    for (const ActionRow& l_row : c_actions) {
        actionBar->AddSetAction(l_row.set, l_row.id, tr(l_row.label).toStdString(), l_row.icon,
                                l_row.needsListSelection);
    }
    actionBar->RegisterWidget(mp_layout->roomList, QStringLiteral("room_list"));
    actionBar->AddWidgetColumnKey(mp_layout->roomList, QStringLiteral("room"), 0);
    actionBar->RegisterWidget(mp_layout->fileSharingPage, QStringLiteral("shared_folders"));
    actionBar->RegisterWidget(mp_layout->loginPage, QStringLiteral("login_options"));
    connect(actionBar, &ActionSetToolBar::ActionTriggered, this, &MainWindow::OnToolBarActionTriggered);
}

void MainWindow::OnToolBarActionTriggered(std::string i_id) {
    using Handler = void (*)(MainWindow&);
    static const std::map<std::string, Handler, std::less<>> c_handlers = {
        {"refresh_room_list", [](MainWindow&) { gp_server->GetRoomList(); }},
        {"enter_room", [](MainWindow& i_window) { i_window.EnterRoom(actionBar->GetKeyBytes("room")); }},
        {"create_room", [](MainWindow& i_window) { OpenDialog<CreateRoomDialog>(&i_window); }},
        {"leave_room", [](MainWindow& i_window) { i_window.LeaveRoom(); }},
        {"toggle_room_autojoin", [](MainWindow& i_window) { i_window.ToggleRoomAutojoin(); }},
        {"share_folder", [](MainWindow& i_window) { i_window.ShareFolder(); }},
        {"unshare_folder", [](MainWindow& i_window) { i_window.UnshareSelectedFolders(); }},
        {"set_download_folder", [](MainWindow& i_window) { i_window.ChooseDownloadFolder(); }},
        {"rescan_shares", [](MainWindow&) { sharedFoldersManager->RescanShares(); }},
        {"browse_user", [](MainWindow&) { peerMessenger->GetUserSharedFiles(actionBar->GetKeyBytes("user")); }},
        {"message_user", [](MainWindow& i_window) { i_window.MessageUser(); }},
        {"add_user",
         [](MainWindow&) { d.GetType("user")->GetItem(actionBar->GetKeyBytes("user"))->NewItem("in_user_list"); }},
        {"set_user_pass", [](MainWindow& i_window) { i_window.OpenLoginDialog(); }},
        {"set_listening_port", [](MainWindow& i_window) { OpenDialog<ChangeListeningPortDialog>(&i_window); }},
        {"set_server", [](MainWindow& i_window) { OpenDialog<ChangeServerDialog>(&i_window); }},
    };
    // The forms dispatch the actions of their own sets.
    if (const auto l_handler = c_handlers.find(i_id); l_handler != c_handlers.end()) {
        l_handler->second(*this);
    }
}

// What the hands know from other programs.
void MainWindow::AddListKeys() {
    const auto l_add = [this](QWidget* ip_widget, const QKeySequence& i_keys, auto i_method) {
        QShortcut* const lp_key = new QShortcut(i_keys, ip_widget);
        lp_key->setContext(Qt::WidgetWithChildrenShortcut);
        connect(lp_key, &QShortcut::activated, this, i_method);
    };
    l_add(mp_layout->roomList, QKeySequence(Qt::Key_Return), &MainWindow::EnterSelectedRoom);
    l_add(mp_layout->roomList, QKeySequence(Qt::Key_Enter), &MainWindow::EnterSelectedRoom);
    l_add(mp_layout->roomList, QKeySequence(QKeySequence::Refresh), [] { gp_server->GetRoomList(); });
    l_add(mp_layout->fileSharingPage, QKeySequence(QKeySequence::Refresh),
          [] { sharedFoldersManager->RescanShares(); });
    l_add(mp_layout->sharedFoldersList, QKeySequence(QKeySequence::Delete), &MainWindow::UnshareSelectedFolders);
    l_add(mp_layout->chatPage, QKeySequence(QKeySequence::Close),
          [this] { OnChatTabClosed(mp_layout->chatTabControl->currentIndex()); });
}

// The focus goes along with the tabs, and the tool bar with the focus.
void MainWindow::FollowTabs() {
    connect(mp_layout->roomsTabControl, &QTabWidget::currentChanged, this, &MainWindow::OnRoomTabChanged);
    connect(mp_layout->tabControl, &QTabWidget::currentChanged, this, &MainWindow::OnMainWindowTabChanged);
    connect(mp_layout->optionsTabControl, &QTabWidget::currentChanged, this, &MainWindow::OnOptionsTabSelectionChanged);
}

void MainWindow::OnRoomTabChanged(int i_index) {
    if (QWidget* const lp_page = mp_layout->roomsTabControl->widget(i_index)) {
        lp_page->setFocus();
    }
}

void MainWindow::OnMainWindowTabChanged(int i_index) {
    if (i_index >= 0 && mp_layout->tabControl->widget(i_index) == mp_layout->optionsPage) {
        mp_layout->optionsTabControl->currentWidget()->setFocus();
    } else if (i_index >= 0 && mp_layout->tabControl->widget(i_index) == mp_layout->roomsPage) {
        FocusRooms();
    }
}

// To where it was last, or is to be by someone on the way to a room; at first to the list.
void MainWindow::FocusRooms() {
    QWidget* const lp_last = mp_layout->roomsPage->focusWidget();
    (lp_last ? lp_last : mp_layout->roomList)->setFocus();
}

void MainWindow::OnOptionsTabSelectionChanged(int i_index) {
    if (i_index >= 0 && mp_layout->optionsTabControl->widget(i_index) == mp_layout->fileSharingPage) {
        mp_layout->sharedFoldersList->setFocus();
    }
}
