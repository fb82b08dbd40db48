// Whoever connects to us and says who it is, and whom the server asks us to connect back to.
#include "peer/peer_messenger_private.h"

#include <algorithm>

#include "app/timestamp.h"
#include "net/server.h"
#include "peer/init_frame.h"

void PeerMessenger::OnNewConnection() {
    while (QTcpSocket* lp_socket = m_listener.nextPendingConnection()) {
        Adopt(lp_socket);
        if (HasRoomForSocket())
            mp_private->hasToldOfPause = false;
        else
            PauseAccepting();
        lp_socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
        connect(lp_socket, &QTcpSocket::readyRead, this, &PeerMessenger::OnSocketReadyToRead);
        connect(lp_socket, &QTcpSocket::errorOccurred, this, &PeerMessenger::OnSocketError);
        connect(lp_socket, &QTcpSocket::disconnected, this, &PeerMessenger::OnSocketClosed);
        d.GetType("uninitialized_socket")->NewItem(Value(lp_socket));
        AdmitStranger(mp_private->uninitialized, lp_socket);
    }
}

bool PeerMessenger::HandleInitFrame(QTcpSocket* ip_socket, MemStream& io_body) {
    SocketItem("uninitialized_socket", ip_socket).Remove();
    mp_private->uninitialized.Release(ip_socket);

    const InitFrame l_frame = DecodeInitFrame(io_body);
    bool l_isGood = false;
    if (const auto* lp_init = std::get_if<DirectInit>(&l_frame))
        l_isGood = HandleDirectInit(ip_socket, *lp_init);
    else if (const auto* lp_answer = std::get_if<IndirectAnswer>(&l_frame))
        l_isGood = HandleIndirectAnswer(ip_socket, *lp_answer);
    else if (std::get<InitFault>(l_frame) == InitFault::NoDirection)
        LogPeer(1, QStringLiteral("Failed to read direction from new peer connection"));
    else if (std::get<InitFault>(l_frame) == InitFault::NoToken)
        LogPeer(1, QStringLiteral("Failed to read req from indirect peer connection"));

    if (!l_isGood)
        LogPeer(1, QStringLiteral("Failure initializing peer connection, disposing of socket"));
    return l_isGood;
}

bool PeerMessenger::HandleIndirectAnswer(QTcpSocket* ip_socket, const IndirectAnswer& i_answer) {
    ItemPtr l_item = d.GetType("indirect_connect_to_peer_request")->HasItem(i_answer.token);
    if (!l_item) {
        LogPeer(1, QStringLiteral("Req sent on indirect peer connection not found"));
        return false;
    }
    const ItemPtr l_user = l_item["user"];
    const std::string l_name = l_user.AsString();
    const std::string l_type = l_item["peer_connection_type"].AsString();
    const ItemPtr l_request = l_item["connect_to_peer_request"];
    l_item.Remove();
    if (l_request)
        DisposeOfPeerConnectionRequest(l_request);
    LogPeer(1,
            QStringLiteral("Found req, accepted indirect connection to user %1, connection type %2")
                .arg(ToQString(l_name), ToQString(l_type)),
            l_user);

    if (l_type == messagingConnection)
        OpenMessaging(ip_socket, l_user);
    else if (l_type == fileConnection)
        HandOver(ip_socket, &PeerMessenger::FileConnectionAccepted, l_name);
    else if (l_type == distributedConnection)
        HandOver(ip_socket, &PeerMessenger::DNetConnectionAccepted, l_name);
    else
        return false;
    return true;
}

bool PeerMessenger::HandleDirectInit(QTcpSocket* ip_socket, const DirectInit& i_init) {
    if (!d.GetType("user")->HasItem(i_init.user))
        mp_private->usersMadeByCallers.insert(i_init.user);
    const ItemPtr l_user = d.GetType("user")->GetItem(i_init.user);
    const QString l_name = ToQString(i_init.user);
    bool l_isKnownType = true;
    if (i_init.type == messagingConnection) {
        LogPeer(1, QStringLiteral("Accepted messaging connection to user %1").arg(l_name), l_user);
        OpenMessaging(ip_socket, l_user);
    } else if (i_init.type == fileConnection) {
        LogPeer(1, QStringLiteral("Accepted file connection to user %1").arg(l_name), l_user);
        AwaitFileToken(ip_socket, i_init.user);
    } else if (i_init.type == distributedConnection) {
        LogPeer(1, QStringLiteral("Accepted DNet connection to user %1").arg(l_name), l_user);
        HandOver(ip_socket, &PeerMessenger::DNetConnectionRequested, i_init.user);
    } else {
        l_isKnownType = false;
    }
    LogPeer(1, QStringLiteral("Peer connection of type %1 opened from user %2").arg(ToQString(i_init.type), l_name),
            l_user);
    return l_isKnownType;
}

void PeerMessenger::AwaitFileToken(QTcpSocket* ip_socket, const std::string& i_user) {
    SocketBufferInfo& l_info = BufferOf(ip_socket);
    l_info.awaitingFileToken = true;
    l_info.tokenUser = i_user;
    AdmitStranger(mp_private->awaitingToken, ip_socket);
}

// The path is complete, and may be again when the user's address changes: only the first time counts.
void PeerMessenger::OnPeerConnectionRequest(Item* ip_request) {
    std::deque<Item*>& l_queue = mp_private->connectBackQueue;
    if (ItemPtr(ip_request)["peer_connection_request_socket"] || std::ranges::count(l_queue, ip_request) > 0)
        return;
    l_queue.push_back(ip_request);
    // More than could ever be open at once: the oldest has waited longest and will hardly be waited for any more.
    if (l_queue.size() > std::size_t{limits::sockets})
        GiveUpConnectingBack(l_queue.front());
    ConnectBackToThoseWaiting();
}

void PeerMessenger::OnPeerConnectionRequestRemoved(Item* ip_request) {
    std::erase(mp_private->connectBackQueue, ip_request);
}

void PeerMessenger::ConnectBackToThoseWaiting() {
    constexpr std::chrono::milliseconds l_untilThereIsRoom{200};
    std::deque<Item*>& l_queue = mp_private->connectBackQueue;
    while (!l_queue.empty()) {
        const auto l_now = std::chrono::steady_clock::now();
        if (!HasRoomForSocket()) {
            mp_private->connectBackTimer.start(l_untilThereIsRoom);
            return;
        }
        if (!ServerOrderedPace().Take(l_now)) {
            mp_private->connectBackTimer.start(ServerOrderedPace().Wait(l_now));
            return;
        }
        Item* lp_request = l_queue.front();
        l_queue.pop_front();
        ConnectBack(lp_request);
    }
}

void PeerMessenger::ConnectBack(Item* ip_request) {
    ItemPtr l_request(ip_request);
    QTcpSocket* lp_socket = NewSocket();
    connect(lp_socket, &QTcpSocket::connected, this, &PeerMessenger::OnIndirectResponseSocketConnected);
    connect(lp_socket, &QTcpSocket::errorOccurred, this, &PeerMessenger::OnSocketError);
    connect(lp_socket, &QTcpSocket::disconnected, this, &PeerMessenger::OnSocketClosed);

    const ItemPtr l_user = l_request["user"];
    ItemPtr l_item = d.GetType("peer_connection_request_socket")->NewItem(Value(lp_socket));
    l_item.Connect(d.GetType("socket_creation_time")->GetItem(CurrentTimestamp()));
    l_request.Connect(l_item);
    LogPeer(1, QStringLiteral("Indirect peer connection requested from user %1").arg(ToQString(l_user.AsString())),
            l_user);
    ConnectLater(lp_socket, l_user);
}

// The asker's attempt ends sooner when it hears that we can not.
void PeerMessenger::GiveUpConnectingBack(ItemPtr i_request) {
    const auto l_token = i_request["peer_connection_request_id"].ToInt64().value_or(0);
    gp_server->SendCantConnectToPeer(static_cast<unsigned int>(l_token), i_request["user"].AsString());
    i_request.Remove();
}

void PeerMessenger::OnIndirectResponseSocketConnected() {
    auto* lp_socket = qobject_cast<QTcpSocket*>(sender());
    lp_socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    ItemPtr l_item = SocketItem("peer_connection_request_socket", lp_socket);
    ItemPtr l_request = l_item["peer_connection_request"];
    if (!l_request) {
        DisposeOfSocket(lp_socket);
        return;
    }

    const ItemPtr l_user = l_request["user"];
    const std::string l_name = l_user.AsString();
    const std::string l_type = l_request["peer_connection_type"].AsString();
    const auto l_token = l_request["peer_connection_request_id"].ToInt64().value_or(0);
    SendMessage(lp_socket, EncodeInitFrame(IndirectAnswer{static_cast<std::uint32_t>(l_token)}));
    l_item.Remove();
    LogPeer(1,
            QStringLiteral("Response connection to indirect request from %1, type %2 opened")
                .arg(ToQString(l_name), ToQString(l_type)),
            l_user);
    l_request.Remove();

    if (l_type == messagingConnection) {
        OpenMessaging(lp_socket, l_user);
    } else if (l_type == fileConnection) {
        connect(lp_socket, &QTcpSocket::readyRead, this, &PeerMessenger::OnSocketReadyToRead);
        AwaitFileToken(lp_socket, l_name);
    } else if (l_type == distributedConnection) {
        HandOver(lp_socket, &PeerMessenger::DNetConnectionRequested, l_name);
    } else {
        DisposeOfSocket(lp_socket);
    }
}
