// Waiting for what the event loop, a worker or the other end of a connection has to do first.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

#include <functional>

// Runs the event loop until the condition holds; false when that takes beyond any sane time.
inline bool Until(const std::function<bool()>& i_condition) {
    QElapsedTimer l_clock;
    l_clock.start();
    while (!i_condition()) {
        if (l_clock.elapsed() > 60000) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

// What has been posted so far, and what that posts in turn.
inline void Settle() {
    for (int l_round = 0; l_round < 3; ++l_round) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}
