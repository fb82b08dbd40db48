#include "server/client_tree.h"

#include <algorithm>
#include <tuple>

ClientTree::Client& ClientTree::Get(const std::string& i_user) {
    Client& l_client = m_clients[i_user];
    l_client.name = i_user;
    return l_client;
}

// A client that comes back may be the same process with its connections to others standing, so what was known of it is
// kept. If it is a new one, it can be offered the same parents again.
void ClientTree::Enter(const std::string& i_user, Session* ip_session) {
    ForgetLongGone(Clock::now());
    Client& l_client = Get(i_user);
    l_client.session = ip_session;
    for (auto& [lp_parent, l_isSinceEntry] : l_client.above) {
        l_isSinceEntry = false;
    }
}

std::string ClientTree::Leave(const std::string& i_user) {
    Client& l_client = Get(i_user);
    const std::string l_parent = l_client.assumedParent ? l_client.assumedParent->name : std::string();
    Assume(l_client, nullptr);
    l_client.session = nullptr;
    l_client.departure = Clock::now();
    l_client.hasParent = false;
    l_client.isLooking = false;
    l_client.hasChildren = false;
    l_client.capacity = 0;
    l_client.level = -1;
    l_client.leader.clear();
    m_departures.emplace_back(l_client.departure, i_user);
    return l_parent;
}

void ClientTree::ForgetLongGone(Clock::time_point i_now) {
    while (!m_departures.empty() && m_departures.front().first + m_limits.departureMemory <= i_now) {
        const auto l_client = m_clients.find(m_departures.front().second);
        if (l_client != m_clients.end() && !l_client->second.session &&
            l_client->second.departure == m_departures.front().first) {
            Forget(l_client->second);
        }
        m_departures.pop_front();
    }
}

void ClientTree::Forget(Client& io_client) {
    for (const auto& [lp_parent, l_isSinceEntry] : io_client.above) {
        lp_parent->below.erase(&io_client);
    }
    for (Client* lp_child : io_client.below) {
        lp_child->above.erase(&io_client);
        if (lp_child->assumedParent == &io_client) {
            Assume(*lp_child, nullptr);
        }
    }
    m_clients.erase(m_clients.find(io_client.name));
}

void ClientTree::Assume(Client& io_client, Client* ip_parent) {
    if (io_client.assumedParent) {
        --io_client.assumedParent->assumedChildren;
    }
    io_client.assumedParent = ip_parent;
    if (ip_parent) {
        ++ip_parent->assumedChildren;
    }
}

void ClientTree::LoseParent(const std::string& i_user) {
    Client& l_client = Get(i_user);
    Assume(l_client, nullptr);
    l_client.hasParent = false;
    l_client.isLooking = true;
    l_client.level = -1;
    l_client.leader.clear();
}

void ClientTree::FindParent(const std::string& i_user) {
    Client& l_client = Get(i_user);
    l_client.hasParent = true;
    l_client.isLooking = false;
}

void ClientTree::SetCapacity(const std::string& i_user, std::int64_t i_capacity) {
    Get(i_user).capacity = i_capacity;
}

void ClientTree::SetHasChildren(const std::string& i_user, bool i_hasChildren) {
    Get(i_user).hasChildren = i_hasChildren;
}

void ClientTree::SetLevel(const std::string& i_user, std::int32_t i_level) {
    Get(i_user).level = i_level;
}

void ClientTree::SetLeader(const std::string& i_user, const std::string& i_leader) {
    Get(i_user).leader = i_leader.size() <= m_limits.name ? i_leader : std::string();
}

// It came with a parent from before the server knew it, or says to have one without having been offered any.
bool ClientTree::IsUnknownAbove(const Client& i_client) {
    return i_client.hasParent && i_client.above.empty();
}

// And the client itself.
void ClientTree::AddAllBelow(const Client& i_client, Clients& io_clients) {
    std::vector<const Client*> l_next = {&i_client};
    while (!l_next.empty()) {
        const Client* lp_client = l_next.back();
        l_next.pop_back();
        if (io_clients.insert(lp_client).second) {
            l_next.insert(l_next.end(), lp_client->below.begin(), lp_client->below.end());
        }
    }
}

// Anyone may be above these.
ClientTree::Clients ClientTree::AllOfUnknownDescent() const {
    Clients l_clients;
    for (const auto& [l_name, l_client] : m_clients) {
        if (IsUnknownAbove(l_client)) {
            AddAllBelow(l_client, l_clients);
        }
    }
    return l_clients;
}

bool ClientTree::HasRoom(const Client& i_client) {
    return i_client.session && i_client.assumedChildren < i_client.capacity;
}

std::int64_t ClientTree::DistanceFromRoot(const Client& i_client) {
    std::int64_t l_steps = 0;
    const Client* lp_client = &i_client;
    for (; lp_client->level < 0 && lp_client->assumedParent; lp_client = lp_client->assumedParent) {
        ++l_steps;
    }
    if (lp_client->level >= 0) {
        return l_steps + lp_client->level;
    }
    return l_steps + (lp_client->hasParent ? 1 : 0);
}

std::vector<std::string> ClientTree::Offer(const std::string& i_user) {
    Client& l_user = Get(i_user);
    Clients l_below;
    AddAllBelow(l_user, l_below);
    const Clients l_unknown = AllOfUnknownDescent();
    const auto l_isAllowed = [&](Client& i_parent) {
        const bool l_hasOtherLeader = !i_parent.leader.empty() && i_parent.leader != i_user;
        const auto l_offered = l_user.above.find(&i_parent);
        return HasRoom(i_parent) && i_parent.leader != i_user && !l_below.contains(&i_parent) &&
               (l_hasOtherLeader || !l_unknown.contains(&i_parent)) &&
               (l_offered == l_user.above.end() || !l_offered->second);
    };

    using Rank = std::tuple<std::int64_t, std::int64_t, std::string_view, Client*>;
    std::vector<Rank> l_ranks;
    for (auto& [l_name, l_parent] : m_clients) {
        if (l_isAllowed(l_parent)) {
            l_ranks.emplace_back(DistanceFromRoot(l_parent), l_parent.assumedChildren, l_name, &l_parent);
        }
    }
    const std::size_t l_free = m_limits.parentsOfClient - std::min(m_limits.parentsOfClient, l_user.above.size());
    const std::size_t l_count = std::min({l_ranks.size(), m_limits.possibleParents, l_free});
    std::partial_sort(l_ranks.begin(), l_ranks.begin() + static_cast<std::ptrdiff_t>(l_count), l_ranks.end());

    std::vector<std::string> l_names;
    for (std::size_t l_index = 0; l_index < l_count; ++l_index) {
        Client* lp_parent = std::get<Client*>(l_ranks[l_index]);
        l_user.above[lp_parent] = true;
        lp_parent->below.insert(&l_user);
        l_names.push_back(lp_parent->name);
    }
    if (l_count > 0) {
        Assume(l_user, std::get<Client*>(l_ranks.front()));
    }
    return l_names;
}

std::vector<std::string> ClientTree::WaitingFor(const std::string& i_parent) const {
    const auto l_found = m_clients.find(i_parent);
    if (l_found == m_clients.end() || !HasRoom(l_found->second)) {
        return {};
    }
    const Client& l_parent = l_found->second;
    Clients l_above = {&l_parent};
    for (std::vector<const Client*> l_next = {&l_parent}; !l_next.empty();) {
        const Client* lp_client = l_next.back();
        l_next.pop_back();
        for (const auto& [lp_upper, l_isSinceEntry] : lp_client->above) {
            if (l_above.insert(lp_upper).second) {
                l_next.push_back(lp_upper);
            }
        }
    }
    std::vector<std::string> l_names;
    auto l_room = static_cast<std::size_t>(l_parent.capacity - l_parent.assumedChildren);
    for (auto l_client = m_clients.begin(); l_client != m_clients.end() && l_names.size() < l_room; ++l_client) {
        if (l_client->second.isLooking && !l_client->second.assumedParent && !l_above.contains(&l_client->second)) {
            l_names.push_back(l_client->first);
        }
    }
    return l_names;
}

bool ClientTree::MayHaveChildren(const Client& i_client) {
    return i_client.hasChildren || std::ranges::any_of(i_client.below, [](const Client* ip_child) {
               return !ip_child->session || ip_child->hasParent;
           });
}

std::vector<Session*> ClientTree::Roots(std::string_view i_searching) const {
    const bool l_isAnyoneUnknown =
        std::ranges::any_of(m_clients, [](const auto& i_entry) { return IsUnknownAbove(i_entry.second); });
    std::vector<Session*> l_roots;
    for (const auto& [l_name, l_client] : m_clients) {
        if (l_client.session && !l_client.hasParent &&
            (l_name != i_searching || l_isAnyoneUnknown || MayHaveChildren(l_client))) {
            l_roots.push_back(l_client.session);
        }
    }
    return l_roots;
}
