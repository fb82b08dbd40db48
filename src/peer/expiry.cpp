// What the half-minute tick ends. Each step may end more than the one item it looks at, so the steps go by values and
// look each item up at its turn.
#include "peer/peer_messenger_private.h"

#include <QDateTime>

#include <vector>

#include "app/timestamp.h"

namespace {

constexpr qint64 unsentMessageAge = 300'000; // milliseconds, as all of these
constexpr qint64 connectionAttemptAge = 60'000;
constexpr qint64 idleAge = 120'000;

// An age that can not be told is old: nothing may stay for ever because its time stamp is broken.
bool IsOlder(ItemPtr i_timestamp, const QDateTime& i_now, qint64 i_age) {
    return AgeInMilliseconds(i_timestamp, i_now).value_or(i_age) >= i_age;
}

template <class Act>
void ForEachStillThere(const char* ip_type, Act i_act) {
    std::vector<std::string> l_values;
    for (Item* lp_item : d.GetType(ip_type)->GetItems())
        l_values.push_back(lp_item->AsString());
    for (const std::string& l_value : l_values) {
        if (const ItemPtr l_item = d.GetType(ip_type)->HasItem(l_value))
            i_act(l_item);
    }
}

} // namespace

void PeerMessenger::EveryHalfMinute() {
    const QDateTime l_now = QDateTime::currentDateTime();
    ExpireUnsentMessages(l_now);
    ExpireIndirectRequests(l_now);
    ExpireDirectAttempts(l_now);
    ExpireConnectingBack(l_now);
    ExpireIdleConnections(l_now);

    CloseOverdueStrangers(std::chrono::steady_clock::now());
    ForgetStrangers();
    UpdateSocketLimit();
}

void PeerMessenger::ExpireUnsentMessages(const QDateTime& i_now) {
    ForEachStillThere("unsent_message", [&](ItemPtr i_message) {
        if (IsOlder(i_message["send_time"], i_now, unsentMessageAge))
            i_message.Remove();
    });
}

void PeerMessenger::ExpireIndirectRequests(const QDateTime& i_now) {
    ForEachStillThere("indirect_connect_to_peer_request", [&](ItemPtr i_item) {
        if (!IsOlder(i_item["send_time"], i_now, connectionAttemptAge))
            return;
        LogPeer(1,
                TypeAndUser(QStringLiteral("Indirect connection request of type %1 to %2 expired, removing."), i_item),
                i_item["user"]);
        const ItemPtr l_request = i_item["connect_to_peer_request"];
        i_item.Remove();
        if (l_request)
            InspectPeerConnectionRequest(l_request);
    });
}

void PeerMessenger::ExpireDirectAttempts(const QDateTime& i_now) {
    ForEachStillThere("connect_to_peer_request_socket", [&](ItemPtr i_item) {
        if (!IsOlder(i_item["socket_creation_time"], i_now, connectionAttemptAge))
            return;
        LogPeer(1,
                TypeAndUser(QStringLiteral("Direct connection attempt of type %1 to %2 timed out, closing."), i_item),
                i_item["user"]);
        const ItemPtr l_request = i_item["connect_to_peer_request"];
        auto* lp_socket = i_item.AsPointer<QTcpSocket>();
        i_item.Remove();
        Release(lp_socket);
        lp_socket->disconnect(this);
        lp_socket->close();
        lp_socket->deleteLater();
        if (l_request)
            InspectPeerConnectionRequest(l_request);
    });
}

// Closing alone would do for an open connection; one that is still connecting says nothing when it is closed.
void PeerMessenger::ExpireConnectingBack(const QDateTime& i_now) {
    ForEachStillThere("peer_connection_request_socket", [&](ItemPtr i_item) {
        if (!IsOlder(i_item["socket_creation_time"], i_now, connectionAttemptAge))
            return;
        const ItemPtr l_request = i_item["peer_connection_request"];
        LogPeer(
            1,
            TypeAndUser(QStringLiteral("Indirect connection attempt of type %1 to %2 timed out, closing."), l_request),
            l_request["user"]);
        DisposeOfSocket(i_item.AsPointer<QTcpSocket>());
    });
}

void PeerMessenger::ExpireIdleConnections(const QDateTime& i_now) {
    ForEachStillThere("peer_socket", [&](ItemPtr i_item) {
        const auto* lp_lastActivity = i_item["last_activity_time"].AsPointer<QDateTime>();
        if (lp_lastActivity && lp_lastActivity->msecsTo(i_now) < idleAge)
            return;
        LogPeer(1, QStringLiteral("Peer connection to user %1 expired, closing.").arg(ShownValue(i_item, "user")),
                i_item["user"]);
        DisposeOfSocket(i_item.AsPointer<QTcpSocket>());
    });
}

// A caller's name makes a user, and users stay for the run. One whom nothing refers to any more is only a name that
// somebody made up: without this, callers could fill the store with them.
void PeerMessenger::ForgetStrangers() {
    std::erase_if(mp_private->usersMadeByCallers, [](const std::string& i_name) {
        ItemPtr l_user = d.GetType("user")->HasItem(i_name);
        if (!l_user)
            return true;
        if (l_user.IsConnected("peer_socket"))
            return false;
        if (l_user.IsDisconnectedFromAll())
            l_user.Remove();
        return true;
    });
}
