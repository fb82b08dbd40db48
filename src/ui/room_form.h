// The tab of one room that the user is in: what is said, the line to write in, and who is there. It goes when the room
// is left; a lost connection leaves it standing and it enters the room again by itself.
#pragma once

#include "store/data.h"

#include <QWidget>

#include <string>

class ChatEdit;
class ChatView;
class QSplitter;
class QTreeWidgetItem;
class RoomUserList;

class RoomForm : public QWidget, public DataHandler {
    Q_OBJECT

public:
    // The `room` item finds its form by a `room_form` item, which lives as long as the room is not left.
    RoomForm(std::string i_room, QWidget* ip_parent);
    ~RoomForm() override;

    // Once the form lies in its tab: takes on the sizes that the user has given to other rooms.
    void Init();

    void AddStatusMessage(std::string i_text);

public Q_SLOTS:
    void OnRoomChat(std::string i_room, std::string i_user, std::string i_chat);
    void OnUserItemClicked(QTreeWidgetItem* ip_item, int i_column);
    void OnEnterPressed();
    void OnConnected();
    void OnDisconnected();

protected:
    void showEvent(QShowEvent* ip_event) override;

private:
    void OnUserAdded(Item* ip_user);
    void OnUserRemoved(Item* ip_user);
    void OnLeftRoom(Item* ip_room);
    void OnRoomAutojoinOn(Item* ip_room);
    void OnRoomAutojoinOff(Item* ip_room);

    void BuildLayout();
    void WatchStore();
    void WatchUsers(ItemPtr i_room);
    void ShowAutojoin(bool i_isOn);
    void Alert(const std::string& i_user);
    void MarkTab(bool i_isMarked);

    const std::string m_room;
    QSplitter* mp_splitter = nullptr;
    ChatView* mp_chatView = nullptr;
    ChatEdit* mp_chatEdit = nullptr;
    RoomUserList* mp_userList = nullptr;
};
