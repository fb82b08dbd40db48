// The codecs and the arithmetic of the tree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bytes.h"
#include "dnet/dnet_messages.h"
#include "dnet/tree_arithmetic.h"

namespace {

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

TEST(DNetMessages, TheBytesAreThoseOfTheWire) {
    EXPECT_EQ(BytesOf(EncodeDNetSearch({"ann", 0x80000001, "a b"})),
              "\x03" + Int32(49) + Text("ann") + Int32(0x80000001) + Text("a b"));
    EXPECT_EQ(BytesOf(EncodeDNetLevel(-1)), "\x04" + Int32(0xFFFFFFFF));
    EXPECT_EQ(BytesOf(EncodeDNetGroupLeader("top")), "\x05" + Text("top"));
    EXPECT_EQ(BytesOf(EncodeDNetChildDepth(2)), "\x07" + Int32(2));
}

TEST(DNetMessages, EveryCutOfASearchFailsAndTheRestIsLeftAlone) {
    const std::string l_whole = BytesOf(EncodeDNetSearch({"ann", 5, "a b"}));
    for (std::size_t l_length = 1; l_length < l_whole.size(); ++l_length) {
        MemStream l_body = StreamOf(l_whole.substr(0, l_length));
        ASSERT_EQ(DecodeDNetCode(l_body), DNetCode::Search);
        EXPECT_FALSE(DecodeDNetSearch(l_body).isRead) << l_length;
    }
    MemStream l_body = StreamOf(l_whole.substr(1) + "more");
    const DNetSearchFields l_fields = DecodeDNetSearch(l_body);
    ASSERT_TRUE(l_fields.search);
    EXPECT_EQ(l_fields.search->user, "ann");
    EXPECT_EQ(l_fields.search->token, 5U);
    EXPECT_EQ(l_fields.search->text, "a b");

    MemStream l_other = StreamOf(Int32(50));
    EXPECT_TRUE(DecodeDNetSearch(l_other).isRead);
    MemStream l_short = StreamOf("abc");
    EXPECT_FALSE(DecodeDNetNumber(l_short));
    for (const std::uint32_t l_length : lyingNumbers) {
        MemStream l_lying = StreamOf(Int32(l_length) + "x");
        EXPECT_FALSE(DecodeDNetGroupLeader(l_lying)) << l_length;
    }
}

TEST(TreeArithmetic, NoNumberOverflows) {
    EXPECT_EQ(OneFurther(0), 1);
    EXPECT_EQ(OneFurther(largest), largest);
    EXPECT_EQ(OneFurther(smallest), smallest + 1);

    EXPECT_TRUE(IsFastEnoughForParent(10 * 1024, 10));
    EXPECT_FALSE(IsFastEnoughForParent(10 * 1024 - 1, 10));
    EXPECT_FALSE(IsFastEnoughForParent(largest, largest));
    EXPECT_TRUE(IsFastEnoughForParent(largest * 1024LL, largest));

    EXPECT_EQ(ChildCapacity(102400, 20), 50);
    EXPECT_EQ(ChildCapacity(1127, 11), 1); // 11.005 tenths of a kilobyte
    EXPECT_EQ(ChildCapacity(1126, 11), 0); // 10.996
    EXPECT_EQ(ChildCapacity(0, 1), 0);
    for (const std::int32_t l_ratio : {0, -2, smallest})
        EXPECT_EQ(ChildCapacity(1'000'000, l_ratio), 0);
    EXPECT_GT(ChildCapacity(std::numeric_limits<long long>::max(), 1), 0);
    EXPECT_LT(ChildCapacity(std::numeric_limits<long long>::min(), 1), 0);
}

} // namespace
