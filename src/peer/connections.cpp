// Reaching a user: the direct attempt, the request that another leads back to us, and when an attempt is over.
#include "peer/peer_messenger_private.h"

#include <QHostAddress>

#include "app/settings.h"
#include "app/timestamp.h"
#include "net/server.h"
#include "peer/init_frame.h"

namespace {

constexpr char gettingAddress[] = "getting_address";
constexpr char connecting[] = "connecting";

} // namespace

void PeerMessenger::RequestFileConnectionToUser(const std::string& i_user) {
    ConnectToUser(i_user, fileConnection);
}

void PeerMessenger::RequestDNetConnection(const std::string& i_user) {
    ConnectToUser(i_user, distributedConnection);
}

void PeerMessenger::ConnectToUser(const std::string& i_user, const char* ip_type) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    const ItemPtr l_type = d.GetType("peer_connection_type")->GetItem(ip_type);
    LogPeer(
        1,
        QStringLiteral("Attempting peer connection of type %1 to user %2").arg(ToQString(ip_type), ToQString(i_user)),
        l_user);
    if (!d.GetItems(l_user, l_type, "connect_to_peer_request").empty()) {
        LogPeer(2,
                QStringLiteral("Connection attempt to same user of same type already in progress, not re-attempting."),
                l_user);
        return;
    }

    ItemPtr l_request = d.GetType("connect_to_peer_request")->NewItem();
    l_request.Connect(l_user);
    l_request.Connect(l_type);

    LogPeer(2, QStringLiteral("Also sending indirect connection request."), l_user);
    const unsigned int l_token = gp_server->SendIndirectConnectionRequest(i_user, ip_type);
    ItemPtr l_indirect = d.GetType("indirect_connect_to_peer_request")->GetItem(l_token);
    l_request.Connect(l_indirect);
    l_indirect.Connect(d.GetType("send_time")->GetItem(CurrentTimestamp()));
    l_indirect.Connect(l_user);
    l_indirect.Connect(l_type);

    const bool l_isAddressKnown = l_user.IsConnected("user_address");
    l_request.Connect(
        d.GetType("connect_to_peer_request_status")->GetItem(l_isAddressKnown ? connecting : gettingAddress));
    if (l_isAddressKnown) {
        StartDirectAttempt(l_request, l_user, l_type);
    } else {
        LogPeer(2, QStringLiteral("User address not found, requesting address"), l_user);
        gp_server->GetUserAddress(i_user);
    }
}

void PeerMessenger::StartDirectAttempt(ItemPtr i_request, ItemPtr i_user, ItemPtr i_type) {
    QTcpSocket* lp_socket = NewSocket();
    connect(lp_socket, &QTcpSocket::connected, this, &PeerMessenger::OnConnectToPeerSocketConnected);
    connect(lp_socket, &QTcpSocket::errorOccurred, this, &PeerMessenger::OnConnectToPeerSocketError);

    ItemPtr l_item = d.GetType("connect_to_peer_request_socket")->NewItem(Value(lp_socket));
    l_item.Connect(d.GetType("socket_creation_time")->GetItem(CurrentTimestamp()));
    l_item.Connect(i_user);
    l_item.Connect(i_type);
    i_request.Connect(l_item);
    ConnectLater(lp_socket, i_user);
}

// Connects to the address that the store holds now, but only once the event loop comes back: on this machine a
// connection opens or fails at once, and whoever started it is still at work on the items of the attempt. What can not
// be connected to fails in the same way as what refuses.
void PeerMessenger::ConnectLater(QTcpSocket* ip_socket, ItemPtr i_user) {
    const long long l_address = i_user["user_address"].ToInt64().value_or(0);
    const long long l_port = i_user["user_port"].ToInt64().value_or(0);
    const bool l_isSound = l_address > 0 && l_address <= 0xFFFFFFFF && limits::IsConnectablePort(l_port) &&
                           *mp_private->socketCount <= mp_private->socketLimit;
    QMetaObject::invokeMethod(
        ip_socket,
        [=, this] {
            if (!SocketItem("connect_to_peer_request_socket", ip_socket) &&
                !SocketItem("peer_connection_request_socket", ip_socket))
                return;
            if (l_isSound)
                ip_socket->connectToHost(QHostAddress(static_cast<quint32>(l_address)), static_cast<quint16>(l_port));
            else
                Q_EMIT ip_socket->errorOccurred(QAbstractSocket::HostNotFoundError);
        },
        Qt::QueuedConnection);
}

void PeerMessenger::OnUserAddress(Item* ip_user) {
    const ItemPtr l_user(ip_user);
    if (!l_user.IsConnected("connect_to_peer_request"))
        return;
    const ItemPtr l_waiting = d.GetType("connect_to_peer_request_status")->HasItem(gettingAddress);
    if (!l_waiting)
        return;
    const ItemSet l_requests = d.GetItems(l_user, l_waiting, "connect_to_peer_request");
    if (l_requests.empty())
        return;
    LogPeer(1, QStringLiteral("User %1 address arrived").arg(ToQString(l_user.AsString())), l_user);
    for (Item* lp_request : l_requests) {
        ItemPtr l_request(lp_request);
        const ItemPtr l_type = l_request["peer_connection_type"];
        LogPeer(2, QStringLiteral("Attempting direct connection of type %1").arg(ToQString(l_type.AsString())), l_user);
        l_request.Connect(d.GetType("connect_to_peer_request_status")->GetItem(connecting));
        StartDirectAttempt(l_request, l_user, l_type);
    }
}

void PeerMessenger::OnConnectToPeerSocketConnected() {
    auto* lp_socket = qobject_cast<QTcpSocket*>(sender());
    lp_socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    ItemPtr l_item = SocketItem("connect_to_peer_request_socket", lp_socket);
    if (!l_item) {
        Release(lp_socket);
        lp_socket->close();
        lp_socket->deleteLater();
        return;
    }

    const ItemPtr l_user = l_item["user"];
    const std::string l_name = l_user.AsString();
    const std::string l_type = l_item["peer_connection_type"].AsString();
    LogPeer(1, TypeAndUser(QStringLiteral("Direct connection of type %1 to user %2 successful"), l_item), l_user);
    SendMessage(lp_socket, EncodeInitFrame(DirectInit{SettingText("username"), l_type}));

    QObject::disconnect(lp_socket, &QTcpSocket::errorOccurred, nullptr, nullptr);
    const ItemPtr l_request = l_item["connect_to_peer_request"];
    l_item.Remove();
    if (l_request)
        DisposeOfPeerConnectionRequest(l_request);

    if (l_type == messagingConnection)
        OpenMessaging(lp_socket, l_user);
    else if (l_type == fileConnection)
        HandOver(lp_socket, &PeerMessenger::FileConnectionAccepted, l_name);
    else
        HandOver(lp_socket, &PeerMessenger::DNetConnectionAccepted, l_name);
}

void PeerMessenger::OnConnectToPeerSocketError(QAbstractSocket::SocketError) {
    auto* lp_socket = qobject_cast<QTcpSocket*>(sender());
    lp_socket->disconnect();
    lp_socket->close();
    lp_socket->deleteLater();
    Release(lp_socket);
    ItemPtr l_item = SocketItem("connect_to_peer_request_socket", lp_socket);
    if (!l_item)
        return;
    LogPeer(1, TypeAndUser(QStringLiteral("Direct connection of type %1 to user %2 failed"), l_item), l_item["user"]);
    const ItemPtr l_request = l_item["connect_to_peer_request"];
    l_item.Remove();
    if (l_request)
        InspectPeerConnectionRequest(l_request);
}

void PeerMessenger::OnIndirectPeerConnectionFailure(uint i_req) {
    ItemPtr l_item = d.GetType("indirect_connect_to_peer_request")->HasItem(i_req);
    if (!l_item)
        return;
    LogPeer(1, TypeAndUser(QStringLiteral("Indirect connection of type %1 to user %2 failed"), l_item), l_item["user"]);
    const ItemPtr l_request = l_item["connect_to_peer_request"];
    l_item.Remove();
    if (l_request)
        InspectPeerConnectionRequest(l_request);
}

void PeerMessenger::InspectPeerConnectionRequest(ItemPtr i_request) {
    const ItemPtr l_user = i_request["user"];
    LogPeer(
        1,
        TypeAndUser(QStringLiteral("Inspecting peer connection request of type %1 to user %2 for possible removal."),
                    i_request),
        l_user);
    if (i_request["connect_to_peer_request_socket"]) {
        LogPeer(2, QStringLiteral("Socket found. Not removing request."), l_user);
    } else if (i_request["indirect_connect_to_peer_request"]) {
        LogPeer(2, QStringLiteral("Indirect request found. Not removing request."), l_user);
    } else {
        LogPeer(2, QStringLiteral("Neither socket nor indirect request found. Removing."), l_user);
        i_request.Remove();
    }
}

// The other leg goes on by itself until it opens, fails or expires.
void PeerMessenger::DisposeOfPeerConnectionRequest(ItemPtr i_request) {
    LogPeer(1, TypeAndUser(QStringLiteral("Disposing of peer connection request of type %1 to user %2"), i_request),
            i_request["user"]);
    i_request.Remove();
}

// From here on the socket carries messages.
void PeerMessenger::OpenMessaging(QTcpSocket* ip_socket, ItemPtr i_user) {
    connect(ip_socket, &QTcpSocket::readyRead, this, &PeerMessenger::OnSocketReadyToRead, Qt::UniqueConnection);
    connect(ip_socket, &QTcpSocket::errorOccurred, this, &PeerMessenger::OnSocketError, Qt::UniqueConnection);
    connect(ip_socket, &QTcpSocket::disconnected, this, &PeerMessenger::OnSocketClosed, Qt::UniqueConnection);
    BufferOf(ip_socket).reader.SetLimit(limits::shareFrame);
    ItemPtr l_item = d.GetType("peer_socket")->NewItem(Value(ip_socket));
    l_item.Connect(i_user);
    l_item.Connect(d.GetType("connection_open_time")->GetItem(CurrentTimestamp()));
    SendUnsentMessages(i_user.AsString());
}
