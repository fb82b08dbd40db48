#include "app/timers.h"

#include <QTest>

#include <gtest/gtest.h>

namespace {

class Target : public QObject {
    Q_OBJECT

public:
    int calls = 0;
    bool again = false;

public Q_SLOTS:
    void OnCalled() {
        ++calls;
        if (again) {
            again = false;
            delayedInvoker->Invoke(this, QString::fromLatin1(SLOT(OnCalled())), 1);
        }
    }
    void OnOther() { calls += 100; }
};

void InvokeCalled(Target& i_target, int i_milliseconds) {
    delayedInvoker->Invoke(&i_target, QString::fromLatin1(SLOT(OnCalled())), i_milliseconds);
}

} // namespace

TEST(TimerManager, RunsThreeTimersFromTheStart) {
    EXPECT_EQ(timerManager, nullptr);
    {
        TimerManager l_manager;
        ASSERT_EQ(timerManager, &l_manager);
        const std::pair<QTimer*, int> l_expected[] = {{l_manager.HalfMinuteTimer(), 30'000},
                                                      {l_manager.FiveMinuteTimer(), 300'000},
                                                      {l_manager.HourTimer(), 3'600'000}};
        for (const auto& [lp_timer, l_interval] : l_expected) {
            EXPECT_TRUE(lp_timer->isActive());
            EXPECT_FALSE(lp_timer->isSingleShot());
            EXPECT_EQ(lp_timer->interval(), l_interval);
        }
    }
    EXPECT_EQ(timerManager, nullptr);
}

TEST(DelayedInvoker, BurstGivesOneCallAtTheFirstDelay) {
    DelayedInvoker l_invoker;
    Target l_target;
    InvokeCalled(l_target, 1);
    InvokeCalled(l_target, 60'000);
    l_invoker.Invoke(&l_target, QString::fromLatin1(SLOT(OnOther())), 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return l_target.calls == 101; }));
    // Nothing of the burst is left over: the slot can be asked for again and comes once more only.
    InvokeCalled(l_target, 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return l_target.calls == 102; }));
}

TEST(DelayedInvoker, SlotMayArmItselfAgain) {
    DelayedInvoker l_invoker;
    Target l_target;
    l_target.again = true;
    InvokeCalled(l_target, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return l_target.calls == 2; }));
}

TEST(DelayedInvoker, DeadTargetLeavesNothingPendingForItsSuccessor) {
    DelayedInvoker l_invoker;
    alignas(Target) unsigned char l_place[sizeof(Target)];
    Target* lp_target = new (l_place) Target;
    InvokeCalled(*lp_target, 60'000);
    lp_target->~Target();
    lp_target = new (l_place) Target;
    InvokeCalled(*lp_target, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return lp_target->calls == 1; }));
    lp_target->~Target();
}

#include "timers_test.moc"
