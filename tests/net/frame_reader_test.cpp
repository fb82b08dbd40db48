// Frames in pieces of any size, and lengths that lie.
#include "net/frame_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using Status = FrameReader::Status;

constexpr std::size_t limit = 64 * limits::mebibyte;

std::string FrameOf(const std::string& i_body) {
    MemStream l_body;
    l_body.WriteBuffer(i_body.data(), i_body.size());
    return std::string(MakeFrame(l_body).GetWritten());
}

std::string LengthOnly(std::uint32_t i_length) {
    return std::string(reinterpret_cast<const char*>(&i_length), 4);
}

// A device whose bytes arrive as the test says.
class Source {
public:
    explicit Source(std::string i_bytes) : m_bytes(std::move(i_bytes)) {}
    std::int64_t read(char* ip_destination, std::int64_t i_length) {
        const std::size_t l_count = std::min(static_cast<std::size_t>(i_length), m_bytes.size());
        std::memcpy(ip_destination, m_bytes.data(), l_count);
        m_bytes.erase(0, l_count);
        return static_cast<std::int64_t>(l_count);
    }
    std::string m_bytes;
};

TEST(FrameReaderTest, TheLengthCountsTheBodyAlone) {
    EXPECT_EQ(FrameOf("abc"), LengthOnly(3) + "abc");
}

TEST(FrameReaderTest, AssemblesFramesThatArriveByteByByte) {
    FrameReader l_reader(limit);
    const std::string l_bytes = FrameOf("first") + FrameOf("") + FrameOf("third");
    std::vector<std::string> l_frames;
    for (const char l_byte : l_bytes) {
        if (l_reader.Take(&l_byte, 1) == Status::FrameReady) {
            l_frames.emplace_back(l_reader.Frame().GetPending());
            l_reader.Reset();
        }
    }
    EXPECT_EQ(l_frames, (std::vector<std::string>{"first", "", "third"}));
}

TEST(FrameReaderTest, TakesWholeFramesAndWaitsForTheRestOfACutOne) {
    FrameReader l_reader(limit);
    const std::string l_third = FrameOf("third");
    Source l_source(FrameOf("first") + FrameOf("second") + l_third.substr(0, 6));
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    EXPECT_EQ(l_reader.Frame().GetPending(), "first");
    l_reader.Reset();
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    EXPECT_EQ(l_reader.Frame().GetPending(), "second");
    l_reader.Reset();
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::NeedMore);
    l_source.m_bytes = l_third.substr(6) + "behind";
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    EXPECT_EQ(l_reader.Frame().GetPending(), "third");
    EXPECT_EQ(l_source.m_bytes, "behind") << "bytes behind the frame belong to someone else";
    EXPECT_EQ(l_reader.Wanted(), 0U);
}

TEST(FrameReaderTest, JudgesTheLengthBeforeTheBody) {
    for (const std::uint32_t l_length : {limits::textLengthOrCount * 512 + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        FrameReader l_reader(limit);
        EXPECT_EQ(l_reader.Take(LengthOnly(l_length).data(), 4), Status::BadLength) << l_length;
        EXPECT_EQ(l_reader.Wanted(), 0U);
        EXPECT_EQ(l_reader.Length(), l_length);
    }
    FrameReader l_reader(limit);
    EXPECT_EQ(l_reader.Take(LengthOnly(limit).data(), 4), Status::NeedMore);
}

TEST(FrameReaderTest, MemoryFollowsTheBytesThatArrived) {
    FrameReader l_reader(limit);
    static_cast<void>(l_reader.Take(LengthOnly(limit).data(), 4));
    EXPECT_EQ(l_reader.Frame().GetCapacity(), 256) << "an announcement costs nothing";
    const std::string l_piece(1024, 'x');
    std::size_t l_arrived = 0;
    while (l_arrived < 4 * limits::mebibyte) {
        static_cast<void>(l_reader.Take(l_piece.data(), l_piece.size()));
        l_arrived += l_piece.size();
        ASSERT_LE(static_cast<std::size_t>(l_reader.Frame().GetCapacity()), 2 * l_arrived + limits::receivePiece);
    }
}

TEST(FrameReaderTest, ABodyOfSeveralPiecesArrivesWholeAndItsMemoryIsGivenBack) {
    std::string l_body(3 * limits::receivePiece + 17, '\0');
    for (std::size_t l_index = 0; l_index < l_body.size(); ++l_index)
        l_body[l_index] = static_cast<char>(l_index * 31);
    FrameReader l_reader(limit);
    Source l_source(FrameOf(l_body));
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    EXPECT_TRUE(l_reader.Frame().GetPending() == l_body);
    l_reader.Reset();
    EXPECT_LE(static_cast<std::size_t>(l_reader.Frame().GetCapacity()), limits::keptReceiveBuffer);
}

TEST(FrameReaderTest, AHandleOnTheLastFrameOutlivesARenewal) {
    FrameReader l_reader(limit);
    Source l_source(FrameOf("body"));
    ASSERT_EQ(l_reader.TakeFrom(l_source), Status::FrameReady);
    MemStream l_frame = l_reader.Frame();
    l_reader.Renew();
    EXPECT_EQ(l_frame.GetPending(), "body");
    EXPECT_EQ(l_reader.Wanted(), 4U);
}

TEST(FrameReaderTest, ANarrowerLimitJudgesTheFrameAtHand) {
    FrameReader l_reader(100);
    Source l_source(LengthOnly(50) + "abcd");
    EXPECT_EQ(l_reader.TakeFrom(l_source), Status::NeedMore);
    l_reader.SetLimit(50);
    EXPECT_EQ(l_reader.GetStatus(), Status::NeedMore);
    l_reader.SetLimit(49);
    EXPECT_EQ(l_reader.GetStatus(), Status::BadLength);
}

} // namespace
