// How long the calling thread has worked: unlike the clock on the wall, it stands still while other processes have the
// processor, so a limit in it holds on a busy machine too.
#pragma once

#include <ctime>

class ThreadTime {
public:
    ThreadTime() : m_start(Now()) {}
    double Milliseconds() const { return Now() - m_start; }

private:
    static double Now() {
        timespec l_now{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &l_now);
        return static_cast<double>(l_now.tv_sec) * 1e3 + static_cast<double>(l_now.tv_nsec) / 1e6;
    }

    double m_start;
};
