// Start and end, and the frames that come in on sockets of either kind.
#include "dnet/dnet_manager_private.h"

#include "app/settings.h"
#include "net/limits.h"
#include "peer/peer_messenger.h"

DNetManager* dnetManager = nullptr;

namespace {

// Bytes that Qt reads ahead of us.
constexpr qint64 readAhead = 16 * limits::kibibyte;

struct TypeRow {
    const char* name;
    bool isRoot;
    bool isNull;
    bool autoCreate;
};

struct RelationRow {
    const char* from;
    const char* to;
    OneOrMany typeFrom;
    OneOrMany typeTo;
};

constexpr TypeRow types[] = {
    {"attempted_dnet_connection", false, true, true}, // of a user who was tried as a parent
    {"dnet_global", true, false, true},
    {"dnet_value", false, false, true},
    {"dnet_child", true, false, true},            // value: the socket
    {"dnet_child_depth", false, false, true},     // as the child reported it
    {"dnet_parent_candidate", true, false, true}, // value: the socket
    {"dnet_candidate_level", false, false, true}, // the level that we would have below the candidate
    {"dnet_candidate_leader", false, false, true},
};

constexpr RelationRow relations[] = {
    {"user", "attempted_dnet_connection", Many, One},
    {"dnet_global", "dnet_value", Many, One},
    {"dnet_child", "user", One, One},
    {"dnet_child", "dnet_child_depth", Many, One},
    {"dnet_parent_candidate", "user", Many, One},
    {"dnet_parent_candidate", "dnet_candidate_level", Many, One},
    {"dnet_parent_candidate", "dnet_candidate_leader", Many, One},
};

void CreateTypes() {
    for (const TypeRow& l_row : types)
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, l_row.autoCreate);
    for (const RelationRow& l_row : relations)
        d.GetType(l_row.from)->RelateToType(d.GetType(l_row.to), l_row.typeFrom, l_row.typeTo, false);
}

} // namespace

DNetManager::DNetManager() {
    dnetManager = this;
    CreateTypes();

    connect(gp_server, &Server::Connected, this, &DNetManager::OnConnected);
    connect(gp_server, &Server::DNetParentMinSpeed, this, &DNetManager::OnDNetParentMinSpeed);
    connect(gp_server, &Server::DNetParentSpeedConnectionRatio, this, &DNetManager::OnDNetParentSpeedConnectionRatio);
    connect(gp_server, &Server::DNetPossibleParents, this, &DNetManager::OnDNetPossibleParents);
    connect(gp_server, &Server::DNetMessage, this, &DNetManager::OnDNetMessage);
    connect(gp_server, &Server::DNetDeliveryReport, this, &DNetManager::OnDNetDeliveryReport);
    connect(gp_server, &Server::DNetReset, this, &DNetManager::OnDNetReset);
    connect(peerMessenger, &PeerMessenger::DNetConnectionAccepted, this, &DNetManager::OnDNetConnectionAccepted);
    connect(peerMessenger, &PeerMessenger::DNetConnectionRequested, this, &DNetManager::OnDNetConnectionRequested);
    connect(&m_parentTimer, &QTimer::timeout, this, &DNetManager::TryWaitingParents);
    m_parentTimer.setSingleShot(true);

    PathNode* const lp_speed = new PathNode(d.GetType("global")->GetItem("upload_speed"));
    new PathNode(lp_speed, "global_value", Connected);
    d.AddPathEventHandler(lp_speed, MakeHandler(this, &DNetManager::OnReceivedOwnUploadSpeed));
}

DNetManager::~DNetManager() {
    for (const auto& [lp_socket, l_reader] : m_readers) {
        lp_socket->disconnect(this);
        delete lp_socket;
    }
    dnetManager = nullptr;
}

void DNetManager::Keep(QTcpSocket* ip_socket) {
    ip_socket->setParent(this);
    ip_socket->setReadBufferSize(readAhead);
    m_readers[ip_socket] = std::make_shared<FrameReader>(limits::distributedFrame);
}

// What is still to be sent is lost.
void DNetManager::LetGo(QTcpSocket* ip_socket) {
    m_readers.erase(ip_socket);
    ip_socket->disconnect(this);
    ip_socket->close();
    ip_socket->deleteLater();
}

// Handles what has arrived. Any handler may let go of the socket.
void DNetManager::ReadFrom(QTcpSocket* ip_socket, FrameHandler i_handle, LossHandler i_lose) {
    const auto l_entry = m_readers.find(ip_socket);
    if (l_entry == m_readers.end())
        return;
    const std::shared_ptr<FrameReader> l_reader = l_entry->second;
    while (l_reader->TakeFrom(*ip_socket) == FrameReader::Status::FrameReady) {
        const bool l_isGood = (this->*i_handle)(ip_socket, l_reader->Frame());
        if (!m_readers.contains(ip_socket))
            return;
        if (!l_isGood) {
            (this->*i_lose)(ip_socket);
            return;
        }
        l_reader->Reset();
    }
    if (l_reader->GetStatus() == FrameReader::Status::BadLength) {
        LogDNet(1, QStringLiteral("A message of %1 bytes is too long, closing connection")
                       .arg(static_cast<qint32>(l_reader->Length())));
        (this->*i_lose)(ip_socket);
    }
}

void DNetManager::OnConnected() {
    gp_server->SendDNetHasParent(HasDNetParent());
    m_canParent = false; // the server has forgotten what it was told
    if (const ItemPtr l_leader = DNetValue("dnet_group_leader"))
        gp_server->SendDNetGroupLeader(l_leader.AsString());
    if (const ItemPtr l_level = DNetValue("dnet_level"))
        gp_server->SendDNetLevel(l_level.AsInt());
    DetermineCanParent();
}

void DNetManager::OnDNetDeliveryReport(int i_req) {
    LogDNet(1, QStringLiteral("Received DNet delivery report request, req %1").arg(i_req));
}

void DNetManager::OnDNetReset() {
    LogDNet(1, QStringLiteral("Received DNet reset request"));
}
