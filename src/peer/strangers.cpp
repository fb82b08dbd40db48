#include "peer/strangers.h"

#include <algorithm>

#include "net/limits.h"

std::optional<Strangers::Id> Strangers::Admit(Id i_id, std::uint32_t i_address, Time i_now) {
    std::optional<Id> l_leaves;
    if (CountOf(i_address) >= limits::unknownSocketsOfAddress)
        l_leaves = RemoveOldestOf(i_address);
    else if (m_entries.size() >= std::size_t{limits::unknownSockets})
        l_leaves = RemoveOldestOf(BusiestAddress());
    m_entries.push_back({i_id, i_address, i_now});
    return l_leaves;
}

void Strangers::Release(Id i_id) {
    std::erase_if(m_entries, [i_id](const Entry& i_entry) { return i_entry.id == i_id; });
}

std::vector<Strangers::Id> Strangers::Overdue(Time i_now) const {
    std::vector<Id> l_overdue;
    for (const Entry& l_entry : m_entries) {
        if (i_now - l_entry.since >= std::chrono::seconds(limits::unknownSocketSeconds))
            l_overdue.push_back(l_entry.id);
    }
    return l_overdue;
}

int Strangers::CountOf(std::uint32_t i_address) const {
    return static_cast<int>(
        std::ranges::count_if(m_entries, [i_address](const Entry& i_entry) { return i_entry.address == i_address; }));
}

std::uint32_t Strangers::BusiestAddress() const {
    const auto l_busiest =
        std::ranges::max_element(m_entries, {}, [this](const Entry& i_entry) { return CountOf(i_entry.address); });
    return l_busiest->address;
}

Strangers::Id Strangers::RemoveOldestOf(std::uint32_t i_address) {
    const auto l_oldest = std::ranges::find(m_entries, i_address, &Entry::address);
    const Id l_id = l_oldest->id;
    m_entries.erase(l_oldest);
    return l_id;
}
