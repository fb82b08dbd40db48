// The encodings, their limits, and the growth of the stream.
#include "net/wire.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

std::string Hex(std::string_view i_bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string l_text;
    for (const unsigned char l_byte : i_bytes) {
        l_text += digits[l_byte >> 4];
        l_text += digits[l_byte & 15];
    }
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
    MemStream l_stream;
    l_stream.Write(true);
    l_stream.Write(std::int32_t{-2});
    l_stream.Write(std::uint32_t{0x01020304});
    l_stream.Write(std::int64_t{0x0102030405060708});
    l_stream.Write(std::string("ab"));
    l_stream.Write(std::vector<std::int32_t>{1});
    l_stream.Write(std::set<std::string>{"b", "a"});
    l_stream.Write(std::map<std::int32_t, std::string>{{5, "v"}});
    l_stream.Write(TCPAddress{0x01020304, 5});
    EXPECT_EQ(Hex(l_stream.GetWritten()), "01"
                                          "feffffff"
                                          "04030201"
                                          "0807060504030201"
                                          "020000006162"
                                          "0100000001000000"
                                          "0200000001000000610100000062"
                                          "01000000050000000100000076"
                                          "0403020105000000");
}

TEST(StreamsTest, UserStatsTakeTwentyBytesInOrder) {
    UserStats l_stats;
    l_stats.averageSpeed = 1;
    l_stats.statsValue64 = 2;
    l_stats.sharedFileCount = 3;
    l_stats.statsValue32 = 4;
    MemStream l_stream;
    l_stream.Write(l_stats);
    EXPECT_EQ(Hex(l_stream.GetWritten()), "0100000002000000000000000300000004000000");

    UserStats l_read;
    EXPECT_TRUE(l_stream.Read(l_read));
    EXPECT_EQ(l_read, l_stats);
}

TEST(StreamsTest, RecordCutShortKeepsTheFieldsBeforeTheCut) {
    MemStream l_stream;
    l_stream.Write(std::int32_t{9});
    l_stream.Write(std::int32_t{9}); // half of the 64-bit value
    UserStats l_stats;
    EXPECT_FALSE(l_stream.Read(l_stats));
    EXPECT_EQ(l_stats.averageSpeed, 9);
    EXPECT_EQ(l_stats.statsValue64, 0);
}

TEST(StreamsTest, AnyByteButZeroIsTrue) {
    MemStream l_stream;
    l_stream.Write(std::uint8_t{0});
    l_stream.Write(std::uint8_t{0x80});
    bool l_first = true;
    bool l_second = false;
    EXPECT_TRUE(l_stream.Read(l_first) && l_stream.Read(l_second));
    EXPECT_FALSE(l_first);
    EXPECT_TRUE(l_second);
}

TEST(StreamsTest, TextEndsAtItsFirstZeroByteButConsumesItsLength) {
    MemStream l_stream;
    l_stream.Write(std::string("a\0bcd", 5));
    l_stream.Write(std::string("\0", 1));
    l_stream.Write(std::string("next"));
    std::string l_text;
    EXPECT_TRUE(l_stream.Read(l_text));
    EXPECT_EQ(l_text, "a");
    EXPECT_TRUE(l_stream.Read(l_text));
    EXPECT_EQ(l_text, "");
    EXPECT_TRUE(l_stream.Read(l_text));
    EXPECT_EQ(l_text, "next");
}

TEST(StreamsTest, TextOfTheLimitIsReadAndOneByteMoreIsNot) {
    std::string l_text = "before";
    EXPECT_TRUE(WithCount(131072, 131072).Read(l_text));
    EXPECT_EQ(l_text.size(), 131072U);
    EXPECT_FALSE(WithCount(131073, 131073).Read(l_text));
    EXPECT_EQ(l_text.size(), 131072U) << "a failed read must leave the text alone";
}

TEST(StreamsTest, CountsOfTheLimitAreReadAndOneMoreIsNot) {
    std::vector<std::int32_t> l_list;
    EXPECT_TRUE(WithCount(131072, 131072 * 4).Read(l_list));
    EXPECT_EQ(l_list.size(), 131072U);
    EXPECT_FALSE(WithCount(131073, 131073 * 4).Read(l_list));
    EXPECT_TRUE(l_list.empty());

    std::set<std::string> l_set;
    EXPECT_FALSE(WithCount(131073, 131073 * 4).Read(l_set));
    std::map<std::int32_t, std::string> l_map;
    EXPECT_FALSE(WithCount(131073, 131073 * 8).Read(l_map));
}

TEST(StreamsTest, TheSameNameManyTimesIsOneMemberOfASet) {
    MemStream l_stream;
    l_stream.Write(std::vector<std::string>(131072, "same"));
    std::set<std::string> l_set;
    EXPECT_TRUE(l_stream.Read(l_set));
    EXPECT_EQ(l_set, std::set<std::string>{"same"});
}

TEST(StreamsTest, LyingCountsFailWithoutCost) {
    for (const std::uint32_t l_count : {1U, 0x1FFFFU, 0x20000U, 0x20001U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::string l_text;
        EXPECT_FALSE(WithCount(l_count, 0).Read(l_text)) << l_count;
        std::vector<std::string> l_list;
        EXPECT_FALSE(WithCount(l_count, 0).Read(l_list)) << l_count;
        EXPECT_LT(l_list.capacity(), 2U) << "nothing may be reserved by the count";
    }
}

TEST(StreamsTest, ContainersAreClearedBeforeReading) {
    std::vector<std::int32_t> l_list{1, 2};
    std::set<std::string> l_set{"old"};
    std::map<std::int32_t, std::string> l_map{{1, "old"}};
    EXPECT_TRUE(WithCount(0, 0).Read(l_list));
    EXPECT_TRUE(WithCount(0, 0).Read(l_set));
    EXPECT_FALSE(MemStream().Read(l_map));
    EXPECT_TRUE(l_list.empty() && l_set.empty() && l_map.empty());
}

TEST(MemStreamTest, AWriteThatWouldExactlyFillTheBufferGrowsIt) {
    MemStream l_stream;
    EXPECT_EQ(l_stream.GetCapacity(), 256);
    const std::string l_bytes(1000, 'x');
    l_stream.WriteBuffer(l_bytes.data(), 250);
    EXPECT_EQ(l_stream.GetCapacity(), 256);
    l_stream.WriteBuffer(l_bytes.data(), 5);
    EXPECT_EQ(l_stream.GetCapacity(), 256);
    l_stream.WriteBuffer(l_bytes.data(), 1);
    EXPECT_EQ(l_stream.GetCapacity(), 512);
    l_stream.WriteBuffer(l_bytes.data(), 1000);
    EXPECT_EQ(l_stream.GetCapacity(), 2048);
    EXPECT_EQ(l_stream.GetWritten(), std::string(1256, 'x'));
}

TEST(MemStreamTest, AReadPastTheEndMovesNothing) {
    MemStream l_stream;
    l_stream.Write(std::uint8_t{1});
    l_stream.Write(std::uint8_t{2});
    std::int32_t l_number = 7;
    EXPECT_FALSE(l_stream.Read(l_number));
    EXPECT_EQ(l_number, 7);
    EXPECT_EQ(l_stream.GetPendingReadLength(), 2);
    EXPECT_EQ(l_stream.GetReadBuffer()[0], 1);
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
    EXPECT_EQ(l_copy.GetWriteIndex(), 4);
}

TEST(MemStreamTest, AnEmptyBufferTakesExactlyTheCapacityAskedForAndNeverShrinks) {
    MemStream l_stream;
    l_stream.EnsureBufferCapacity(1000);
    EXPECT_EQ(l_stream.GetCapacity(), 1000);
    l_stream.EnsureBufferCapacity(10);
    EXPECT_EQ(l_stream.GetCapacity(), 1000);
    std::iota(l_stream.GetWriteBuffer(), l_stream.GetWriteBuffer() + 1000, char{0});
    l_stream.AdvanceWriteIndex(1000);
    EXPECT_EQ(l_stream.GetPending()[513], char{1});
    l_stream.Clear();
    EXPECT_EQ(l_stream.GetCapacity(), 1000);
}

TEST(MemStreamDeathTest, MisuseIsAContractFault) {
    EXPECT_DEATH(
        {
            MemStream l_stream;
            l_stream.Write(true);
            l_stream.EnsureBufferCapacity(1000);
        },
        "mp_buffer->m_writeIndex == 0");
    EXPECT_DEATH(MemStream().AdvanceWriteIndex(257), "mp_buffer->m_writeIndex <= mp_buffer->m_bufferSize");
    EXPECT_DEATH(*rcptr<int>(), "mp_object != 0");
}

TEST(RcptrTest, TheObjectLivesAsLongAsItsLastHandle) {
    struct Probe {
        explicit Probe(int& i_alive) : m_alive(i_alive) { ++m_alive; }
        ~Probe() { --m_alive; }
        int& m_alive;
    };
    int l_alive = 0;
    rcptr<Probe> l_first(new Probe(l_alive));
    {
        rcptr<Probe> l_second = l_first;
        rcptr<Probe>& l_same = l_first;
        l_first = l_same;
        l_first = rcptr<Probe>();
        EXPECT_EQ(l_alive, 1);
    }
    EXPECT_EQ(l_alive, 0);
}

} // namespace
