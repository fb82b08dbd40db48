// What a session may cost the others: an allowance of bytes that refills with time, and the sums over all sessions.
#pragma once

#include <chrono>
#include <cstdint>

// Shared by all sessions of a server.
struct Traffic {
    std::int64_t sent = 0;   // bytes handed to sockets since the start, only ever grows
    std::int64_t queued = 0; // of them, bytes that still wait for their readers
};

class TrafficBudget {
public:
    using Clock = std::chrono::steady_clock;

    TrafficBudget(std::int64_t i_burst, std::int64_t i_perSecond, Clock::time_point i_now)
        : m_burst(i_burst * 1000), m_perMillisecond(i_perSecond), m_left(m_burst), m_counted(i_now) {}

    void Pay(std::int64_t i_bytes) { m_left -= i_bytes * 1000; }

    // How long to wait until something may be spent again; zero if that is now.
    std::chrono::milliseconds Wait(Clock::time_point i_now) {
        const auto l_elapsed = std::chrono::floor<std::chrono::milliseconds>(i_now - m_counted);
        m_counted += l_elapsed; // what is left of a millisecond counts next time
        const std::int64_t l_timeToFull = (m_burst - m_left) / m_perMillisecond + 1;
        m_left = l_elapsed.count() >= l_timeToFull ? m_burst : m_left + l_elapsed.count() * m_perMillisecond;
        return std::chrono::milliseconds(m_left >= 0 ? 0 : -m_left / m_perMillisecond + 1);
    }

private:
    // In thousandths of a byte, so that the refill of a millisecond is a whole number.
    std::int64_t m_burst;
    std::int64_t m_perMillisecond;
    std::int64_t m_left; // below 0: in debt
    Clock::time_point m_counted;
};
