#include "peer/peer_messenger_private.h"

#include "app/settings.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_schema.h"

PeerMessenger* peerMessenger = nullptr;
bool g_peerMessengerDeleted = false;

PeerMessenger::PeerMessenger() : mp_private(std::make_unique<Private>()) {
    peerMessenger = this;
    g_peerMessengerDeleted = false;
    CreatePeerTypes();
    dataSaver->AddDataLoadedHandler(this);

    connect(gp_server, &Server::Connected, this, &PeerMessenger::OnConnectedToServer);
    connect(gp_server, &Server::IndirectPeerConnectionFailure, this, &PeerMessenger::OnIndirectPeerConnectionFailure);
    connect(timerManager->HalfMinuteTimer(), &QTimer::timeout, this, &PeerMessenger::EveryHalfMinute);
    connect(&m_listener, &QTcpServer::newConnection, this, &PeerMessenger::OnNewConnection);
    connect(&m_listener, &QTcpServer::acceptError, this, &PeerMessenger::PauseAccepting);
    connect(&mp_private->acceptRetry, &QTimer::timeout, this, &PeerMessenger::ResumeAcceptingIfThereIsRoom);
    mp_private->connectBackTimer.setSingleShot(true);
    connect(&mp_private->connectBackTimer, &QTimer::timeout, this, &PeerMessenger::ConnectBackToThoseWaiting);

    auto* lp_request = new PathNode(&d, "peer_connection_request");
    new PathNode(lp_request, "peer_connection_request_id", Connected);
    new PathNode(lp_request, "peer_connection_type", Connected);
    auto* lp_requestUser = new PathNode(lp_request, "user", Connected);
    new PathNode(lp_requestUser, "user_address", Connected);
    new PathNode(lp_requestUser, "user_port", Connected);
    d.AddPathEventHandler(lp_request, MakeHandler(this, &PeerMessenger::OnPeerConnectionRequest));

    auto* lp_user = new PathNode(&d, "user");
    new PathNode(lp_user, "user_address", Connected);
    new PathNode(lp_user, "user_port", Connected);
    d.AddPathEventHandler(lp_user, MakeHandler(this, &PeerMessenger::OnUserAddress));

    // What an item's value is the address of lives exactly as long as the item.
    Type* lp_peerSocket = d.GetType("peer_socket");
    lp_peerSocket->m_itemAdded.AddHandler(MakeHandler(this, &PeerMessenger::OnPeerSocketItemAdded));
    lp_peerSocket->m_itemRemoved.AddHandler(MakeHandler(this, &PeerMessenger::OnPeerSocketItemRemoved));
    d.GetType("unsent_message")->m_itemRemoved.AddHandler(MakeHandler(this, &PeerMessenger::OnUnsentMessageRemoved));
    d.GetType("peer_connection_request")
        ->m_itemRemoved.AddHandler(MakeHandler(this, &PeerMessenger::OnPeerConnectionRequestRemoved));
}

PeerMessenger::~PeerMessenger() {
    g_peerMessengerDeleted = true;
    m_listener.close();
    // The sockets die with this object, their children's parent; the items that name them go first.
    for (const char* lp_type : {"unsent_message", "peer_socket", "uninitialized_socket",
                                "connect_to_peer_request_socket", "peer_connection_request_socket"})
        d.GetType(lp_type)->GetItems().Remove();
    peerMessenger = nullptr;
}

void PeerMessenger::SetSharedFilesSource(SharedFilesSource* ip_source) {
    mp_private->sharedFiles = ip_source;
}

void PeerMessenger::SetSearchReplyReceiver(SearchReplyReceiver* ip_receiver) {
    mp_private->searchReplies = ip_receiver;
}

void PeerMessenger::DataLoaded() {
    if (!SettingNumber("listening_port"))
        SetSetting("listening_port", 2235);
    if (const auto l_newPort = SettingNumber("new_listening_port")) {
        SetSetting("listening_port", *l_newPort);
        d.GetType("global")->HasItem("new_listening_port").Remove();
    }

    UpdateSocketLimit();
    const auto l_port = static_cast<quint16>(*SettingNumber("listening_port"));
    // Addresses on the wire are IPv4 only.
    if (m_listener.listen(QHostAddress::AnyIPv4, l_port)) {
        mp_private->listenError.clear();
    } else {
        const QString l_error =
            QStringLiteral("Could not listen on port %1: %2").arg(QString::number(l_port), m_listener.errorString());
        mp_private->listenError = ToUtf8(l_error);
        LogPeer(1, l_error);
    }
    Q_EMIT ListenFinished();
}

std::string PeerMessenger::ListenError() const {
    return mp_private->listenError;
}

quint16 PeerMessenger::ListeningPort() const {
    return m_listener.serverPort();
}

void PeerMessenger::OnConnectedToServer() {
    gp_server->SetWaitPort(static_cast<int>(SettingNumber("listening_port").value_or(0)));
}
