// Searches on their way into the tree of clients, and what the server does for the tree: it tells newcomers the terms,
// and those who look for a parent whom they can try.
#pragma once

#include "server/client_tree.h"
#include "server/event_rate.h"
#include "server/limits.h"

#include "net/server_messages.h"

#include <cstdint>
#include <map>
#include <string>

class Directory;
class Session;

// What every client is told at its login.
struct TreeTerms {
    std::int32_t parentMinSpeed = 1;  // kilobytes a second, below which a client takes no children
    std::int32_t parentRatio = 50;    // the tenths of a kilobyte a second that a parent must have for each child
    std::uint32_t wishInterval = 720; // seconds between two saved searches of a client
};

class SearchTree {
public:
    SearchTree(const Directory& i_directory, const Limits& i_limits, const TreeTerms& i_terms);

    void Enter(Session& io_session);
    void Leave(Session& i_session); // nothing for a session that has been superseded

    void OnFileSearch(Session& i_session, const to_server::FileSearch& i_message);
    void OnWishListSearch(Session& i_session, const to_server::WishListSearch& i_message);
    void OnNoParent(Session& io_session, const to_server::DNetNoParent& i_message);
    void OnCanParent(Session& i_session, const to_server::DNetCanParent& i_message);
    void OnChildDepth(Session& i_session, const to_server::ChildDepth& i_message);
    void OnLevel(Session& i_session, const to_server::DNetLevel& i_message);
    void OnGroupLeader(Session& i_session, const to_server::DNetGroupLeader& i_message);

private:
    struct Rates {
        Session* session;
        EventRate searches;
        EventRate parentLists;
    };

    void Search(const Session& i_session, std::uint32_t i_token, const std::string& i_text);
    void OfferParents(Session& io_session);
    void OfferToWaiting(const std::string& i_parent);
    Rates& RatesOf(const Session& i_session);

    const Directory& m_directory;
    const Limits& m_limits;
    const TreeTerms m_terms;
    ClientTree m_tree;
    std::map<std::string, Rates> m_rates; // of those who are here
};
