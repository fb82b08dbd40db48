// The widgets of the main window: what there is, where it stands and what it is called. No behaviour: that is the
// window's. All widgets are children of the window; this object only knows where they are.
#pragma once

#include <QtGlobal>

class ActionSetToolBar;
class DiagnosticsForm;
class MainWindow;
class NoticeBar;
class QAction;
class QCheckBox;
class QLineEdit;
class QMenu;
class QSplitter;
class QTabWidget;
class QTreeWidget;
class QWidget;
class RoomTabWidget;
class SearchForm;
class SharesForm;
class StatusBar;
class TransfersForm;
class UserListForm;

struct MainWindowLayout {
    explicit MainWindowLayout(MainWindow* ip_window);
    Q_DISABLE_COPY_MOVE(MainWindowLayout)

    QMenu* connectionMenu = nullptr;
    QAction* actionConnect = nullptr;
    QAction* actionDisconnect = nullptr;
    QAction* actionData = nullptr;

    ActionSetToolBar* mainToolBar = nullptr;
    QTabWidget* tabControl = nullptr;

    // The pages, in their order.
    TransfersForm* transfersForm = nullptr;
    QWidget* roomsPage = nullptr;
    QWidget* chatPage = nullptr;
    SearchForm* searchForm = nullptr;
    UserListForm* userListForm = nullptr;
    SharesForm* sharesForm = nullptr;
    QWidget* optionsPage = nullptr;
    DiagnosticsForm* diagnosticsForm = nullptr;

    QSplitter* roomSplitter = nullptr;
    RoomTabWidget* roomsTabControl = nullptr;
    QTreeWidget* roomList = nullptr;

    QTabWidget* chatTabControl = nullptr;

    QTabWidget* optionsTabControl = nullptr;
    QWidget* loginPage = nullptr;
    QLineEdit* usernameEdit = nullptr;
    QLineEdit* serverHostEdit = nullptr;
    QLineEdit* serverPortEdit = nullptr;
    QLineEdit* listeningPortEdit = nullptr;
    QCheckBox* uPnPCheckBox = nullptr;
    QWidget* fileSharingPage = nullptr;
    QLineEdit* downloadFolderEdit = nullptr;
    QTreeWidget* sharedFoldersList = nullptr;

    NoticeBar* noticeBar = nullptr;
    StatusBar* statusBar = nullptr;

private:
    void AddMenu(MainWindow* ip_window);
    void AddPages(MainWindow* ip_window);
    void DropFrames();
    void MakeRoomsPage();
    void MakeChatPage();
    void MakeOptionsPage();
    void MakeLoginPage();
    void MakeFileSharingPage();
};
