// The one top-level window and the composition root: its constructor builds the whole program in order, its destructor
// takes it down in order. It polls nothing; handlers on the store keep its widgets up to date.
#pragma once

#include "store/data.h"

#include <QMainWindow>

#include <memory>
#include <string>
#include <unordered_map>

class QTreeWidgetItem;
class SearchReplies;
struct MainWindowLayout;

class MainWindow : public QMainWindow, public DataHandler {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    // The icon of the window and of the application, by its resource name.
    void SetApplicationIcon(QString i_resource);
    // Back to the one that tells the state of the connection.
    void ResetApplicationIcon();

    // Drops what nothing reaches any more, then writes the store file. The first failure in a row shows a notice.
    void SaveStore();

private:
    // The steps of the constructor and the destructor, in the order in which they run.
    void BuildLayout();
    void ArrangeLists();
    void CreateServer();
    void ConnectServer();
    void CreatePeerMessenger();
    void CreateSettings();
    void CreateSharing();
    void CreateWindowTypes();
    void CreateTransfers();
    void WatchLogin();
    void LoadStore();
    void LogIn();
    void ShowSettings();
    void KeepSaving();
    void DeleteManagers();

    // Actions of the menu and the options.
    void OnConnectTriggered();
    void OnDisconnectTriggered();
    void OnUPnPCheckboxToggled(bool i_checked);

    // From the managers.
    void OnConnecting();
    void OnConnected();
    void OnDisconnected();
    void OnConnectionFailed(std::string i_reason);
    void OnListenFinished();
    void EveryFiveMinutes();

    // From the store.
    void OnRoomUserCountAdded(ConnectionInfo& i_info);
    void OnSharedFolderAdded(Item* ip_folder);
    void OnSharedFolderRemoved(Item* ip_folder);
    void OnSharedFolderChange(ConnectionInfo i_info);
    void OnUsernameChanged(Item* ip_setting);
    void OnNewListeningPortChanged(Item* ip_setting);

    // Opens an information box and returns at once: neither start-up nor a signal waits for the user.
    void OpenMessage(const QString& i_title, const QString& i_text);

    using Rows = std::unordered_map<std::string, QTreeWidgetItem*>; // by the name as the store has it

    std::unique_ptr<MainWindowLayout> mp_layout;
    std::unique_ptr<SearchReplies> mp_searchReplies; // given to the messenger
    Rows m_roomRows;
    Rows m_folderRows;
    // What the status bar says when the connection ends: that depends on how far it had come and on who ended it.
    QString m_disconnectedText;
    bool m_isSaved = true; // by the last attempt
};

extern MainWindow* mainWindow;
