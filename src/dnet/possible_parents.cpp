// Reaching those whom the server names as possible parents.
#include "dnet/dnet_manager_private.h"

#include <chrono>

#include "peer/pace.h"
#include "peer/peer_messenger.h"

namespace {

// A list may hold 131,072 entries: the window is not to wait for them.
constexpr int entriesAtOnce = 2000;

} // namespace

// The list is worked off at the pace of connections that the server orders. A list that comes before an earlier one is
// worked off takes its place: whom the server names last it knows best, and what waits stays bounded.
void DNetManager::OnDNetPossibleParents(const Server::PossibleParents& i_parentList) {
    if (HasDNetParent()) {
        LogDNet(1, QStringLiteral("Received possible parents list, but already have a parent. Not processing."));
        return;
    }
    LogDNet(1, QStringLiteral("Received possible parents list, %1 entries").arg(i_parentList.size()));
    m_waitingParents.assign(i_parentList.begin(), i_parentList.end());
    TryWaitingParents();
}

void DNetManager::TryWaitingParents() {
    // Whoever is still waiting may be tried another time.
    if (HasDNetParent())
        m_waitingParents.clear();
    for (int l_count = 0; !m_waitingParents.empty(); ++l_count) {
        if (l_count == entriesAtOnce) {
            m_parentTimer.start(std::chrono::milliseconds(0));
            return;
        }
        const ItemPtr l_known = d.GetType("user")->HasItem(m_waitingParents.front().first);
        const bool l_isTried = l_known && l_known.IsConnected("attempted_dnet_connection");
        const auto l_now = std::chrono::steady_clock::now();
        if (!l_isTried && !ServerOrderedPace().Take(l_now)) {
            m_parentTimer.start(ServerOrderedPace().Wait(l_now));
            return;
        }
        const auto [l_user, l_address] = std::move(m_waitingParents.front());
        m_waitingParents.pop_front();
        if (l_isTried)
            LogDNet(2, QStringLiteral("Already attempted parent connection to %1, skipping").arg(ToQString(l_user)),
                    l_known);
        else
            TryParent(l_user, l_address);
    }
}

// The mark on the user stays for good: nobody is tried twice.
void DNetManager::TryParent(const std::string& i_user, const TCPAddress& i_address) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogDNet(2, QStringLiteral("Attempting parent connection to %1").arg(ToQString(i_user)), l_user);
    l_user.Connect(d.GetType("user_address")->GetItem(i_address.first));
    l_user.Connect(d.GetType("user_port")->GetItem(i_address.second));
    l_user.NewItem("attempted_dnet_connection");
    peerMessenger->RequestDNetConnection(i_user);
}
