// The timers that managers share, and delayed calls that collapse a burst into one.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <map>
#include <utility>

// Three periodic timers that run from construction on. Ticks need the event loop, so the first ones come after all
// managers stand. Listeners are called in the order in which they connected.
class TimerManager : public QObject {
    Q_OBJECT

public:
    TimerManager();
    ~TimerManager() override;

    QTimer* HalfMinuteTimer() { return &m_halfMinute; }
    QTimer* FiveMinuteTimer() { return &m_fiveMinutes; }
    QTimer* HourTimer() { return &m_hour; }

private:
    QTimer m_halfMinute;
    QTimer m_fiveMinutes;
    QTimer m_hour;
};

// Set by the object's constructor, null again after its destructor.
extern TimerManager* timerManager;

class DelayedInvoker : public QObject {
    Q_OBJECT

public:
    DelayedInvoker();
    ~DelayedInvoker() override;

    // Calls the slot, given as by SLOT(), once after the delay. While a call of the same slot of the same target is
    // pending this does nothing: the first delay stands. A call from within the slot arms the next one.
    // A target destroyed meanwhile is not called.
    void Invoke(QObject* ip_target, QString i_slot, int i_milliseconds);

private Q_SLOTS:
    void OnTimeout();

private:
    using Call = std::pair<QObject*, QString>;

    void OnTargetDestroyed(QObject* ip_target);

    std::map<Call, QTimer*> m_timers;
    std::map<QTimer*, Call> m_calls;
};

extern DelayedInvoker* delayedInvoker;
