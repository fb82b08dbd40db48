// Candidates, the one of them that becomes the parent, and what comes from above.
#include "dnet/dnet_manager_private.h"

#include "dnet/tree_arithmetic.h"

namespace {

constexpr int noLevel = -1;

int OwnLevel() {
    const ItemPtr l_level = DNetValue("dnet_level");
    return l_level ? l_level.AsInt() : noLevel;
}

} // namespace

void DNetManager::OnDNetConnectionAccepted(const std::string& i_user, QTcpSocket* ip_socket) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogDNet(1, QStringLiteral("Parent connection to user %1 accepted").arg(ToQString(i_user)), l_user);
    if (HasDNetParent()) {
        LogDNet(2, QStringLiteral("Rejecting, already have parent"), l_user);
        ip_socket->deleteLater();
        return;
    }
    LogDNet(2, QStringLiteral("Adding as possible parent candidate"), l_user);
    d.GetType("dnet_parent_candidate")->NewItem(Value(ip_socket))->Connect(l_user);
    Keep(ip_socket);
    connect(ip_socket, &QTcpSocket::readyRead, this, &DNetManager::OnSocketReadyToRead);
    connect(ip_socket, &QTcpSocket::errorOccurred, this, &DNetManager::OnSocketError);
    connect(ip_socket, &QTcpSocket::disconnected, this, &DNetManager::OnSocketClosed);
    // What has come already is not announced again.
    ReadFrom(ip_socket, &DNetManager::HandleMessage, &DNetManager::LoseParentOrCandidate);
}

void DNetManager::OnSocketReadyToRead() {
    ReadFrom(qobject_cast<QTcpSocket*>(sender()), &DNetManager::HandleMessage, &DNetManager::LoseParentOrCandidate);
}

void DNetManager::OnSocketError(QAbstractSocket::SocketError) {
    OnSocketClosed();
}

void DNetManager::OnSocketClosed() {
    LoseParentOrCandidate(qobject_cast<QTcpSocket*>(sender()));
}

// The children stay and are not told.
void DNetManager::LoseParentOrCandidate(QTcpSocket* ip_socket) {
    const bool l_isParent = WhoIs(ip_socket) == Sender::Parent;
    LetGo(ip_socket);
    if (l_isParent) {
        LogDNet(1, QStringLiteral("Parent socket closed"));
        for (const char* lp_entry : {"dnet_parent_user", "dnet_parent_socket", "dnet_group_leader", "dnet_level"})
            ClearDNetValue(lp_entry);
        gp_server->SendDNetHasParent(false);
        gp_server->SendDNetGroupLeader("");
        gp_server->SendDNetLevel(noLevel);
    } else if (const ItemPtr l_candidate = DNetSocketItem("dnet_parent_candidate", ip_socket)) {
        LogDNet(1, QStringLiteral("Parent candidate socket closed"));
        l_candidate.Remove();
    }
}

DNetManager::Sender DNetManager::WhoIs(QTcpSocket* ip_socket) const {
    if (ip_socket == nullptr)
        return Sender::Server;
    if (HasDNetParent())
        return DNetValue("dnet_parent_socket").AsPointer<QTcpSocket>() == ip_socket ? Sender::Parent : Sender::Nobody;
    return DNetSocketItem("dnet_parent_candidate", ip_socket) ? Sender::Candidate : Sender::Nobody;
}

void DNetManager::OnDNetMessage(MemStream& i_message) {
    (void)HandleMessage(nullptr, i_message);
}

// The bytes as they came, from the code on, are what children get.
bool DNetManager::HandleMessage(QTcpSocket* ip_socket, MemStream& io_message) {
    const std::string_view l_body = io_message.GetPending();
    const auto l_code = DecodeDNetCode(io_message);
    if (!l_code) {
        LogDNet(1, QStringLiteral("Error reading message code, closing parent/candidate connection"));
        return false;
    }
    const Sender l_sender = WhoIs(ip_socket);
    if (l_sender == Sender::Nobody) {
        LetGo(ip_socket);
        return false;
    }
    switch (*l_code) {
    case DNetCode::Search:
        return HandleSearch(ip_socket, l_sender, io_message, l_body);
    case DNetCode::Level:
        return HandleLevel(ip_socket, l_sender, io_message);
    case DNetCode::GroupLeader:
        return HandleGroupLeader(ip_socket, l_sender, io_message, l_body);
    default:
        return true;
    }
}

bool DNetManager::HandleSearch(QTcpSocket* ip_socket, Sender i_sender, MemStream& io_fields, std::string_view i_body) {
    const DNetSearchFields l_fields = DecodeDNetSearch(io_fields);
    if (!l_fields.isRead)
        return false;
    if (i_sender == Sender::Candidate &&
        DNetSocketItem("dnet_parent_candidate", ip_socket)["user"].IsConnected("dnet_child")) {
        // Each of us as the other's parent would send this search to and fro for ever.
        LogDNet(1, QStringLiteral("A parent candidate is our child as well, closing connection"));
        return false;
    }
    if (l_fields.search) {
        Q_EMIT DNetSearchRequest(l_fields.search->user, l_fields.search->token, l_fields.search->text);
        if (i_sender == Sender::Candidate && !HasDNetParent()) {
            if (const ItemPtr l_candidate = DNetSocketItem("dnet_parent_candidate", ip_socket))
                Adopt(l_candidate);
        }
    }
    SendMessageToChildren(i_body);
    return true;
}

void DNetManager::Adopt(ItemPtr i_candidate) {
    const ItemPtr l_user = i_candidate["user"];
    auto* const lp_parent = i_candidate.AsPointer<QTcpSocket>();
    SetDNetValue("dnet_parent_user", l_user.AsView());
    SetDNetValue("dnet_parent_socket", lp_parent);
    LogDNet(1,
            QStringLiteral("Received first search request from parent candidate %1, adopting as parent.")
                .arg(ToQString(l_user.AsView())),
            l_user);

    if (const ItemPtr l_offered = i_candidate["dnet_candidate_level"]) {
        const int l_level = l_offered.AsInt();
        LogDNet(2, QStringLiteral("Level recorded as %1.").arg(l_level), l_user);
        SetDNetValue("dnet_level", l_level);
        gp_server->SendDNetLevel(l_level);
        SendMessageToChildren(EncodeDNetLevel(l_level).GetWritten());
    }
    const std::string l_leader = i_candidate["dnet_candidate_leader"].AsString();
    LogDNet(2, QStringLiteral("Group leader recorded as %1.").arg(ToQString(l_leader)), l_user);
    SetDNetValue("dnet_group_leader", l_leader);
    gp_server->SendDNetGroupLeader(l_leader);
    SendMessageToChildren(EncodeDNetGroupLeader(l_leader).GetWritten());

    for (Item* lp_candidate : g("dnet_parent_candidate")) {
        auto* const lp_socket = lp_candidate->AsPointer<QTcpSocket>();
        lp_candidate->Remove();
        if (lp_socket != lp_parent)
            LetGo(lp_socket);
    }
    gp_server->SendDNetHasParent(true);
}

bool DNetManager::HandleLevel(QTcpSocket* ip_socket, Sender i_sender, MemStream& io_fields) {
    const auto l_received = DecodeDNetNumber(io_fields);
    if (!l_received)
        return false;
    const int l_level = *l_received == noLevel ? noLevel : OneFurther(*l_received);
    if (i_sender == Sender::Candidate && l_level != noLevel) {
        DNetSocketItem("dnet_parent_candidate", ip_socket).Connect(d.GetType("dnet_candidate_level")->GetItem(l_level));
    } else if (i_sender == Sender::Parent && l_level != OwnLevel()) {
        LogDNet(1, QStringLiteral("Received level from parent, updating to %1").arg(l_level));
        if (l_level == noLevel)
            ClearDNetValue("dnet_level");
        else
            SetDNetValue("dnet_level", l_level);
        gp_server->SendDNetLevel(l_level);
        SendMessageToChildren(EncodeDNetLevel(l_level).GetWritten());
    }
    return true;
}

bool DNetManager::HandleGroupLeader(QTcpSocket* ip_socket, Sender i_sender, MemStream& io_fields,
                                    std::string_view i_body) {
    const auto l_leader = DecodeDNetGroupLeader(io_fields);
    if (!l_leader)
        return false;
    if (i_sender == Sender::Candidate) {
        DNetSocketItem("dnet_parent_candidate", ip_socket)
            .Connect(d.GetType("dnet_candidate_leader")->GetItem(*l_leader));
    } else if (i_sender == Sender::Parent && DNetValue("dnet_group_leader").AsView() != *l_leader) {
        LogDNet(1, QStringLiteral("Received group leader from parent, updating to %1").arg(ToQString(*l_leader)));
        SetDNetValue("dnet_group_leader", *l_leader);
        gp_server->SendDNetGroupLeader(*l_leader);
        SendMessageToChildren(i_body);
    }
    return true;
}
