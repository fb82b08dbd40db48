#include "transfers/pace.h"

#include <gtest/gtest.h>

#include <limits>

using std::chrono::milliseconds;

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr long long kMost = std::numeric_limits<long long>::max();

// What the upload worker does with a line that takes any block at once: how long 1 MiB takes.
milliseconds TimeOfMebibyte(int i_limit) {
    milliseconds l_now(0);
    for (long long l_sent = 0; l_sent < 1024 * 1024; l_sent += 8192) {
        l_now += PauseBeforeBlock(i_limit, l_now, l_sent);
        l_now += milliseconds(1);
    }
    return l_now;
}

TEST(Pace, KeepsTheAverageAtTheLimit) {
    for (const int l_limit : {10, 64, 100, 512}) {
        const double l_ideal = 1024.0 * 1000 / l_limit;
        EXPECT_NEAR(static_cast<double>(TimeOfMebibyte(l_limit).count()), l_ideal, l_ideal * 0.02 + 900) << l_limit;
    }
    EXPECT_EQ(TimeOfMebibyte(0), milliseconds(128)); // no limit, no pause
}

TEST(Pace, PausesFromTheSlackAndFromAHundredMillisecondsOn) {
    // 100 KiB/s for a second: 102,400 bytes are due.
    EXPECT_EQ(PauseBeforeBlock(100, milliseconds(1000), 102400 + 999), milliseconds(0));
    EXPECT_EQ(PauseBeforeBlock(100, milliseconds(1000), 102400 + 10239), milliseconds(0)); // 99 ms
    EXPECT_EQ(PauseBeforeBlock(100, milliseconds(1000), 102400 + 10240), milliseconds(100));
    EXPECT_EQ(PauseBeforeBlock(1, milliseconds(1000), 1024 + 999), milliseconds(0));
    EXPECT_EQ(PauseBeforeBlock(1, milliseconds(1000), 1024 + 1000), milliseconds(976));
    EXPECT_EQ(PauseBeforeBlock(1, milliseconds(0), kMost), milliseconds(0));      // nothing to measure by yet
    EXPECT_EQ(PauseBeforeBlock(100, milliseconds(60000), 8192), milliseconds(0)); // after a stall
}

TEST(Pace, SurvivesExtremes) {
    EXPECT_EQ(PauseBeforeBlock(kMostInt, milliseconds(kMost), kMost), milliseconds(0));
    EXPECT_GT(PauseBeforeBlock(1, milliseconds(1), kMost), milliseconds(0));
    EXPECT_EQ(PauseBeforeBlock(-1, milliseconds(1000), kMost), milliseconds(0));
    EXPECT_EQ(AverageRate(8192, milliseconds(0)), 0);
    EXPECT_EQ(AverageRate(8192, milliseconds(4)), 2048000);
    EXPECT_EQ(AverageRate(kMost, milliseconds(1)), kMostInt);
}

} // namespace
