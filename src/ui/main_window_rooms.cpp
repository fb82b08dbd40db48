// The room list, and the tabs of rooms and private chats.
#include "ui/main_window.h"

#include "app/text.h"
#include "net/server.h"
#include "ui/action_set_tool_bar.h"
#include "ui/chat_form.h"
#include "ui/chat_inbox.h"
#include "ui/display_text.h"
#include "ui/focus_widget.h"
#include "ui/main_window_layout.h"
#include "ui/room_form.h"
#include "ui/room_list.h"
#include "ui/room_tab_widget.h"
#include "ui/row_name.h"

#include <QTabWidget>
#include <QTreeWidget>

// Nothing comes of it for a room that the user is in already, so its tab is brought to the front here.
void MainWindow::EnterRoom(const std::string& i_room) {
    if (i_room.empty()) {
        return;
    }
    gp_server->EnterRoom(i_room);
    if (const ItemPtr l_form = d.GetType("room")->HasItem(i_room)["room_form"]) {
        FocusWidgetAndParents(l_form.AsPointer<RoomForm>());
    }
}

void MainWindow::EnterSelectedRoom() {
    EnterRoom(mp_roomList->SelectedRoom());
}

void MainWindow::OnRoomListItemDoubleClicked(QTreeWidgetItem* ip_row, int i_column) {
    if (i_column == 0 && ip_row) {
        EnterRoom(RowName(*ip_row));
    }
}

// A form publishes its room's name as text; the room on show is known byte for byte.
std::string MainWindow::RoomOfKey() const {
    const QWidget* const lp_form = mp_layout->roomsTabControl->currentWidget();
    const ItemPtr l_room = lp_form ? d.GetType("room_form")->HasItem(lp_form)["room"] : ItemPtr();
    return l_room && ToQString(l_room.AsView()) == actionBar->GetKey(QStringLiteral("room"))
               ? l_room.AsString()
               : actionBar->GetKeyBytes("room");
}

void MainWindow::LeaveRoom() {
    gp_server->LeaveRoom(RoomOfKey());
}

void MainWindow::ToggleRoomAutojoin() {
    const std::string l_name = RoomOfKey();
    if (l_name.empty()) {
        return;
    }
    const ItemPtr l_room = d.GetType("room")->GetItem(l_name);
    if (l_room.IsConnected("room_autojoin")) {
        l_room.Disconnect("room_autojoin");
    } else {
        l_room.NewItem("room_autojoin");
    }
}

void MainWindow::OnRoomUserCountAdded(ConnectionInfo& i_info) {
    mp_roomList->SetUserCount(i_info.m_itemFrom->AsView(), i_info.m_itemTo->AsView());
}

void MainWindow::OnEnteredRoom(ConnectionInfo& i_info) {
    const ItemPtr l_room = i_info.m_itemFrom;
    if (l_room["room_form"]) {
        return;
    }
    RoomForm* const lp_form = new RoomForm(l_room.AsString(), mp_layout->roomsTabControl);
    mp_layout->roomsTabControl->addTab(lp_form, TitleText(l_room.AsView()));
    lp_form->Init();
    FocusWidget(lp_form);
}

ChatForm* MainWindow::GetChatForm(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    if (!l_user["user_chat_widget"]) {
        mp_layout->chatTabControl->addTab(new ChatForm(i_user, mp_layout->chatTabControl), TitleText(i_user));
    }
    return l_user["user_chat_widget"].AsPointer<ChatForm>();
}

void MainWindow::OpenChatForm(const std::string& i_user) {
    FocusWidgetAndParents(GetChatForm(i_user));
}

void MainWindow::MessageUser() {
    const std::string l_user = actionBar->GetKeyBytes("user");
    if (!l_user.empty()) {
        GetChatForm(l_user)->Focus();
    }
}

void MainWindow::OnPrivateChat(std::string i_user, std::string i_text, int, bool) {
    mp_chatInbox->Receive(i_user, i_text);
}

void MainWindow::OnChatTabClosed(int i_index) {
    ChatForm* const lp_form = qobject_cast<ChatForm*>(mp_layout->chatTabControl->widget(i_index));
    if (!lp_form) { // no tab, or the one of those who wait
        return;
    }
    mp_layout->chatTabControl->removeTab(i_index);
    lp_form->deleteLater();
    // The user may speak again before the form has gone.
    if (const ItemPtr l_item = d.GetType("user_chat_widget")->HasItem(lp_form)) {
        l_item.Remove();
    }
}
