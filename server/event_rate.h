// How often one client may ask for something that costs many others: so many at once, and so many a second after that.
#pragma once

#include <algorithm>
#include <chrono>

class EventRate {
public:
    using Clock = std::chrono::steady_clock;

    EventRate(int i_perSecond, int i_burst, Clock::time_point i_now)
        : m_perSecond(i_perSecond), m_burst(i_burst), m_left(i_burst), m_counted(i_now) {}

    // Whether one more may happen now; if so, it is counted. What is refused costs nothing.
    [[nodiscard]] bool Take(Clock::time_point i_now) {
        m_left = std::min(m_burst, m_left + m_perSecond * std::chrono::duration<double>(i_now - m_counted).count());
        m_counted = i_now;
        if (m_left < 1)
            return false;
        m_left -= 1;
        return true;
    }

private:
    double m_perSecond;
    double m_burst;
    double m_left; // events that may still happen
    Clock::time_point m_counted;
};
