// For how long the main thread leaves a window without an answer: what it works between two ticks of a timer, while
// this lives. By the processor's account, and by the clock, which tells the same on a machine that has nothing else to
// do.
#pragma once

#include "processor_time.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <vector>

class Heartbeat {
public:
    Heartbeat() {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { OnTick(); });
        m_clock.start();
        m_timer.start(c_interval);
    }

    struct Figures {
        double median, most, mostByClock, total; // milliseconds
    };
    Figures Read() const {
        std::vector<double> l_works = m_works;
        std::sort(l_works.begin(), l_works.end());
        return {l_works.at(l_works.size() / 2), l_works.back(), m_mostByClock, (m_last - m_first) / 1e3};
    }

private:
    static constexpr std::chrono::milliseconds c_interval{2};

    void OnTick() {
        const double l_now = ThreadMicroseconds();
        m_works.push_back((l_now - m_last) / 1e3);
        m_last = l_now;
        m_mostByClock = std::max(m_mostByClock, static_cast<double>(m_clock.nsecsElapsed()) / 1e6 - c_interval.count());
        m_clock.start();
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    const double m_first = ThreadMicroseconds();
    double m_last = m_first;
    std::vector<double> m_works;
    double m_mostByClock = 0;
};
