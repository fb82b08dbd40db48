// The window's start and stop.
#include "ui/main_window.h"

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/text.h"
#include "app/timers.h"
#include "dnet/dnet_manager.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "search/search_replies.h"
#include "search/wish_list_schema.h"
#include "search/wish_list_searcher.h"
#include "sharing/shared_folders_manager.h"
#include "store/data_saver.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/diagnostics_form.h"
#include "ui/display_text.h"
#include "ui/main_window_layout.h"
#include "ui/notice_bar.h"
#include "ui/status_bar.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QTreeWidget>

#include <system_error>

MainWindow* mainWindow = nullptr;

namespace {

constexpr int c_roomListWidth = 220;

std::string StorePath() {
    return ToUtf8(QDir::homePath()) + "/.Tidewell";
}

QString SaveFailureNotice(const SaveResult& i_result) {
    return MainWindow::tr(
               "Your settings and lists could not be saved to %1: %2. What was saved before is still there, and "
               "saving is tried again every five minutes.")
        .arg(LabelText(StorePath()), LabelText(std::generic_category().message(i_result.error)));
}

QString DamageNotice(const LoadResult& i_result) {
    if (i_result.state == LoadResult::Unreadable) {
        return MainWindow::tr("Your saved settings and lists in %1 could not be read.").arg(LabelText(StorePath()));
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
    ArrangeLists();
    CreateServer();
    qRegisterMetaType<ItemPtr>("ItemPtr");
    ConnectServer();
    CreatePeerMessenger();
    CreateSettings();
    CreateSharing();
    CreateWindowTypes();
    CreateTransfers();
    WatchLogin();
    LoadStore();
    sharedFoldersManager->Init();
    LogIn();
    ShowSettings();
    KeepSaving();
    activateWindow();
}

MainWindow::~MainWindow() {
    g_showIsOver = true;
    gp_server->Disconnect();
    SaveStore();
    DeleteManagers();
    mp_layout.reset();
    mainWindow = nullptr;
}

void MainWindow::BuildLayout() {
    mp_layout = std::make_unique<MainWindowLayout>(this);
    m_disconnectedText = tr("Not connected");
    mp_layout->statusBar->ShowConnection(m_disconnectedText);
    SetApplicationIcon(QStringLiteral(":/icons/offline_icon"));
}

void MainWindow::ArrangeLists() {
    mp_layout->roomSplitter->setStretchFactor(0, 1);
    mp_layout->roomSplitter->setStretchFactor(1, 0);
    mp_layout->roomSplitter->setSizes({width() - c_roomListWidth, c_roomListWidth});

    mp_layout->roomList->setHeaderLabels({tr("Room Name"), tr("Users")});
    mp_layout->roomList->setColumnWidth(0, 150);
    mp_layout->roomList->setColumnWidth(1, 30);
    mp_layout->roomList->sortByColumn(0, Qt::AscendingOrder);

    mp_layout->sharedFoldersList->setHeaderLabels({tr("Shared folder"), tr("Accessible to")});
    mp_layout->sharedFoldersList->setColumnWidth(0, 400);
}

void MainWindow::CreateServer() {
    new TimerManager;
    new DataSaver;
    new Server;
    gp_server->CreateData();
}

void MainWindow::ConnectServer() {
    connect(gp_server, &Server::Connecting, this, &MainWindow::OnConnecting);
    connect(gp_server, &Server::Connected, this, &MainWindow::OnConnected);
    connect(gp_server, &Server::Disconnected, this, &MainWindow::OnDisconnected);
    connect(mp_layout->actionConnect, &QAction::triggered, this, &MainWindow::OnConnectTriggered);
    connect(mp_layout->actionDisconnect, &QAction::triggered, this, &MainWindow::OnDisconnectTriggered);
    d.AddConnectionEventHandler(d.GetType("room"), d.GetType("user_count"),
                                MakeHandler(this, &MainWindow::OnRoomUserCountAdded));
}

void MainWindow::CreatePeerMessenger() {
    new PeerMessenger;
    mp_searchReplies = std::make_unique<SearchReplies>();
    peerMessenger->SetSearchReplyReceiver(mp_searchReplies.get());
    connect(peerMessenger, &PeerMessenger::ListenFinished, this, &MainWindow::OnListenFinished);
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

    Type* const lp_folder = d.GetType("shared_folder");
    lp_folder->m_itemAdded.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderAdded));
    lp_folder->m_itemRemoved.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderRemoved));
    lp_folder->m_connected.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderChange));
    lp_folder->m_disconnected.AddHandler(MakeHandler(this, &MainWindow::OnSharedFolderChange));
}

void MainWindow::CreateTransfers() {
    mp_layout->diagnosticsForm->Init();
    new TransferQueueManager;
    new WishListSearcher(this);
    sharedFoldersManager->SetUploadSlots(transferQueueManager);
}

void MainWindow::WatchLogin() {
    PathNode* const lp_username = new PathNode(d.GetType("global")->GetItem("username"));
    new PathNode(lp_username, "global_value", Connected);
    d.AddPathEventHandler(lp_username, MakeHandler(this, &MainWindow::OnUsernameChanged));
    connect(gp_server, &Server::ConnectionFailed, this, &MainWindow::OnConnectionFailed);
}

void MainWindow::LoadStore() {
    const LoadResult l_result = dataSaver->Load(&d, StorePath().c_str());
    if (l_result.state == LoadResult::Damaged || l_result.state == LoadResult::Unreadable) {
        mp_layout->noticeBar->ShowNotice(DamageNotice(l_result));
    }
}

void MainWindow::LogIn() {
    if (HasSetting("username")) {
        gp_server->Connect();
    } else {
        OpenMessage(tr("No Username"), tr("You do not yet have a username set. Please set one from the Options tab and "
                                          "use the Connect menu option to connect."));
    }
}

void MainWindow::ShowSettings() {
    mp_layout->downloadFolderEdit->setText(CellText(SettingText("download_folder")));
    mp_layout->listeningPortEdit->setText(CellText(SettingText("listening_port")));
    mp_layout->uPnPCheckBox->setChecked(IsSettingYes("use_upnp"));
    connect(mp_layout->uPnPCheckBox, &QCheckBox::toggled, this, &MainWindow::OnUPnPCheckboxToggled);

    PathNode* const lp_port = new PathNode(d.GetType("global")->GetItem("new_listening_port"));
    new PathNode(lp_port, "global_value", Connected);
    d.AddPathEventHandler(lp_port, MakeHandler(this, &MainWindow::OnNewListeningPortChanged));
}

// Every five minutes, and when the desktop session ends: then it may never come to the destructor.
void MainWindow::KeepSaving() {
    connect(timerManager->FiveMinuteTimer(), &QTimer::timeout, this, &MainWindow::EveryFiveMinutes);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, &MainWindow::SaveStore, Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::saveStateRequest, this, &MainWindow::SaveStore, Qt::DirectConnection);
}

void MainWindow::SaveStore() {
    d.RemoveDisconnectedItems();
    const SaveResult l_result = dataSaver->Save(&d, StorePath().c_str());
    if (l_result.isSaved == m_isSaved) {
        return;
    }
    m_isSaved = l_result.isSaved;
    if (m_isSaved) {
        mp_layout->noticeBar->hide();
    } else {
        mp_layout->noticeBar->ShowNotice(SaveFailureNotice(l_result));
    }
}

// The reverse of their making, as far as they lean on each other: each is gone before what it calls.
void MainWindow::DeleteManagers() {
    sharedFoldersManager->SetUploadSlots(nullptr);
    delete transferQueueManager;
    delete sharedFoldersManager;
    delete delayedInvoker;
    delete dnetManager;
    delete peerMessenger;
    mp_searchReplies.reset();
    delete gp_server;
    delete dataSaver;
    delete timerManager;
}
