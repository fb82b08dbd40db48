// Frames in pieces of any size, and lengths that lie.
#include "net/frame_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using Status = FrameReader::Status;

constexpr std::size_t limit = limits::serverFrame;

std::string LengthOnly(std::uint32_t i_length) {
    return std::string(reinterpret_cast<const char*>(&i_length), 4);
}

std::string FrameOf(const std::string& i_body) {
    return LengthOnly(static_cast<std::uint32_t>(i_body.size())) + i_body;
}

// A device whose bytes arrive as the test says.
struct Source {
    std::int64_t read(char* ip_destination, std::int64_t i_length) {
        const std::size_t l_count = std::min(static_cast<std::size_t>(i_length), m_bytes.size());
        std::memcpy(ip_destination, m_bytes.data(), l_count);
        m_bytes.erase(0, l_count);
        return static_cast<std::int64_t>(l_count);
    }
    std::string m_bytes;
};

TEST(FrameReaderTest, AssemblesFramesThatArriveByteByByte) {
    FrameReader l_reader(limit);
    std::vector<std::string> l_frames;
    for (const char l_byte : FrameOf("first") + FrameOf("") + FrameOf("third")) {
        if (l_reader.Take(&l_byte, 1) == Status::FrameReady) {
            l_frames.emplace_back(l_reader.Frame().GetPending());
            l_reader.Reset();
        }
    }
    EXPECT_EQ(l_frames, (std::vector<std::string>{"first", "", "third"}));
}

TEST(FrameReaderTest, WaitsForTheRestOfACutFrameAndLeavesWhatIsBehindIt) {
    FrameReader l_reader(limit);
    Source l_source{FrameOf("first") + FrameOf("second").substr(0, 6)};
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    MemStream l_first = l_reader.Frame();
    l_reader.Renew();
    EXPECT_EQ(l_first.GetPending(), "first") << "a handle on the frame outlives a renewal";
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::NeedMore);
    l_source.m_bytes = FrameOf("second").substr(6) + "behind";
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    EXPECT_EQ(l_reader.Frame().GetPending(), "second");
    EXPECT_EQ(l_source.m_bytes, "behind");
    EXPECT_EQ(l_reader.Wanted(), 0U);
}

TEST(FrameReaderTest, JudgesTheLengthBeforeTheBody) {
    for (const std::uint32_t l_length : {std::uint32_t{limit} + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        FrameReader l_reader(limit);
        EXPECT_EQ(l_reader.Take(LengthOnly(l_length).data(), 4), Status::BadLength) << l_length;
        EXPECT_EQ(l_reader.Wanted(), 0U);
        EXPECT_EQ(l_reader.Length(), l_length);
    }
    FrameReader l_reader(limit);
    EXPECT_EQ(l_reader.Take(LengthOnly(limit).data(), 4), Status::NeedMore);
    l_reader.SetLimit(limit - 1);
    EXPECT_EQ(l_reader.GetStatus(), Status::BadLength) << "a narrower limit judges the frame at hand";
}

TEST(FrameReaderTest, MemoryFollowsTheBytesThatArrived) {
    FrameReader l_reader(limit);
    std::string l_body(limits::mebibyte + 17, '\0');
    for (std::size_t l_index = 0; l_index < l_body.size(); ++l_index)
        l_body[l_index] = static_cast<char>(l_index * 31);
    EXPECT_EQ(l_reader.Take(FrameOf(l_body).data(), 4), Status::NeedMore);
    EXPECT_EQ(l_reader.Frame().GetCapacity(), 256) << "an announcement costs nothing";
    for (std::size_t l_arrived = 0; l_arrived < l_body.size();) {
        const std::size_t l_length = std::min({std::size_t{1000}, l_reader.Wanted(), l_body.size() - l_arrived});
        static_cast<void>(l_reader.Take(l_body.data() + l_arrived, l_length));
        l_arrived += l_length;
        ASSERT_LE(static_cast<std::size_t>(l_reader.Frame().GetCapacity()),
                  std::max(limits::receivePiece, 2 * l_arrived));
    }
    ASSERT_EQ(l_reader.GetStatus(), Status::FrameReady);
    EXPECT_TRUE(l_reader.Frame().GetPending() == l_body);
    l_reader.Reset();
    EXPECT_LE(static_cast<std::size_t>(l_reader.Frame().GetCapacity()), limits::keptReceiveBuffer);
}

} // namespace
