// Connections that have proven nothing yet: few in all, few from one address, each for a short time. One who comes when
// there is no room takes the place of the oldest of the same address, or of the oldest of the address that holds the
// most: whoever floods pushes out its own, and an honest caller, who speaks at once, does not meet the flood.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class Strangers {
public:
    using Id = const void*;
    using Time = std::chrono::steady_clock::time_point;

    // Returns who has to go for i_id; it is out of the books already.
    [[nodiscard]] std::optional<Id> Admit(Id i_id, std::uint32_t i_address, Time i_now);
    // Nothing happens if the id is not here.
    void Release(Id i_id);
    // Those whose time is up at i_now; they stay in the books.
    [[nodiscard]] std::vector<Id> Overdue(Time i_now) const;

    [[nodiscard]] std::size_t Count() const { return m_entries.size(); }

private:
    struct Entry {
        Id id;
        std::uint32_t address;
        Time since;
    };

    [[nodiscard]] int CountOf(std::uint32_t i_address) const;
    [[nodiscard]] std::uint32_t BusiestAddress() const;
    Id RemoveOldestOf(std::uint32_t i_address);

    std::vector<Entry> m_entries; // oldest first
};
