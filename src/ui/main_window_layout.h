// The widgets of the main window: what there is, where it stands and what it is called. No behaviour: that is the
// window's. All widgets are children of the window; this object only knows where they are.
#pragma once

#include <QtGlobal>

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
class StatusBar;

struct MainWindowLayout {
    explicit MainWindowLayout(MainWindow* ip_window);
    Q_DISABLE_COPY_MOVE(MainWindowLayout)

    QAction* actionConnect = nullptr;
    QAction* actionDisconnect = nullptr;

    QTabWidget* tabControl = nullptr;
    DiagnosticsForm* diagnosticsForm = nullptr;

    QSplitter* roomSplitter = nullptr;
    QTabWidget* roomsTabControl = nullptr;
    QTreeWidget* roomList = nullptr;

    QTabWidget* chatTabControl = nullptr;

    QTabWidget* optionsTabControl = nullptr;
    QLineEdit* usernameEdit = nullptr;
    QLineEdit* listeningPortEdit = nullptr;
    QCheckBox* uPnPCheckBox = nullptr;
    QLineEdit* downloadFolderEdit = nullptr;
    QTreeWidget* sharedFoldersList = nullptr;

    NoticeBar* noticeBar = nullptr;
    StatusBar* statusBar = nullptr;

private:
    void AddMenu(MainWindow* ip_window);
    QWidget* MakeRoomsPage();
    QWidget* MakeChatPage();
    QWidget* MakeOptionsPage();
    QWidget* MakeLoginPage();
    QWidget* MakeFileSharingPage();
};
