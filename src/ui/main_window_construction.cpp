// The window's start and stop.
#include "ui/main_window.h"

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/timers.h"
#include "dnet/dnet_manager.h"
#include "net/port_forwarder.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "search/search_replies.h"
#include "search/wish_list_schema.h"
#include "search/wish_list_searcher.h"
#include "sharing/shared_folders_manager.h"
#include "store/data_saver.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/chat_inbox.h"
#include "ui/data_dialog.h"
#include "ui/diagnostics_form.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/main_window_layout.h"
#include "ui/main_window_size_proxy.h"
#include "ui/notice_bar.h"
#include "ui/room_list.h"
#include "ui/search_form.h"
#include "ui/shares_form.h"
#include "ui/size_manager.h"
#include "ui/status_watch.h"
#include "ui/store_keeper.h"
#include "ui/transfers_form.h"
#include "ui/user_list_form.h"
#include "ui/window_keys.h"

#include <QAction>
#include <QCheckBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QTreeWidget>

#include <utility>

MainWindow* mainWindow = nullptr;

namespace {

constexpr int c_roomListWidth = 220;

QString DamageNotice(const LoadResult& i_result, const std::string& i_path) {
    if (i_result.state == LoadResult::Unreadable) {
        return MainWindow::tr("Your saved settings and lists in %1 could not be read.").arg(LabelText(i_path));
    }
    const QString l_sentence =
        MainWindow::tr("The file with your settings and lists is damaged. What could be read has been "
                       "loaded.");
    return i_result.keptAside.empty()
               ? l_sentence
               : l_sentence + MainWindow::tr(" The damaged file is kept as %1.").arg(LabelText(i_result.keptAside));
}

} // namespace

// A manager's constructor creates its Types, relates them to those of earlier managers and registers handlers, so each
// step relies on the ones above it. The store is loaded when all saved Types and all handlers that fill widgets exist.
MainWindow::MainWindow() {
    mainWindow = this;
    BuildLayout();
    CreateServer();
    qRegisterMetaType<ItemPtr>("ItemPtr");
    ConnectServer();
    CreateToolBarSets();
    FollowTabs();
    CreatePeerMessenger();
    CreateSettings();
    CreateSharing();
    CreateWindowTypes();
    CreateForms();
    WatchLogin();
    LoadStore();
    mp_layout->searchForm->Init();
    mp_layout->userListForm->Init();
    sharedFoldersManager->Init();
    FocusRooms();
    LogIn();
    ShowSettings();
    RegisterSizes();
    KeepSaving();
    activateWindow();
}

MainWindow::~MainWindow() {
    g_showIsOver = true;
    delete mp_dataDialog; // it follows every change of what is taken down now
    gp_server->Disconnect();
    SaveStore();
    DeleteManagers();
    mp_layout.reset();
    delete sizeManager;
    mp_sizeProxy.reset();
    mainWindow = nullptr;
}

void MainWindow::BuildLayout() {
    mp_sizeProxy = std::make_unique<SizeProxy>(this);
    mp_layout = std::make_unique<MainWindowLayout>(this);
    mp_roomList = std::make_unique<RoomList>(mp_layout->roomList);
    mp_layout->roomSplitter->setSizes({width() - c_roomListWidth, c_roomListWidth});
    AddWindowKeys(this, mp_layout->tabControl);
    AddListKeys();
    SetApplicationIcon(QStringLiteral(":/icons/offline_icon"));
}

void MainWindow::CreateServer() {
    new TimerManager;
    new DataSaver;
    mp_storeKeeper = std::make_unique<StoreKeeper>();
    new Server;
    gp_server->CreateData();
    new PortForwarder;
    gp_server->SetPortMapper(portForwarder);
}

void MainWindow::ConnectServer() {
    connect(gp_server, &Server::Connecting, this, &MainWindow::OnConnecting);
    connect(gp_server, &Server::Connected, this, &MainWindow::OnConnected);
    connect(gp_server, &Server::Disconnected, this, &MainWindow::OnDisconnected);
    connect(mp_layout->actionConnect, &QAction::triggered, this, &MainWindow::OnConnectTriggered);
    connect(mp_layout->actionDisconnect, &QAction::triggered, this, &MainWindow::OnDisconnectTriggered);
    connect(mp_layout->actionData, &QAction::triggered, this, &MainWindow::OnShowData);

    Type* const lp_room = d.GetType("room");
    d.AddConnectionEventHandler(lp_room, d.GetType("user_count"), MakeHandler(this, &MainWindow::OnRoomUserCountAdded));
    d.AddConnectionEventHandler(lp_room, d.GetType("in_room"), MakeHandler(this, &MainWindow::OnEnteredRoom));
    connect(mp_layout->roomList, &QTreeWidget::itemDoubleClicked, this, &MainWindow::OnRoomListItemDoubleClicked);
    connect(mp_layout->chatTabControl, &QTabWidget::tabCloseRequested, this, &MainWindow::OnChatTabClosed);
}

void MainWindow::CreatePeerMessenger() {
    new PeerMessenger;
    mp_searchReplies = std::make_unique<SearchReplies>();
    peerMessenger->SetSearchReplyReceiver(mp_searchReplies.get());
}

void MainWindow::CreateSettings() {
    CreateSettingsTypes();
    CreateWishListTypes();
}

void MainWindow::CreateSharing() {
    new DelayedInvoker;
    new DNetManager;
    new SharedFoldersManager;
    connect(dnetManager, &DNetManager::DNetSearchRequest, sharedFoldersManager,
            &SharedFoldersManager::OnDNetSearchRequest);
}

void MainWindow::CreateWindowTypes() {
    d.NewType("user_chat_widget", true, false, true)->RelateToType(d.GetType("user"), One, One, false);
    d.NewType("room_form", true, false, true)->RelateToType(d.GetType("room"), One, One, false);
    mp_chatInbox = std::make_unique<ChatInbox>(mp_layout->chatTabControl);
    connect(gp_server, &Server::PrivateChat, this, &MainWindow::OnPrivateChat);

    Type* const lp_folder = d.GetType("shared_folder");
    lp_folder->m_itemAdded.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderAdded));
    lp_folder->m_itemRemoved.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderRemoved));
    lp_folder->m_connected.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderChange));
    lp_folder->m_disconnected.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderChange));
}

// The forms that need the store, each after the managers that it shows.
void MainWindow::CreateForms() {
    new SizeManager(this);
    mp_layout->diagnosticsForm->Init();
    new TransferQueueManager;
    sharedFoldersManager->SetUploadSlots(transferQueueManager);
    new WishListSearcher(this);
    addToolBarBreak(Qt::TopToolBarArea);
    addToolBar(Qt::TopToolBarArea, new EventToolBar(this));
    mp_layout->transfersForm->Init();
    mp_layout->sharesForm->Init();
    mp_statusWatch = std::make_unique<StatusWatch>(*mp_layout->statusBar);
}

void MainWindow::WatchLogin() {
    WatchSetting("username", &MainWindow::OnUsernameChanged);
    connect(gp_server, &Server::ConnectionFailed, this, &MainWindow::OnConnectionFailed);
}

void MainWindow::LoadStore() {
    connect(mp_storeKeeper.get(), &StoreKeeper::Recovered, this, &MainWindow::OnSaved);
    connect(mp_storeKeeper.get(), &StoreKeeper::Failed, this, &MainWindow::OnSaveFailed);
    const LoadResult l_result = mp_storeKeeper->Load();
    if (l_result.state == LoadResult::Damaged || l_result.state == LoadResult::Unreadable) {
        mp_layout->noticeBar->ShowNotice(DamageNotice(l_result, mp_storeKeeper->Path()));
    }
}

void MainWindow::LogIn() {
    if (HasSetting("username")) {
        gp_server->Connect();
    } else {
        m_needsLogin = true;
    }
}

void MainWindow::ShowSettings() {
    connect(sharedFoldersManager, &SharedFoldersManager::SharedFilesRescanned, this,
            &MainWindow::OnSharedFilesRescanned);
    mp_layout->downloadFolderEdit->setText(CellText(SettingText("download_folder")));
    mp_layout->listeningPortEdit->setText(CellText(SettingText("listening_port")));
    ShowServer();
    mp_layout->uPnPCheckBox->setChecked(IsSettingYes("use_upnp"));
    connect(mp_layout->uPnPCheckBox, &QCheckBox::toggled, this, &MainWindow::OnUPnPCheckboxToggled);
    WatchSetting("new_listening_port", &MainWindow::OnNewListeningPortChanged);
    WatchSetting("server_host", &MainWindow::OnServerChanged);
    WatchSetting("server_port", &MainWindow::OnServerChanged);
}

void MainWindow::RegisterSizes() {
    sizeManager->RegisterResizableWindow(QStringLiteral("main_window"), mp_sizeProxy.get());
    sizeManager->RegisterSplitter(QStringLiteral("room_list_splitter"), mp_layout->roomSplitter,
                                  {width() - c_roomListWidth, c_roomListWidth});
    sizeManager->RegisterTreeWidget(QStringLiteral("room_list"), mp_layout->roomList);
}

// Every five minutes, and when the desktop session ends: then it may never come to the destructor.
void MainWindow::KeepSaving() {
    connect(timerManager->FiveMinuteTimer(), &QTimer::timeout, this, &MainWindow::EveryFiveMinutes);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, &MainWindow::SaveStore, Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::saveStateRequest, this, &MainWindow::SaveStore, Qt::DirectConnection);
}

void MainWindow::EveryFiveMinutes() {
    mp_storeKeeper->SaveInBackground();
}

void MainWindow::SaveStore() {
    mp_storeKeeper->SaveNow();
}

void MainWindow::OnSaved() {
    mp_layout->noticeBar->hide();
}

void MainWindow::OnSaveFailed(const QString& i_reason) {
    mp_layout->noticeBar->ShowNotice(
        tr("Your settings and lists could not be saved to %1: %2. What was saved before is still there, and "
           "saving is tried again every five minutes.")
            .arg(LabelText(mp_storeKeeper->Path()), i_reason));
}

// The reverse of their making, as far as they lean on each other: each is gone before what it calls.
void MainWindow::DeleteManagers() {
    sharedFoldersManager->SetUploadSlots(nullptr);
    mp_statusWatch.reset();
    delete transferQueueManager;
    delete sharedFoldersManager;
    delete delayedInvoker;
    delete dnetManager;
    delete peerMessenger;
    mp_searchReplies.reset();
    delete gp_server;
    delete portForwarder;
    mp_storeKeeper.reset();
    delete dataSaver;
    delete timerManager;
}

void MainWindow::changeEvent(QEvent* ip_event) {
    QMainWindow::changeEvent(ip_event);
    if (ip_event->type() == QEvent::WindowStateChange && mp_sizeProxy) {
        mp_sizeProxy->OnStateChanged();
    }
}

void MainWindow::moveEvent(QMoveEvent* ip_event) {
    QMainWindow::moveEvent(ip_event);
    if (mp_sizeProxy) {
        mp_sizeProxy->OnMoved();
    }
}

// A box must not come before the window that it speaks of.
void MainWindow::paintEvent(QPaintEvent* ip_event) {
    QMainWindow::paintEvent(ip_event);
    if (std::exchange(m_needsLogin, false)) {
        QMetaObject::invokeMethod(this, &MainWindow::LeadToLogin, Qt::QueuedConnection);
    }
}

void MainWindow::resizeEvent(QResizeEvent* ip_event) {
    QMainWindow::resizeEvent(ip_event);
    if (mp_sizeProxy) {
        mp_sizeProxy->OnResized();
    }
}
