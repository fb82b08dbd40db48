// Packed messages: read as they are inflated, within a cap, and worth nothing unless they are sound to the end.
#include <gtest/gtest.h>

#include <random>

#include "bytes.h"
#include "peer/inflate.h"
#include "peer/peer_messages.h"

namespace {

std::string Noise(std::size_t i_length) {
    std::minstd_rand l_random(1);
    std::string l_noise(i_length, '\0');
    for (char& l_byte : l_noise)
        l_byte = static_cast<char>(l_random());
    return l_noise;
}

// What can be read in pieces of i_piece, and whether the stream was sound.
std::pair<std::string, bool> ReadAll(std::string_view i_packed, std::size_t i_limit, std::size_t i_piece) {
    InflateStream l_stream(i_packed, i_limit);
    std::string l_all;
    std::string l_piece(i_piece, '\0');
    while (l_stream.ReadBuffer(l_piece.data(), i_piece))
        l_all += l_piece;
    return {l_all, l_stream.Finish()};
}

TEST(Inflate, GivesWhatWasPacked) {
    const std::string l_plain = Noise(300'000);
    for (const std::size_t l_piece : {std::size_t{1}, std::size_t{4096}, std::size_t{150'000}, l_plain.size()}) {
        const auto [l_read, l_isSound] = ReadAll(Packed(l_plain), l_plain.size(), l_piece);
        EXPECT_TRUE(l_isSound);
        EXPECT_EQ(l_read, l_plain.substr(0, l_plain.size() / l_piece * l_piece));
    }
    EXPECT_EQ(ReadAll(Packed(""), 0, 1), (std::pair<std::string, bool>("", true)));
}

TEST(Inflate, AFailedReadMovesNothing) {
    const std::string l_packed = Packed("12345678");
    InflateStream l_stream(l_packed, 100);
    char l_bytes[100] = {};
    ASSERT_TRUE(l_stream.ReadBuffer(l_bytes, 2));
    EXPECT_FALSE(l_stream.ReadBuffer(l_bytes, 7));
    ASSERT_TRUE(l_stream.ReadBuffer(l_bytes, 6));
    EXPECT_EQ(std::string_view(l_bytes, 6), "345678");
    EXPECT_TRUE(l_stream.Finish());
}

TEST(Inflate, TheLimitItselfIsAllowedAndOneMoreIsNot) {
    for (const std::size_t l_limit : {std::size_t{1}, 32 * limits::kibibyte, 100'000UL}) {
        EXPECT_EQ(ReadAll(Packed(std::string(l_limit, 'x')), l_limit, 1).second, true) << l_limit;
        EXPECT_EQ(ReadAll(Packed(std::string(l_limit + 1, 'x')), l_limit, 1).second, false) << l_limit;
    }
}

TEST(Inflate, CutOrSpoiltStreamsAreUnsound) {
    const std::string l_packed = Packed(Noise(500) + std::string(5000, 'x'));
    for (std::size_t l_length = 0; l_length < l_packed.size(); ++l_length)
        EXPECT_FALSE(ReadAll(std::string_view(l_packed).substr(0, l_length), 1 << 20, 1).second) << l_length;
    std::string l_spoilt = l_packed;
    l_spoilt.back() = static_cast<char>(l_spoilt.back() ^ 1); // of the checksum: all that comes before it reads well
    EXPECT_FALSE(ReadAll(l_spoilt, 1 << 20, 1).second);
    EXPECT_TRUE(ReadAll(l_packed + "more", 1 << 20, 1).second);
}

TEST(Inflate, PackingPutsTheCodeInFront) {
    const auto l_message = PackMessage(PM_SHARED_FILE_LIST, StreamOf("body"));
    ASSERT_TRUE(l_message);
    const std::string l_bytes = BytesOf(*l_message);
    EXPECT_EQ(l_bytes.substr(0, 4), Int32(5));
    EXPECT_EQ(ReadAll(std::string_view(l_bytes).substr(4), 4, 4), (std::pair<std::string, bool>("body", true)));
}

} // namespace
