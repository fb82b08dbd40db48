#include "sharing/shared_folders_manager.h"

#include "app/settings.h"
#include "app/text.h"
#include "net/server.h"
#include "sharing/file_roots.h"
#include "sharing/shares_schema.h"

SharedFoldersManager* sharedFoldersManager = nullptr;

SharedFoldersManager::SharedFoldersManager(QObject* ip_parent) : QObject(ip_parent) {
    sharedFoldersManager = this;
    CreateSharesTypes();
    d.GetType("shared_file_name")
        ->m_itemAdded.AddHandler(MakeHandler(this, &SharedFoldersManager::OnSharedFileNameAdded));
    d.GetType("shared_file_folder")
        ->m_itemAdded.AddHandler(MakeHandler(this, &SharedFoldersManager::OnSharedFileFolderAdded));
    mp_fileRoots = std::make_unique<FileRoots>();
    mp_shareListBuilder = std::make_unique<ShareListBuilder>();
    mp_userShareBuilder = std::make_unique<UserShareBuilder>();
    mp_userShareRemover = std::make_unique<UserShareRemover>();
    StartScanner();
    peerMessenger->SetSharedFilesSource(this);
    connect(peerMessenger, &PeerMessenger::UserShare, this, &SharedFoldersManager::OnUserShare);
    connect(peerMessenger, &PeerMessenger::SharedFilesInFolderRequested, this,
            &SharedFoldersManager::OnFilesInFoldersRequested);
    connect(gp_server, &Server::Connected, this, &SharedFoldersManager::OnConnectedToServer);
    connect(gp_server, &Server::ReceivedUserStats, this, &SharedFoldersManager::OnReceivedUserStats);
}

SharedFoldersManager::~SharedFoldersManager() {
    StopScanner();
    if (peerMessenger)
        peerMessenger->SetSharedFilesSource(nullptr);
    sharedFoldersManager = nullptr;
}

// The handler comes only now: the folders that the load brought back are walked once, by the rescan.
void SharedFoldersManager::Init() {
    d.GetType("shared_folder")->m_itemAdded.AddHandler(MakeHandler(this, &SharedFoldersManager::OnSharedFolderAdded));
    RescanShares();
}

void SharedFoldersManager::OnSharedFileNameAdded(Item* ip_name) {
    ip_name->Connect(d.GetType("shared_file_lowercase_name")->GetItem(GetAbsoluteFileName(ip_name->AsView())));
}

void SharedFoldersManager::OnSharedFileFolderAdded(Item* ip_folder) {
    ip_folder->Connect(
        d.GetType("shared_file_folder_lowercase_name")->GetItem(GetAbsoluteFileName(ip_folder->AsView())));
}

void SharedFoldersManager::OnConnectedToServer() {
    gp_server->SendFilesFolders(static_cast<int>(d.GetType("shared_file_folder")->CountItems()),
                                static_cast<int>(d.GetType("shared_file")->CountItems()));
    gp_server->GetUserStats(SettingText("username"));
}

void SharedFoldersManager::OnReceivedUserStats(std::string i_user, UserStats i_stats) {
    if (HasSetting("username") && i_user == SettingText("username"))
        SetSetting("upload_speed", i_stats.averageSpeed);
}
