// The books on strangers and on pace, without sockets.
#include <gtest/gtest.h>

#include "net/limits.h"
#include "peer/pace.h"
#include "peer/strangers.h"

namespace {

using namespace std::chrono_literals;

const Strangers::Time start{1000h};

Strangers::Id IdOf(int i_number) {
    return reinterpret_cast<Strangers::Id>(static_cast<std::uintptr_t>(i_number));
}

TEST(Strangers, OneAddressPushesOutItsOwnOldest) {
    Strangers l_strangers;
    for (int l_id = 1; l_id <= limits::unknownSocketsOfAddress; ++l_id)
        EXPECT_FALSE(l_strangers.Admit(IdOf(l_id), 7, start));
    EXPECT_FALSE(l_strangers.Admit(IdOf(500), 8, start));
    EXPECT_EQ(l_strangers.Admit(IdOf(501), 7, start), IdOf(1));
    l_strangers.Release(IdOf(2));
    EXPECT_FALSE(l_strangers.Admit(IdOf(502), 7, start));
    EXPECT_EQ(l_strangers.Admit(IdOf(503), 7, start), IdOf(3));
}

TEST(Strangers, InAllTheBusiestAddressGivesWay) {
    Strangers l_strangers;
    const int l_each = 10;
    for (int l_id = 0; l_id < limits::unknownSockets - 1; ++l_id)
        EXPECT_FALSE(l_strangers.Admit(IdOf(l_id + 1), static_cast<std::uint32_t>(l_id / l_each), start));
    EXPECT_FALSE(l_strangers.Admit(IdOf(900), 3, start)); // eleven of address 3 now
    EXPECT_EQ(l_strangers.Admit(IdOf(901), 99, start), IdOf(3 * l_each + 1));
    EXPECT_EQ(l_strangers.Count(), std::size_t{limits::unknownSockets});
}

TEST(Strangers, TimeIsUpAfterAMinute) {
    Strangers l_strangers;
    EXPECT_FALSE(l_strangers.Admit(IdOf(1), 7, start));
    EXPECT_FALSE(l_strangers.Admit(IdOf(2), 7, start + 1s));
    EXPECT_TRUE(l_strangers.Overdue(start + 60s - 1ms).empty());
    EXPECT_EQ(l_strangers.Overdue(start + 60s), std::vector{IdOf(1)});
}

TEST(Pace, LetsSoManyGoInAnySecond) {
    Pace l_pace(3);
    EXPECT_TRUE(l_pace.Take(start));
    EXPECT_TRUE(l_pace.Take(start + 400ms));
    EXPECT_TRUE(l_pace.Take(start + 800ms));
    EXPECT_FALSE(l_pace.Take(start + 999ms));
    EXPECT_EQ(l_pace.Wait(start + 999ms), 1ms);
    EXPECT_EQ(l_pace.Wait(start + 900ms), 100ms);
    EXPECT_TRUE(l_pace.Take(start + 1000ms));
    EXPECT_FALSE(l_pace.Take(start + 1399ms));
    EXPECT_TRUE(l_pace.Take(start + 1400ms));
}

} // namespace
