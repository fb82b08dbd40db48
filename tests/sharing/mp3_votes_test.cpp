#include "sharing/mp3_votes.h"

#include "sharing/mp3_votes_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

namespace {

using Bytes = std::vector<unsigned char>;

// The fields as they stand in the header; an ordinary one of MPEG-1, Layer III, 128 kbit/s, stereo.
struct Header {
    int version = 3, layer = 1, protection = 1, rate = 9, frequency = 0, channels = 0;
};

// The header i_count times, each with room behind it.
Bytes operator*(int i_count, const Header& i_header) {
    Bytes l_bytes;
    for (int l_frame = 0; l_frame < i_count; ++l_frame) {
        l_bytes.push_back(0xFF);
        l_bytes.push_back(0xE0 | i_header.version << 3 | i_header.layer << 1 | i_header.protection);
        l_bytes.push_back(i_header.rate << 4 | i_header.frequency << 2);
        l_bytes.push_back(i_header.channels << 6);
        l_bytes.push_back(0);
    }
    return l_bytes;
}

Bytes operator+(Bytes i_front, const Bytes& i_back) {
    i_front.insert(i_front.end(), i_back.begin(), i_back.end());
    return i_front;
}

std::optional<MP3Attributes> Scan(const Bytes& i_file) {
    MP3Votes l_votes;
    for (std::size_t l_at = 0; l_at < i_file.size(); l_at += MP3Votes::blockSize)
        l_votes.TakeBlock(std::span(i_file).subspan(l_at, std::min(MP3Votes::blockSize, i_file.size() - l_at)));
    return l_votes.Result();
}

MP3Attributes Cbr(int i_version, const char* i_channels, int i_frequency, int i_rate) {
    return {i_version, i_channels, i_frequency, false, i_rate};
}

class BytesMaker {
public:
    std::size_t Below(std::size_t i_limit) { return m_engine() % i_limit; }

    // Of the kinds that matter: noise, runs of 0xFF, and bytes of which most make headers.
    Bytes File(std::size_t i_size) {
        static constexpr unsigned char c_second[] = {0xFB, 0xFA, 0xF3, 0xF2, 0xE3, 0xEB, 0xFD, 0xFF, 0xE2, 0xDF};
        const std::size_t l_headersIn10 = Below(11);
        Bytes l_file(i_size);
        for (std::size_t l_at = 0; l_at < i_size; ++l_at)
            l_file[l_at] = static_cast<unsigned char>(m_engine());
        for (std::size_t l_at = 0; l_at + 1 < i_size; l_at += 1 + Below(6)) {
            if (Below(10) >= l_headersIn10)
                continue;
            l_file[l_at] = 0xFF;
            l_file[l_at + 1] = c_second[Below(1 + Below(std::size(c_second)))];
        }
        return l_file;
    }

private:
    std::mt19937 m_engine{20240501};
};

} // namespace

TEST(MP3Votes, AgreesWithTheByteByByteScanOnNoiseAndHeadersOfAllSizes) {
    BytesMaker l_make;
    std::vector<std::size_t> l_sizes;
    for (std::size_t l_size = 0; l_size <= 40; ++l_size)
        l_sizes.insert(l_sizes.end(), 20, l_size);
    for (const std::size_t l_edge : {MP3Votes::blockSize, 2 * MP3Votes::blockSize})
        for (std::size_t l_size = l_edge - 5; l_size <= l_edge + 5; ++l_size)
            l_sizes.insert(l_sizes.end(), 2, l_size);
    for (int l_round = 0; l_round < 400; ++l_round)
        l_sizes.push_back(l_make.Below(3000));

    int l_found = 0, l_vbr = 0;
    for (const std::size_t l_size : l_sizes) {
        const Bytes l_file = l_make.File(l_size);
        const auto l_result = Scan(l_file);
        ASSERT_EQ(l_result, MP3VotesReference::Scan(l_file)) << l_size;
        l_found += l_result.has_value();
        l_vbr += l_result && l_result->vbr;
    }
    EXPECT_GT(l_found, 100);
    EXPECT_GT(l_vbr, 50);
    EXPECT_EQ(Scan(Bytes(100'000, 0xFF)), std::nullopt);
}

TEST(MP3Votes, SeesNoHeaderWithoutAByteBehindItInBlockOrFile) {
    const Bytes l_header = 1 * Header{};
    for (std::size_t l_place = 1; l_place <= 8; ++l_place) {
        Bytes l_short(100 + l_place);
        std::copy_n(l_header.begin(), std::min<std::size_t>(l_place, 4), l_short.begin() + 100);
        EXPECT_EQ(Scan(l_short).has_value(), l_place >= 5) << l_place << " bytes from the end of the file";

        Bytes l_long(2 * MP3Votes::blockSize);
        std::copy(l_header.begin(), l_header.end(), l_long.begin() + MP3Votes::blockSize - l_place);
        EXPECT_EQ(Scan(l_long).has_value(), l_place >= 5) << l_place << " bytes from the end of the block";
        EXPECT_EQ(MP3VotesReference::Scan(l_long).has_value(), l_place >= 5);
    }
    EXPECT_EQ(Scan(Bytes(MP3Votes::blockSize) + l_header), Cbr(1, "stereo", 0, 128));
}

TEST(MP3Votes, DecidesEachFieldByMajorityAndTiesByItsOwnRule) {
    const Header l_plain;
    const Header l_mpeg2{.version = 2}, l_mpeg25{.version = 0}, l_crc{.protection = 0, .rate = 14};
    const std::tuple<const char*, Bytes, std::optional<MP3Attributes>> c_cases[] = {
        {"MPEG-2 wins its tie with MPEG-1", 3 * l_plain + 3 * l_mpeg2, Cbr(2, "stereo", 0, 80)},
        {"MPEG-1 by one vote", 4 * l_plain + 3 * l_mpeg2, Cbr(1, "stereo", 0, 128)},
        {"MPEG-2.5 wins its tie with MPEG-1", 3 * l_plain + 3 * l_mpeg25, std::nullopt},
        {"MPEG-2.5 wins its tie with MPEG-2", 3 * l_plain + 4 * l_mpeg2 + 4 * l_mpeg25, std::nullopt},
        {"MPEG-2.5 below MPEG-2", 5 * l_mpeg2 + 4 * l_mpeg25, Cbr(2, "stereo", 0, 80)},
        {"other layers vote on the version", 3 * l_plain + 3 * Header{.version = 0, .layer = 2}, std::nullopt},
        {"so do runs of 0xFF in the audio data, for MPEG-1", 26 * l_mpeg2 + Bytes(31, 0xFF), std::nullopt},
        {"but on nothing else", 3 * l_plain + 9 * Header{.layer = 3, .protection = 0, .channels = 3},
         Cbr(1, "stereo", 0, 128)},
        {"the reserved version has no vote", 3 * l_plain + 9 * Header{.version = 1, .protection = 0, .channels = 3},
         Cbr(1, "stereo", 0, 128)},
        {"protection clear wins its tie", 3 * l_plain + 3 * l_crc, Cbr(1, "stereo", 0, 320)},
        {"protection set by one vote", 4 * l_plain + 3 * l_crc, Cbr(1, "stereo", 0, 128)},
        {"a reserved sample rate votes on protection",
         3 * l_plain + 1 * l_crc + 2 * Header{.protection = 0, .frequency = 3, .channels = 3},
         Cbr(1, "stereo", 0, 320)},
        {"sample rates 0 and 1 tie", 3 * l_plain + 3 * Header{.rate = 1, .frequency = 1}, Cbr(1, "stereo", 1, 32)},
        {"sample rates 0 and 2 tie", 3 * l_plain + 3 * Header{.rate = 1, .frequency = 2}, Cbr(1, "stereo", 2, 32)},
        {"sample rates 1 and 2 tie", 3 * Header{.frequency = 1} + 3 * Header{.rate = 1, .frequency = 2} + 2 * l_plain,
         Cbr(1, "stereo", 2, 32)},
        {"stereo and joint stereo tie", 3 * l_plain + 3 * Header{.rate = 1, .channels = 1},
         Cbr(1, "joint stereo", 0, 32)},
        {"stereo and mono tie", 3 * l_plain + 3 * Header{.rate = 1, .channels = 3}, Cbr(1, "mono", 0, 32)},
        {"dual mono by one vote", 3 * l_plain + 4 * Header{.rate = 1, .channels = 2}, Cbr(1, "dual mono", 0, 32)},
        {"no rate that is one", 3 * Header{.rate = 0} + 3 * Header{.rate = 15}, std::nullopt},
        {"a header without a rate votes all the same", 3 * l_plain + 4 * Header{.rate = 15, .channels = 3},
         std::nullopt},
        {"no header agrees with all four decisions",
         2 * Header{.channels = 3} + 2 * Header{.frequency = 2} + 1 * Header{.rate = 0, .frequency = 2, .channels = 3},
         std::nullopt},
        {"nothing", {}, std::nullopt},
    };
    for (const auto& [l_what, l_file, l_expected] : c_cases) {
        EXPECT_EQ(Scan(l_file), l_expected) << l_what;
        EXPECT_EQ(MP3VotesReference::Scan(l_file), l_expected) << l_what;
    }
}

TEST(MP3Votes, IsConstantFrom99PercentAndOtherwiseTheMeanRoundedDown) {
    const Header l_320{.rate = 14}, l_32{.rate = 1};
    EXPECT_EQ(Scan(100 * l_320), Cbr(1, "stereo", 0, 320));
    EXPECT_EQ(Scan(999 * l_320 + 1 * l_32), Cbr(1, "stereo", 0, 320));
    EXPECT_EQ(Scan(99 * l_320 + 1 * l_32), Cbr(1, "stereo", 0, 320));
    EXPECT_EQ(Scan(197 * l_320 + 3 * l_32), (MP3Attributes{1, "stereo", 0, true, 315})); // 98.5%, 315.68
    EXPECT_EQ(Scan(97 * l_320 + 3 * l_32), (MP3Attributes{1, "stereo", 0, true, 311}));  // 311.36
    EXPECT_EQ(Scan(1 * l_320 + 1 * l_32), (MP3Attributes{1, "stereo", 0, true, 176}));
}
