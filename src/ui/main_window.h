// The one top-level window and the composition root: its constructor builds the whole program in order, its destructor
// takes it down in order. It polls nothing; handlers on the store keep its widgets up to date.
//
// One .cpp file a concern:
//   construction   start and stop
//   tool_bar       the sets of actions, and what each action does
//   rooms          the room list, the tabs of rooms and chats
//   shares         the shared folders
//   connection     the session with the server in menu, icon and boxes
//   options        the settings on show, their dialogs, and the store browser
#pragma once

#include "store/data.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>
#include <string>
#include <unordered_map>

class ChatForm;
class ChatInbox;
class DataDialog;
class QTreeWidgetItem;
class RoomList;
class SearchReplies;
class StatusWatch;
class StoreKeeper;
struct LoadResult;
struct MainWindowLayout;

class MainWindow : public QMainWindow, public DataHandler {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    // The chat with the user, made if there is none yet. It lies in its tab and may be hidden.
    ChatForm* GetChatForm(const std::string& i_user);
    // The same, brought to the front.
    void OpenChatForm(const std::string& i_user);

    // The icon of the window and of the application, by its resource name.
    void SetApplicationIcon(QString i_resource);
    // Back to the one that tells the state of the connection.
    void ResetApplicationIcon();

    // To the front, whatever state it is in.
    void RaiseWindow();

    // Drops what nothing reaches any more, then writes the store file, and returns when it is on the disk. The first
    // failure in a row shows a notice.
    void SaveStore();

protected:
    void changeEvent(QEvent* ip_event) override;
    void moveEvent(QMoveEvent* ip_event) override;
    void paintEvent(QPaintEvent* ip_event) override;
    void resizeEvent(QResizeEvent* ip_event) override;

private:
    class SizeProxy;

    // The steps of the constructor and the destructor, in the order in which they run.
    void BuildLayout();
    void CreateServer();
    void ConnectServer();
    void CreateToolBarSets();
    void FollowTabs();
    void CreatePeerMessenger();
    void CreateSettings();
    void CreateSharing();
    void CreateWindowTypes();
    void CreateForms();
    void WatchLogin();
    void LoadStore();
    void LogIn();
    void ShowSettings();
    void RegisterSizes();
    void KeepSaving();
    void DeleteManagers();

    // tool_bar
    void AddListKeys();
    void OnToolBarActionTriggered(std::string i_id);
    void OnRoomTabChanged(int i_index);
    void OnMainWindowTabChanged(int i_index);
    void FocusRooms();
    void OnOptionsTabSelectionChanged(int i_index);

    // rooms
    void EnterRoom(const std::string& i_room);
    void EnterSelectedRoom();
    void LeaveRoom();
    void ToggleRoomAutojoin();
    std::string RoomOfKey() const;
    void MessageUser();
    void OnRoomUserCountAdded(ConnectionInfo& i_info);
    void OnEnteredRoom(ConnectionInfo& i_info);
    void OnRoomListItemDoubleClicked(QTreeWidgetItem* ip_row, int i_column);
    void OnPrivateChat(std::string i_user, std::string i_text, int i_time, bool i_isSpontaneous);
    void OnChatTabClosed(int i_index);

    // shares
    void ShareFolder();
    void UnshareSelectedFolders();
    void ChooseDownloadFolder();
    void OnSharedFolderAdded(Item* ip_folder);
    void OnSharedFolderRemoved(Item* ip_folder);
    void OnSharedFolderChange(ConnectionInfo i_info);
    void OnSharedFilesRescanned(int i_added, int i_removed);

    // connection
    void OnConnectTriggered();
    void OnDisconnectTriggered();
    void OnConnecting();
    void OnConnected();
    void OnDisconnected();
    void OnConnectionFailed(std::string i_reason);

    // options
    void OnShowData();
    void OpenLoginDialog();
    void LeadToLogin();
    void ShowServer();
    void OnUPnPCheckboxToggled(bool i_checked);
    void OnUsernameChanged(Item* ip_setting);
    void OnServerChanged(Item* ip_setting);
    void OnNewListeningPortChanged(Item* ip_setting);
    void WatchSetting(const char* ip_key, void (MainWindow::*i_method)(Item*));

    void EveryFiveMinutes();
    void OnSaved();
    void OnSaveFailed(const QString& i_reason);

    using Rows = std::unordered_map<std::string, QTreeWidgetItem*>; // by the name as the store has it

    std::unique_ptr<SizeProxy> mp_sizeProxy;
    std::unique_ptr<MainWindowLayout> mp_layout;
    std::unique_ptr<StoreKeeper> mp_storeKeeper;
    std::unique_ptr<RoomList> mp_roomList;
    std::unique_ptr<ChatInbox> mp_chatInbox;
    std::unique_ptr<StatusWatch> mp_statusWatch;
    std::unique_ptr<SearchReplies> mp_searchReplies; // given to the messenger
    Rows m_folderRows;
    QPointer<DataDialog> mp_dataDialog; // deletes itself when it is closed
    bool m_needsLogin = false;          // nobody has said yet who they are; until the window is there to tell them so
};

extern MainWindow* mainWindow;
