#include "app/quit_signals.h"

#include <QCoreApplication>
#include <QTimer>

#include <csignal>

#include <gtest/gtest.h>

namespace {

// The deadline makes a lost signal a failure and not a hang.
int RunLoop() {
    QTimer l_deadline;
    QObject::connect(&l_deadline, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    l_deadline.start(20'000);
    return QCoreApplication::exec();
}

} // namespace

TEST(QuitSignals, EachSignalEndsTheLoopWithStatusZero) {
    for (const int l_signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(l_signal);
        QuitSignals l_quitSignals;
        QTimer::singleShot(0, [l_signal] { std::raise(l_signal); });
        EXPECT_EQ(RunLoop(), 0);
    }
}

TEST(QuitSignals, SignalBeforeTheLoopIsNotLostAndManyAreOne) {
    QuitSignals l_quitSignals;
    for (int l_count = 0; l_count < 100'000; ++l_count) { // more than a pipe holds
        std::raise(SIGTERM);
    }
    EXPECT_EQ(RunLoop(), 0);
    QTimer::singleShot(0, [] { QCoreApplication::exit(7); });
    EXPECT_EQ(RunLoop(), 7) << "an old signal came again";
}

TEST(QuitSignals, GivesTheSignalsBack) {
    std::signal(SIGHUP, SIG_IGN);
    { QuitSignals l_quitSignals; }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}
