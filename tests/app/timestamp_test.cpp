#include "app/timestamp.h"

#include "store/data.h"

#include <gtest/gtest.h>

TEST(Timestamp, AgesInMillisecondsAndNothingForWhatIsNoTime) {
    Data l_data;
    Type* const lp_times = l_data.NewType("time", true, false, true);
    const QDateTime l_now = QDateTime::currentDateTime();
    const auto l_age = [&](const QDateTime& i_then) {
        return AgeInMilliseconds(lp_times->GetItem(ToTimestamp(i_then)), l_now);
    };
    // Stamps have whole seconds, so an age is up to a second too high.
    const std::optional<qint64> l_minute = l_age(l_now.addSecs(-60));
    ASSERT_TRUE(l_minute);
    EXPECT_GE(*l_minute, 60'000);
    EXPECT_LT(*l_minute, 61'000);
    EXPECT_LT(l_age(l_now.addSecs(3600)), -3'599'000) << "the clock was set back";
    EXPECT_TRUE(AgeInMilliseconds(lp_times->GetItem(CurrentTimestamp()), l_now));

    EXPECT_FALSE(AgeInMilliseconds(nullptr, l_now));
    for (const char* lp_text : {"", "yesterday", "Wed May 35 03:40:13 1998"}) {
        EXPECT_FALSE(AgeInMilliseconds(lp_times->GetItem(lp_text), l_now)) << lp_text;
    }
}
