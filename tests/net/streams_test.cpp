// The encodings, their limits, and the growth of the stream.
#include "net/wire.h"

#include <gtest/gtest.h>

namespace {

std::string Hex(std::string_view i_bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string l_text;
    for (const unsigned char l_byte : i_bytes)
        l_text += {digits[l_byte >> 4], digits[l_byte & 15]};
    return l_text;
}

// A stream holding a 4-byte length or count and then i_bytes bytes.
MemStream WithCount(std::uint32_t i_count, std::size_t i_bytes) {
    MemStream l_stream;
    l_stream.Write(i_count);
    const std::string l_body(i_bytes, 'x');
    l_stream.WriteBuffer(l_body.data(), l_body.size());
    return l_stream;
}

TEST(StreamsTest, WritesEveryKindLittleEndianAndUntagged) {
    UserStats l_stats;
    l_stats.averageSpeed = 1;
    l_stats.statsValue64 = 2;
    l_stats.sharedFileCount = 3;
    l_stats.statsValue32 = 4;
    MemStream l_stream;
    l_stream.Write(true);
    l_stream.Write(std::int32_t{-2});
    l_stream.Write(std::int64_t{0x0102030405060708});
    l_stream.Write(std::vector<std::int32_t>{1});
    l_stream.Write(std::set<std::string>{"b", "a"});
    l_stream.Write(std::map<std::int32_t, std::string>{{5, "v"}});
    l_stream.Write(TCPAddress{0x01020304, 5});
    l_stream.Write(l_stats);
    EXPECT_EQ(Hex(l_stream.GetWritten()), "01"
                                          "feffffff"
                                          "0807060504030201"
                                          "0100000001000000"
                                          "0200000001000000610100000062"
                                          "01000000050000000100000076"
                                          "0403020105000000"
                                          "0100000002000000000000000300000004000000");
}

TEST(StreamsTest, ARecordCutShortKeepsTheFieldsBeforeTheCut) {
    UserStats l_stats;
    EXPECT_FALSE(WithCount(9, 4).Read(l_stats)); // half of the 64-bit value
    EXPECT_EQ(l_stats.averageSpeed, 9);
    EXPECT_EQ(l_stats.statsValue64, 0);
}

TEST(StreamsTest, TextEndsAtItsFirstZeroByteButConsumesItsLength) {
    MemStream l_stream;
    l_stream.Write(std::string("a\0bcd", 5));
    l_stream.Write(std::uint8_t{0x80}); // any byte but zero is true
    std::string l_text;
    bool l_flag = false;
    EXPECT_TRUE(l_stream.Read(l_text) && l_stream.Read(l_flag));
    EXPECT_EQ(l_text, "a");
    EXPECT_TRUE(l_flag);
    EXPECT_EQ(l_stream.GetPendingReadLength(), 0);
}

TEST(StreamsTest, LengthsAndCountsOfTheLimitAreReadAndOneMoreIsNot) {
    std::string l_text;
    std::vector<std::int32_t> l_list;
    std::set<std::string> l_set;
    std::map<std::int32_t, std::string> l_map;
    EXPECT_TRUE(WithCount(131072, 131072).Read(l_text));
    EXPECT_FALSE(WithCount(131073, 131073).Read(l_text));
    EXPECT_EQ(l_text.size(), 131072U) << "a failed read must leave the text alone";
    EXPECT_TRUE(WithCount(131072, 131072 * 4).Read(l_list));
    EXPECT_EQ(l_list.size(), 131072U);
    EXPECT_FALSE(WithCount(131073, 131073 * 4).Read(l_list));
    EXPECT_TRUE(l_list.empty()) << "cleared before reading";

    MemStream l_names;
    l_names.Write(std::vector<std::string>(131072, "same"));
    EXPECT_TRUE(l_names.Read(l_set));
    EXPECT_EQ(l_set.size(), 1U);
    EXPECT_TRUE(WithCount(0, 0).Read(l_set));
    EXPECT_TRUE(l_set.empty());
    EXPECT_FALSE(WithCount(131073, 131073 * 8).Read(l_map));
}

TEST(StreamsTest, LyingCountsFailWithoutCost) {
    for (const std::uint32_t l_count : {1U, 0x1FFFFU, 0x20000U, 0x20001U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::string l_text;
        std::vector<std::string> l_list;
        EXPECT_FALSE(WithCount(l_count, 0).Read(l_text)) << l_count;
        EXPECT_FALSE(WithCount(l_count, 0).Read(l_list)) << l_count;
        EXPECT_LT(l_list.capacity(), 2U) << "nothing may be reserved by the count";
    }
}

TEST(MemStreamTest, AWriteThatWouldExactlyFillTheBufferGrowsIt) {
    MemStream l_stream;
    const std::string l_bytes(1000, 'x');
    std::vector<int> l_capacities{l_stream.GetCapacity()};
    for (const unsigned long l_length : {250UL, 5UL, 1UL, 1000UL}) {
        l_stream.WriteBuffer(l_bytes.data(), l_length);
        l_capacities.push_back(l_stream.GetCapacity());
    }
    EXPECT_EQ(l_capacities, (std::vector<int>{256, 256, 256, 512, 2048}));
    EXPECT_EQ(l_stream.GetWritten(), std::string(1256, 'x'));
}

TEST(MemStreamTest, AReadPastTheEndMovesNothing) {
    MemStream l_stream;
    l_stream.Write(std::uint8_t{1});
    std::int32_t l_number = 7;
    EXPECT_FALSE(l_stream.Read(l_number));
    EXPECT_EQ(l_number, 7);
    EXPECT_EQ(l_stream.GetPending(), "\x01");
}

TEST(MemStreamTest, ACopyIsASecondHandleOnTheSameBytesAndIndices) {
    MemStream l_stream;
    MemStream l_copy = l_stream;
    l_stream.Write(std::int32_t{5});
    std::int32_t l_number = 0;
    EXPECT_TRUE(l_copy.Read(l_number));
    EXPECT_EQ(l_number, 5);
    EXPECT_EQ(l_stream.GetPendingReadLength(), 0);
    MemStream& l_same = l_copy;
    l_copy = l_same;
    l_stream = MemStream();
    EXPECT_EQ(l_copy.GetWriteIndex(), 4);
}

TEST(MemStreamTest, AnEmptyBufferTakesExactlyTheCapacityAskedForAndNeverShrinks) {
    MemStream l_stream;
    l_stream.EnsureBufferCapacity(1000);
    l_stream.EnsureBufferCapacity(10);
    EXPECT_EQ(l_stream.GetCapacity(), 1000);
    std::fill_n(l_stream.GetWriteBuffer(), 1000, 'y');
    l_stream.AdvanceWriteIndex(1000);
    EXPECT_EQ(l_stream.GetPending(), std::string(1000, 'y'));
    l_stream.Clear();
    EXPECT_EQ(l_stream.GetCapacity(), 1000);
}

TEST(MemStreamDeathTest, MisuseIsAContractFault) {
    MemStream l_written;
    l_written.Write(true);
    EXPECT_DEATH(l_written.EnsureBufferCapacity(1000), "mp_buffer->m_writeIndex == 0");
    EXPECT_DEATH(MemStream().AdvanceWriteIndex(257), "mp_buffer->m_writeIndex <= mp_buffer->m_bufferSize");
    EXPECT_DEATH(*rcptr<int>(), "mp_object != 0");
}

} // namespace
