#include "ui/main_window_layout.h"

#include "ui/diagnostics_form.h"
#include "ui/main_window.h"
#include "ui/notice_bar.h"
#include "ui/status_bar.h"

#include <QAction>
#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QSplitter>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr QSize c_windowSize(1000, 600);
constexpr int c_roomListWidth = 220;
constexpr int c_roomsPage = 1;

template <typename Widget>
Widget* Named(Widget* ip_widget, const char* i_name) {
    ip_widget->setObjectName(QLatin1String(i_name));
    return ip_widget;
}

QLineEdit* MakeReadOnlyEdit(const char* i_name) {
    QLineEdit* const lp_edit = Named(new QLineEdit, i_name);
    lp_edit->setReadOnly(true);
    return lp_edit;
}

QString Text(const char* i_text) {
    return MainWindow::tr(i_text);
}

} // namespace

MainWindowLayout::MainWindowLayout(MainWindow* ip_window) {
    // Those of a static library wait to be asked for.
    Q_INIT_RESOURCE(icons);
    Q_INIT_RESOURCE(flags);
    ip_window->setWindowTitle(QStringLiteral("TidewellQt nightly build 9/21/2011"));
    ip_window->resize(c_windowSize);
    AddMenu(ip_window);

    tabControl = Named(new QTabWidget, "tabControl");
    diagnosticsForm = Named(new DiagnosticsForm(ip_window), "diagnosticsForm");
    tabControl->addTab(Named(new QWidget, "transfersForm"), Text("Transfers"));
    tabControl->addTab(MakeRoomsPage(), Text("Rooms"));
    tabControl->addTab(MakeChatPage(), Text("Chat"));
    tabControl->addTab(Named(new QWidget, "searchForm"), Text("Search"));
    tabControl->addTab(Named(new QWidget, "userListForm"), Text("Users"));
    tabControl->addTab(Named(new QWidget, "sharesForm"), Text("Shares"));
    tabControl->addTab(MakeOptionsPage(), Text("Options"));
    tabControl->addTab(diagnosticsForm, Text("Diagnostics"));
    tabControl->setCurrentIndex(c_roomsPage);
    ip_window->setCentralWidget(tabControl);

    noticeBar = Named(new NoticeBar(ip_window), "noticeBar");
    ip_window->addToolBar(Qt::BottomToolBarArea, noticeBar);
    statusBar = Named(new StatusBar(ip_window), "statusBar");
    ip_window->setStatusBar(statusBar);
}

void MainWindowLayout::AddMenu(MainWindow* ip_window) {
    QMenu* const lp_menu = ip_window->menuBar()->addMenu(Text("Connection"));
    actionConnect = Named(lp_menu->addAction(Text("&Connect")), "action_Connect");
    actionDisconnect = Named(lp_menu->addAction(Text("&Disconnect")), "action_Disconnect");
    actionDisconnect->setEnabled(false);
}

QWidget* MainWindowLayout::MakeRoomsPage() {
    roomsTabControl = Named(new QTabWidget, "roomsTabControl");

    roomList = Named(new QTreeWidget, "roomList");
    roomList->setIconSize(QSize(16, 11));
    roomList->setRootIsDecorated(false);
    roomList->setItemsExpandable(false);
    roomList->setUniformRowHeights(true);
    roomList->setSortingEnabled(true);

    roomSplitter = Named(new QSplitter(Qt::Horizontal), "roomSplitter");
    roomSplitter->addWidget(roomsTabControl);
    roomSplitter->addWidget(roomList);

    QWidget* const lp_page = new QWidget;
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    lp_layout->addWidget(roomSplitter);
    return lp_page;
}

QWidget* MainWindowLayout::MakeChatPage() {
    chatTabControl = Named(new QTabWidget, "chatTabControl");
    chatTabControl->setTabsClosable(true);

    QWidget* const lp_page = new QWidget;
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    lp_layout->addWidget(chatTabControl);
    return lp_page;
}

QWidget* MainWindowLayout::MakeOptionsPage() {
    optionsTabControl = Named(new QTabWidget, "optionsTabControl");
    optionsTabControl->setTabShape(QTabWidget::Triangular);
    optionsTabControl->addTab(MakeLoginPage(), Text("Login"));
    optionsTabControl->addTab(MakeFileSharingPage(), Text("File Sharing"));

    QWidget* const lp_page = new QWidget;
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    lp_layout->addWidget(optionsTabControl);
    return lp_page;
}

QWidget* MainWindowLayout::MakeLoginPage() {
    usernameEdit = MakeReadOnlyEdit("usernameEdit");
    listeningPortEdit = MakeReadOnlyEdit("listeningPortEdit");
    uPnPCheckBox = Named(new QCheckBox(Text("use UPnP")), "uPnPCheckBox");

    QWidget* const lp_page = Named(new QWidget, "loginPage");
    QFormLayout* const lp_layout = new QFormLayout(lp_page);
    lp_layout->addRow(Text("Username"), usernameEdit);
    lp_layout->addRow(Text("Listening port"), listeningPortEdit);
    lp_layout->addRow(QString(), uPnPCheckBox);
    return lp_page;
}

QWidget* MainWindowLayout::MakeFileSharingPage() {
    downloadFolderEdit = MakeReadOnlyEdit("downloadFolderEdit");
    sharedFoldersList = Named(new QTreeWidget, "sharedFoldersList");
    sharedFoldersList->setRootIsDecorated(false);
    sharedFoldersList->setUniformRowHeights(true);
    sharedFoldersList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    QLabel* const lp_foldersLabel = new QLabel(Text("Shared Folders"));
    lp_foldersLabel->setBuddy(sharedFoldersList);

    QWidget* const lp_page = Named(new QWidget, "fileSharingPage");
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    QFormLayout* const lp_form = new QFormLayout;
    lp_form->addRow(Text("Download Folder"), downloadFolderEdit);
    lp_layout->addLayout(lp_form);
    lp_layout->addWidget(lp_foldersLabel);
    lp_layout->addWidget(sharedFoldersList);
    return lp_page;
}
