// What the server knows of the tree of clients in which searches travel from parent to child: who says to have a
// parent, who can be one, and who was offered to whom.
//
// A client connects to all parents that it is offered and keeps the first one that brings it a search, so the server
// does not know which. It goes by two views of that:
//   above    whoever was offered: the client may hang below any of them. No offer ever closes a ring in this graph, so
//            there is none among the clients either, whichever they choose; in a ring searches would go round for ever.
//   assumed  the first of the last offer, the nearest to the root, which is where the client most likely hangs. It
//            gives distances and the number of children.
// Levels and leaders that clients tell of themselves count where they are told.
#pragma once

#include "server/limits.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class Session;

class ClientTree {
public:
    explicit ClientTree(const Limits& i_limits) : m_limits(i_limits) {}

    // A client who leaves is remembered for a while: it may have lost only the server, and keep its place.
    void Enter(const std::string& i_user, Session* ip_session);
    // Who has room for one child more thereby; empty if nobody.
    std::string Leave(const std::string& i_user);

    void LoseParent(const std::string& i_user); // it looks for one from now on
    void FindParent(const std::string& i_user); // it has one, and gives up the others that it was offered
    // i_capacity: how many children, 0 for none.
    void SetCapacity(const std::string& i_user, std::int64_t i_capacity);
    void SetHasChildren(const std::string& i_user, bool i_hasChildren);
    void SetLevel(const std::string& i_user, std::int32_t i_level);         // any number; below 0: it has none
    void SetLeader(const std::string& i_user, const std::string& i_leader); // empty: it has none

    // Up to Limits::possibleParents that can take one more child and are not below the user, the nearest to the root
    // first. Nobody is offered to the same client twice while it stays. They count as offered then.
    std::vector<std::string> Offer(const std::string& i_user);
    // Those who look for a parent, have nobody on offer, and may be offered this one while it has room.
    std::vector<std::string> WaitingFor(const std::string& i_parent) const;

    // All who are here without a parent and so hear searches from the server alone. A searching root is among them only
    // if others may hang below it.
    std::vector<Session*> Roots(std::string_view i_searching) const;

private:
    struct Client {
        std::string name;
        Session* session = nullptr; // null while it is not here
        std::chrono::steady_clock::time_point departure;
        bool hasParent = false;
        bool isLooking = false;   // has said that it has no parent
        bool hasChildren = false; // as told; false says nothing
        std::int64_t capacity = 0;
        std::int32_t level = -1; // as told
        std::string leader;      // as told
        // Whom it was offered; true for those since it entered.
        std::map<Client*, bool> above;
        std::set<Client*> below; // those to whom it was offered
        Client* assumedParent = nullptr;
        std::int64_t assumedChildren = 0;
    };
    using Clients = std::set<const Client*>;
    using Clock = std::chrono::steady_clock;

    Client& Get(const std::string& i_user);
    static void Assume(Client& io_client, Client* ip_parent);
    void ForgetLongGone(Clock::time_point i_now);
    void Forget(Client& io_client);
    static bool IsUnknownAbove(const Client& i_client);
    static void AddAllBelow(const Client& i_client, Clients& io_clients);
    Clients AllOfUnknownDescent() const;
    static bool HasRoom(const Client& i_client);
    static std::int64_t DistanceFromRoot(const Client& i_client);
    static bool MayHaveChildren(const Client& i_client);

    const Limits& m_limits;
    std::map<std::string, Client, std::less<>> m_clients;               // their addresses stay
    std::deque<std::pair<Clock::time_point, std::string>> m_departures; // also of those who have come back since
};
