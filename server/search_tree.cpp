#include "server/search_tree.h"

#include "server/directory.h"
#include "server/session.h"

#include "dnet/dnet_messages.h"
#include "dnet/tree_arithmetic.h"

#include <algorithm>

namespace {

MemStream Relayed(const MemStream& i_treeMessage) {
    MemStream l_body;
    l_body.Write(from_server::DNetMessage::code);
    const std::string_view l_bytes = i_treeMessage.GetWritten();
    l_body.WriteBuffer(l_bytes.data(), l_bytes.size());
    return l_body;
}

} // namespace

SearchTree::SearchTree(const Directory& i_directory, const Limits& i_limits, const TreeTerms& i_terms)
    : m_directory(i_directory), m_limits(i_limits), m_terms(i_terms), m_tree(i_limits) {}

void SearchTree::Enter(Session& io_session) {
    const auto l_now = EventRate::Clock::now();
    m_rates.insert_or_assign(io_session.Name(),
                             Rates{&io_session, EventRate(m_limits.searchesPerSecond, m_limits.searchBurst, l_now),
                                   EventRate(m_limits.parentListsPerSecond, m_limits.parentListBurst, l_now)});
    m_tree.Enter(io_session.Name(), &io_session);
    io_session.Send(Encode(from_server::DNetParentMinSpeed{m_terms.parentMinSpeed}));
    io_session.Send(Encode(from_server::DNetParentSpeedConnectionRatio{m_terms.parentRatio}));
    io_session.Send(Encode(from_server::WishListWait{m_terms.wishInterval}));
}

void SearchTree::Leave(Session& i_session) {
    const auto l_rates = m_rates.find(i_session.Name());
    if (l_rates != m_rates.end() && l_rates->second.session == &i_session) {
        m_rates.erase(l_rates);
        // The children of who has gone may have asked already, when its place was not free yet.
        OfferToWaiting(m_tree.Leave(i_session.Name()));
    }
}

SearchTree::Rates& SearchTree::RatesOf(const Session& i_session) {
    return m_rates.at(i_session.Name()); // messages come only from sessions that have entered
}

void SearchTree::OnFileSearch(Session& i_session, const to_server::FileSearch& i_message) {
    Search(i_session, i_message.token, i_message.text);
}

void SearchTree::OnWishListSearch(Session& i_session, const to_server::WishListSearch& i_message) {
    Search(i_session, i_message.token, i_message.text);
}

// The protocol has no word for a refusal: what is too much goes nowhere.
void SearchTree::Search(const Session& i_session, std::uint32_t i_token, const std::string& i_text) {
    if (!RatesOf(i_session).searches.Take(EventRate::Clock::now())) {
        return;
    }
    const MemStream l_frame = MakeFrame(Relayed(EncodeDNetSearch({i_session.Name(), i_token, i_text})));
    for (Session* lp_root : m_tree.Roots(i_session.Name())) {
        lp_root->SendFrame(l_frame.GetWritten());
    }
}

void SearchTree::OnNoParent(Session& io_session, const to_server::DNetNoParent& i_message) {
    if (!i_message.hasNoParent) {
        m_tree.FindParent(io_session.Name());
        return;
    }
    m_tree.LoseParent(io_session.Name());
    OfferParents(io_session);
}

void SearchTree::OfferParents(Session& io_session) {
    if (!RatesOf(io_session).parentLists.Take(EventRate::Clock::now())) {
        return;
    }
    from_server::DNetPossibleParents l_list;
    for (const std::string& l_parent : m_tree.Offer(io_session.Name())) {
        l_list.parents.emplace_back(l_parent, m_directory.AddressOf(l_parent));
    }
    if (!l_list.parents.empty()) {
        io_session.Send(Encode(l_list));
    }
}

// A client says that it can by the same figures from which the capacity follows here; if they disagree, its word holds
// for one child.
void SearchTree::OnCanParent(Session& i_session, const to_server::DNetCanParent& i_message) {
    const std::string& l_user = i_session.Name();
    const std::int64_t l_capacity = ChildCapacity(m_directory.StatsOf(l_user).averageSpeed, m_terms.parentRatio);
    m_tree.SetCapacity(l_user, i_message.canParent ? std::max<std::int64_t>(1, l_capacity) : 0);
    OfferToWaiting(l_user);
}

void SearchTree::OfferToWaiting(const std::string& i_parent) {
    for (const std::string& l_waiting : m_tree.WaitingFor(i_parent)) {
        OfferParents(*m_rates.at(l_waiting).session);
    }
}

void SearchTree::OnChildDepth(Session& i_session, const to_server::ChildDepth& i_message) {
    m_tree.SetHasChildren(i_session.Name(), i_message.depth);
}

void SearchTree::OnLevel(Session& i_session, const to_server::DNetLevel& i_message) {
    m_tree.SetLevel(i_session.Name(), i_message.level);
}

void SearchTree::OnGroupLeader(Session& i_session, const to_server::DNetGroupLeader& i_message) {
    m_tree.SetLeader(i_session.Name(), i_message.user);
}
