#include "ui/main_window_layout.h"

#include "ui/action_set_tool_bar.h"
#include "ui/diagnostics_form.h"
#include "ui/empty_list_hint.h"
#include "ui/empty_tabs_hint.h"
#include "ui/main_window.h"
#include "ui/notice_bar.h"
#include "ui/room_tab_widget.h"
#include "ui/search_form.h"
#include "ui/shares_form.h"
#include "ui/status_bar.h"
#include "ui/tab_closer.h"
#include "ui/tab_page.h"
#include "ui/transfers_form.h"
#include "ui/user_list_form.h"

#include <QAction>
#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr QSize c_windowSize(1000, 600);
constexpr QSize c_toolBarIconSize(16, 16);
constexpr QSize c_flagSize(16, 11);

template <typename Widget>
Widget* Named(Widget* ip_widget, const char* i_name) {
    ip_widget->setObjectName(QLatin1String(i_name));
    return ip_widget;
}

QString Text(const char* i_text) {
    return MainWindow::tr(i_text);
}

// A setting that is shown here and changed through the tool bar.
QLineEdit* MakeReadOnlyEdit(const char* i_name) {
    QLineEdit* const lp_edit = Named(new QLineEdit, i_name);
    lp_edit->setReadOnly(true);
    return lp_edit;
}

// For a screen reader: nothing on the screen says it of a list or of the tabs themselves.
void CallTabs(QTabWidget* ip_tabs, const QString& i_name) {
    ip_tabs->setAccessibleName(i_name);
    ip_tabs->tabBar()->setAccessibleName(i_name);
}

QWidget* MakePageOf(const char* i_name, QWidget* ip_content) {
    QWidget* const lp_page = Named(new QWidget, i_name);
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    lp_layout->addWidget(ip_content);
    return lp_page;
}

} // namespace

MainWindowLayout::MainWindowLayout(MainWindow* ip_window) {
    // Those of a static library wait to be asked for.
    Q_INIT_RESOURCE(icons);
    Q_INIT_RESOURCE(flags);
    ip_window->setWindowTitle(QStringLiteral("TidewellQt nightly build 9/21/2011"));
    ip_window->resize(c_windowSize);
    AddMenu(ip_window);

    mainToolBar = Named(new ActionSetToolBar(ip_window), "mainToolBar");
    mainToolBar->setWindowTitle(Text("Actions"));
    mainToolBar->setMovable(false);
    mainToolBar->setIconSize(c_toolBarIconSize);
    mainToolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mainToolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    ip_window->addToolBar(Qt::TopToolBarArea, mainToolBar);

    AddPages(ip_window);
    DropFrames();
    tabControl->setCurrentWidget(roomsPage);
    ip_window->setCentralWidget(tabControl);

    noticeBar = Named(new NoticeBar(ip_window), "noticeBar");
    ip_window->addToolBar(Qt::BottomToolBarArea, noticeBar);
    statusBar = Named(new StatusBar(ip_window), "statusBar");
    ip_window->setStatusBar(statusBar);
}

void MainWindowLayout::AddMenu(MainWindow* ip_window) {
    connectionMenu = ip_window->menuBar()->addMenu(Text("Connection"));
    actionConnect = Named(connectionMenu->addAction(Text("&Connect")), "action_Connect");
    actionDisconnect = Named(connectionMenu->addAction(Text("&Disconnect")), "action_Disconnect");
    actionData = Named(connectionMenu->addAction(Text("&Data")), "action_Data");
    actionDisconnect->setEnabled(false);
}

// Each form stands in a file of its own; those that need the store have an Init() for the window's constructor.
void MainWindowLayout::AddPages(MainWindow* ip_window) {
    diagnosticsForm = Named(new DiagnosticsForm(ip_window), "diagnosticsForm"); // first: the others may log
    transfersForm = Named(new TransfersForm, "transfersForm");
    MakeRoomsPage();
    MakeChatPage();
    searchForm = Named(new SearchForm(ip_window), "searchForm");
    userListForm = Named(new UserListForm, "userListForm");
    sharesForm = Named(new SharesForm, "sharesForm");
    MakeOptionsPage();

    tabControl = Named(new QTabWidget, "tabControl");
    CallTabs(tabControl, Text("Pages"));
    tabControl->addTab(transfersForm, Text("Transfers"));
    tabControl->addTab(roomsPage, Text("Rooms"));
    tabControl->addTab(chatPage, Text("Chat"));
    tabControl->addTab(searchForm, Text("Search"));
    tabControl->addTab(userListForm, Text("Users"));
    tabControl->addTab(sharesForm, Text("Shares"));
    tabControl->addTab(optionsPage, Text("Options"));
    tabControl->addTab(diagnosticsForm, Text("Diagnostics"));
}

// Tabs lie in tabs: frames in frames would take room, and time to paint.
void MainWindowLayout::DropFrames() {
    tabControl->setDocumentMode(true);
    for (QTabWidget* const lp_tabs : tabControl->findChildren<QTabWidget*>()) {
        lp_tabs->setDocumentMode(true);
    }
}

void MainWindowLayout::MakeRoomsPage() {
    roomsTabControl = Named(new RoomTabWidget, "roomsTabControl");
    CallTabs(roomsTabControl, Text("Rooms you are in"));
    new EmptyTabsHint(roomsTabControl, Text("You are in no room. A double click in the list enters one."));

    roomList = Named(new QTreeWidget, "roomList");
    roomList->setAccessibleName(Text("Rooms of the server"));
    roomList->setIconSize(c_flagSize);
    roomList->setRootIsDecorated(false);
    roomList->setItemsExpandable(false);
    roomList->setUniformRowHeights(true);
    roomList->setAllColumnsShowFocus(true);
    roomList->setSortingEnabled(true);
    new EmptyListHint(roomList,
                      Text("The list is empty. \"Refresh Room List\" asks the server for it, \"Create Room\" makes "
                           "a new one."));

    roomSplitter = Named(new QSplitter(Qt::Horizontal), "roomSplitter");
    roomSplitter->addWidget(roomsTabControl);
    roomSplitter->addWidget(roomList);
    roomSplitter->setStretchFactor(0, 1);
    roomSplitter->setStretchFactor(1, 0);
    roomsPage = MakePageOf("roomsPage", roomSplitter);
}

void MainWindowLayout::MakeChatPage() {
    chatTabControl = Named(new QTabWidget, "chatTabControl");
    CallTabs(chatTabControl, Text("Private chats"));
    chatTabControl->setTabsClosable(true);
    new TabCloser(chatTabControl);
    new EmptyTabsHint(chatTabControl, Text("No private chats. \"Message user\" in the menu of a user opens one, and so "
                                           "does a message from somebody."));
    chatPage = MakePageOf("chatPage", chatTabControl);
}

void MainWindowLayout::MakeOptionsPage() {
    MakeLoginPage();
    MakeFileSharingPage();
    optionsTabControl = Named(new QTabWidget, "optionsTabControl");
    CallTabs(optionsTabControl, Text("Groups of options"));
    optionsTabControl->setTabShape(QTabWidget::Triangular);
    optionsTabControl->addTab(loginPage, Text("Login"));
    optionsTabControl->addTab(fileSharingPage, Text("File Sharing"));
    optionsPage = MakePageOf("optionsPage", optionsTabControl);
}

void MainWindowLayout::MakeLoginPage() {
    usernameEdit = MakeReadOnlyEdit("usernameEdit");
    serverHostEdit = MakeReadOnlyEdit("serverHostEdit");
    serverPortEdit = MakeReadOnlyEdit("serverPortEdit");
    listeningPortEdit = MakeReadOnlyEdit("listeningPortEdit");
    uPnPCheckBox = Named(new QCheckBox(Text("use UPnP")), "uPnPCheckBox");

    loginPage = Named(new QWidget, "loginPage");
    QFormLayout* const lp_layout = new QFormLayout(loginPage);
    UseWholeTab(lp_layout);
    lp_layout->addRow(Text("Username"), usernameEdit);
    lp_layout->addRow(Text("Server"), serverHostEdit);
    lp_layout->addRow(Text("Server port"), serverPortEdit);
    lp_layout->addRow(Text("Listening port"), listeningPortEdit);
    lp_layout->addRow(QString(), uPnPCheckBox);
}

void MainWindowLayout::MakeFileSharingPage() {
    downloadFolderEdit = MakeReadOnlyEdit("downloadFolderEdit");
    sharedFoldersList = Named(new QTreeWidget, "sharedFoldersList");
    sharedFoldersList->setHeaderLabels({Text("Shared folder"), Text("Accessible to")});
    sharedFoldersList->setColumnWidth(0, 400);
    sharedFoldersList->setRootIsDecorated(false);
    sharedFoldersList->setUniformRowHeights(true);
    sharedFoldersList->setAllColumnsShowFocus(true);
    sharedFoldersList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    sharedFoldersList->setAccessibleName(Text("Shared Folders"));
    new EmptyListHint(sharedFoldersList, Text("You share nothing yet."));
    QLabel* const lp_foldersLabel = new QLabel(Text("Shared Folders"));
    lp_foldersLabel->setBuddy(sharedFoldersList);

    fileSharingPage = Named(new QWidget, "fileSharingPage");
    QVBoxLayout* const lp_layout = new QVBoxLayout(fileSharingPage);
    UseWholeTab(lp_layout);
    QFormLayout* const lp_form = new QFormLayout;
    lp_form->addRow(Text("Download Folder"), downloadFolderEdit);
    lp_layout->addLayout(lp_form);
    lp_layout->addWidget(lp_foldersLabel);
    lp_layout->addWidget(sharedFoldersList);
}
