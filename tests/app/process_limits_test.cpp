#include "app/process_limits.h"

#include <sys/resource.h>

#include <gtest/gtest.h>

TEST(ProcessLimits, DescriptorsRiseToTheHardLimit) {
    rlimit l_before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &l_before), 0);
    const rlimit l_low = {64, l_before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &l_low), 0);
    RaiseDescriptorLimit();
    rlimit l_after = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &l_after), 0);
    EXPECT_EQ(l_after.rlim_cur, l_before.rlim_max);
    setrlimit(RLIMIT_NOFILE, &l_before);
}
