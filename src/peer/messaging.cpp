// Frames in and out, and the end of a socket.
#include "peer/peer_messenger_private.h"

#include <QDateTime>

#include "net/server.h"
#include "peer/peer_messages.h"

void PeerMessenger::SendMessage(const std::string& i_user, const MemStream& i_message) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogPeer(1,
            QStringLiteral("Send %1 message to user %2")
                .arg(ToQString(MessageCodeToString(PeekMessageCode(i_message).value_or(0))), ToQString(i_user)),
            l_user);
    const ItemPtr l_connection = PickPeerSocket(l_user);
    if (l_connection) {
        // The item holds the address of a socket of ours, for as long as that lives. What it does not take is lost.
        (void)SendMessage(l_connection.AsPointer<QTcpSocket>(), i_message);
        return;
    }
    LogPeer(2, QStringLiteral("Did not find messaging connection to user, queueing unsent message"), l_user);
    QueueUnsentMessage(l_user, i_message);
    ConnectToUser(i_user, "P");
}

// Of several connections to a user the one that was opened last: the other side may have lost the earlier ones.
ItemPtr PeerMessenger::PickPeerSocket(ItemPtr i_user) {
    const ItemSet l_sockets = i_user.GetItems("peer_socket");
    if (l_sockets.empty())
        return ItemPtr();
    if (l_sockets.size() == 1) {
        LogPeer(2, QStringLiteral("Found one existing messaging connection to user"), i_user);
        return *l_sockets.begin();
    }
    LogPeer(2, QStringLiteral("Found %1 existing messaging connections to user, picking latest").arg(l_sockets.size()),
            i_user);
    ItemPtr l_latest;
    QDateTime l_latestTime;
    for (Item* lp_socket : l_sockets) {
        const QString l_text = ShownValue(lp_socket, "connection_open_time");
        const QDateTime l_time = QDateTime::fromString(l_text, Qt::TextDate);
        if (!l_latest)
            LogPeer(3, QStringLiteral("First connection opened %1").arg(l_text), i_user);
        else if (l_time > l_latestTime)
            LogPeer(3, QStringLiteral("Found connection opened %1, exchanging").arg(l_text), i_user);
        else
            continue;
        l_latest = lp_socket;
        l_latestTime = l_time;
    }
    return l_latest;
}

bool PeerMessenger::SendMessage(QTcpSocket* ip_socket, const MemStream& i_message) {
    if (!HasRoomFor(ip_socket, i_message))
        return false;
    const MemStream l_frame = MakeFrame(i_message);
    const std::string_view l_bytes = l_frame.GetWritten();
    if (ip_socket->write(l_bytes.data(), static_cast<qint64>(l_bytes.size())) == -1) {
        LogPeer(1, QStringLiteral("Error writing message to socket: %1").arg(ip_socket->errorString()));
        return false;
    }
    BufferOf(ip_socket).sentEnd += static_cast<qint64>(l_bytes.size());
    return true;
}

// Made when a socket is first seen. What an accepted socket may send at first is less than what a known peer may.
SocketBufferInfo& PeerMessenger::BufferOf(QTcpSocket* ip_socket) {
    auto& l_info = m_socketBuffers[ip_socket];
    if (!l_info)
        l_info = std::make_shared<SocketBufferInfo>();
    return *l_info;
}

void PeerMessenger::OnSocketReadyToRead() {
    ReadFrom(qobject_cast<QTcpSocket*>(sender()));
}

// Handles what has arrived. Any handler may end the socket or hand it over; then its entry is gone, and neither the
// socket nor what it holds is ours to touch.
void PeerMessenger::ReadFrom(QTcpSocket* ip_socket) {
    BufferOf(ip_socket);
    const std::shared_ptr<SocketBufferInfo> l_info = m_socketBuffers.at(ip_socket);
    if (l_info->isReading)
        return;
    l_info->isReading = true;
    while (!l_info->awaitingFileToken && TakeFrame(ip_socket, *l_info)) {
        const bool l_isGood = HandleMessage(ip_socket, l_info->reader.Frame());
        const auto l_entry = m_socketBuffers.find(ip_socket);
        if (l_entry == m_socketBuffers.end() || l_entry->second != l_info)
            return;
        if (!l_isGood) {
            DisposeOfSocket(ip_socket);
            return;
        }
        l_info->reader.Reset();
        l_info->reader.SetLimit(limits::shareFrame);
    }
    l_info->isReading = false;
    if (l_info->awaitingFileToken)
        ReadFileToken(ip_socket, *l_info);
}

// True when a whole frame is there. The code is looked at as soon as it has come, so that a message that must be short
// is not collected at length.
bool PeerMessenger::TakeFrame(QTcpSocket* ip_socket, SocketBufferInfo& io_info) {
    FrameReader& l_reader = io_info.reader;
    const bool l_isMessaging = static_cast<bool>(SocketItem("peer_socket", ip_socket));
    while (l_reader.GetStatus() == FrameReader::Status::NeedMore) {
        const qint64 l_count = ip_socket->read(l_reader.Place(), static_cast<qint64>(l_reader.Wanted()));
        if (l_count <= 0)
            return false;
        l_reader.Placed(static_cast<std::size_t>(l_count));
        const auto l_code = l_isMessaging ? PeekMessageCode(l_reader.Frame()) : std::nullopt;
        if (l_code)
            l_reader.SetLimit(LongestPeerFrame(*l_code));
    }
    if (l_reader.GetStatus() == FrameReader::Status::FrameReady)
        return true;
    const ItemPtr l_user = SocketItem("peer_socket", ip_socket)["user"];
    LogPeer(1,
            QStringLiteral("A message of %1 bytes from user %2 is too long, disposing of socket")
                .arg(QString::number(static_cast<qint32>(l_reader.Length())), ToQString(l_user.AsString())),
            l_user);
    DisposeOfSocket(ip_socket);
    return false;
}

// What lies behind the token is the new owner's.
void PeerMessenger::ReadFileToken(QTcpSocket* ip_socket, const SocketBufferInfo& i_info) {
    quint32 l_token = 0;
    if (ip_socket->bytesAvailable() < qint64{sizeof(l_token)})
        return;
    ip_socket->read(reinterpret_cast<char*>(&l_token), sizeof(l_token));
    HandOver(ip_socket, &PeerMessenger::FileConnectionRequested, i_info.tokenUser, l_token);
}

void PeerMessenger::OnSocketClosed() {
    DisposeOfSocket(qobject_cast<QTcpSocket*>(sender()));
}

void PeerMessenger::OnSocketError(QAbstractSocket::SocketError) {
    DisposeOfSocket(qobject_cast<QTcpSocket*>(sender()));
}

void PeerMessenger::DisposeOfSocket(QTcpSocket* ip_socket) {
    if (g_peerMessengerDeleted)
        return;
    ip_socket->disconnect(this);
    ip_socket->close();
    ip_socket->deleteLater();
    Release(ip_socket);
    LogPeer(1, QStringLiteral("Disposing of socket"));

    if (ItemPtr l_connectBack = SocketItem("peer_connection_request_socket", ip_socket)) {
        LogPeer(2, QStringLiteral("Identified as peer connection request socket"));
        if (const ItemPtr l_request = l_connectBack["peer_connection_request"]) {
            LogPeer(2, QStringLiteral("Request found, removing"));
            GiveUpConnectingBack(l_request);
        } else {
            LogPeer(2, QStringLiteral("Request not found"));
        }
    } else if (SocketItem("uninitialized_socket", ip_socket)) {
        LogPeer(2, QStringLiteral("Identified as uninitialized socket"));
    } else if (SocketItem("peer_socket", ip_socket)) {
        LogPeer(2, QStringLiteral("Identified as peer socket"));
    } else {
        LogPeer(2, QStringLiteral("Socket not identified"));
    }

    for (const char* lp_type :
         {"uninitialized_socket", "peer_socket", "connect_to_peer_request_socket", "peer_connection_request_socket"}) {
        if (ItemPtr l_item = SocketItem(lp_type, ip_socket))
            l_item.Remove();
    }
}

void PeerMessenger::OnPeerSocketItemAdded(Item* ip_item) {
    ItemPtr(ip_item).Connect(
        d.GetType("last_activity_time")->GetItem(Value(new QDateTime(QDateTime::currentDateTime()))));
}

void PeerMessenger::OnPeerSocketItemRemoved(Item* ip_item) {
    ItemPtr l_activity = ItemPtr(ip_item)["last_activity_time"];
    if (!l_activity)
        return;
    delete l_activity.AsPointer<QDateTime>();
    l_activity.Remove();
}
