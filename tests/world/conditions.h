// Waiting for something that another process brings about.
#pragma once

#include "server/frame_link.h"

#include <QElapsedTimer>
#include <QThread>

// Polls until the condition holds; false when it still does not after the time, in milliseconds.
template <class Condition>
[[nodiscard]] bool WaitUntil(Condition i_condition, int i_patienceMs = g_patienceMs) {
    QElapsedTimer l_time;
    l_time.start();
    while (!i_condition()) {
        if (l_time.elapsed() > i_patienceMs)
            return false;
        QThread::msleep(10);
    }
    return true;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int g_slowness = 4; // of a build with sanitizers, for what has a time limit of its own
#else
inline constexpr int g_slowness = 1;
#endif
