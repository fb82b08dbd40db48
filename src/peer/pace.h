// At most so many in any one second.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>

#include "net/limits.h"

class Pace {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit Pace(std::size_t i_perSecond) : m_perSecond(i_perSecond) {}

    // True, and counted, if one more may go now.
    [[nodiscard]] bool Take(Time i_now) {
        while (!m_taken.empty() && i_now - m_taken.front() >= window)
            m_taken.pop_front();
        if (m_taken.size() >= m_perSecond)
            return false;
        m_taken.push_back(i_now);
        return true;
    }

    // How long until Take can succeed again after it has failed; at least a millisecond.
    [[nodiscard]] std::chrono::milliseconds Wait(Time i_now) const {
        if (m_taken.empty())
            return std::chrono::milliseconds(1);
        const auto l_left = std::chrono::ceil<std::chrono::milliseconds>(m_taken.front() + window - i_now);
        return std::max(l_left, std::chrono::milliseconds(1));
    }

private:
    static constexpr std::chrono::seconds window{1};

    std::size_t m_perSecond;
    std::deque<Time> m_taken; // within the last second, oldest first
};

// Of all outgoing connections whose addresses the server names, whoever opens them: they share one pace.
[[nodiscard]] inline Pace& ServerOrderedPace() {
    static Pace s_pace(limits::serverOrderedConnectionsPerSecond);
    return s_pace;
}
