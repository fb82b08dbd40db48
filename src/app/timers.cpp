#include "app/timers.h"

#include "app/text.h"

TimerManager* timerManager = nullptr;
DelayedInvoker* delayedInvoker = nullptr;

TimerManager::TimerManager() {
    timerManager = this;
    m_halfMinute.start(30'000);
    m_fiveMinutes.start(300'000);
    m_hour.start(3'600'000);
}

TimerManager::~TimerManager() {
    timerManager = nullptr;
}

DelayedInvoker::DelayedInvoker() {
    delayedInvoker = this;
}

DelayedInvoker::~DelayedInvoker() {
    delayedInvoker = nullptr;
}

void DelayedInvoker::Invoke(QObject* ip_target, QString i_slot, int i_milliseconds) {
    const Call l_call(ip_target, i_slot);
    if (m_timers.contains(l_call)) {
        return;
    }
    QTimer* const lp_timer = new QTimer(this);
    lp_timer->setSingleShot(true);
    // OnTimeout comes first, so that the slot itself may ask for the next call.
    connect(lp_timer, &QTimer::timeout, this, &DelayedInvoker::OnTimeout);
    connect(lp_timer, SIGNAL(timeout()), ip_target, ToUtf8(i_slot).c_str());
    connect(ip_target, &QObject::destroyed, this, &DelayedInvoker::OnTargetDestroyed, Qt::UniqueConnection);
    m_timers.emplace(l_call, lp_timer);
    m_calls.emplace(lp_timer, l_call);
    lp_timer->start(i_milliseconds);
}

void DelayedInvoker::OnTimeout() {
    QTimer* const lp_timer = static_cast<QTimer*>(sender());
    const auto l_found = m_calls.find(lp_timer);
    m_timers.erase(l_found->second);
    m_calls.erase(l_found);
    lp_timer->deleteLater();
}

// Another object may be born at the same address and must not find the dead one's calls pending.
void DelayedInvoker::OnTargetDestroyed(QObject* ip_target) {
    auto l_position = m_timers.lower_bound(Call(ip_target, QString()));
    while (l_position != m_timers.end() && l_position->first.first == ip_target) {
        m_calls.erase(l_position->second);
        delete l_position->second;
        l_position = m_timers.erase(l_position);
    }
}
