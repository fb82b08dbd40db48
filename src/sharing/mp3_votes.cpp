#include "sharing/mp3_votes.h"

#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr std::size_t c_headerSize = 4;
constexpr unsigned c_layer3 = 1;

// The two bits of the version as they stand in the header.
constexpr unsigned c_mpeg25 = 0;
constexpr unsigned c_reservedVersion = 1;
constexpr unsigned c_mpeg2 = 2;
constexpr unsigned c_mpeg1 = 3;

constexpr unsigned c_reservedFrequency = 3;
// Index 0 is a rate of the encoder's own choice, 15 is none.
constexpr unsigned c_firstRate = 1;
constexpr unsigned c_lastRate = 14;

// A file is of one constant rate if more than this share of its frames has it.
constexpr std::uint64_t c_constantPercent = 98;

// Layer III, kbit/s, by bit rate index.
using Rates = std::array<int, 15>;
constexpr Rates c_mpeg1Rates = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
constexpr Rates c_mpeg2Rates = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};

constexpr std::array<std::string_view, 4> c_channelModes = {"stereo", "joint stereo", "dual mono", "mono"};

struct Fields {
    unsigned version, protection, rate, frequency, channels;

    // version 2 bits, protection 1, rate 4, frequency 2, channels 2
    std::size_t Cell() const { return version << 9 | protection << 8 | rate << 4 | frequency << 2 | channels; }
    static Fields Of(std::size_t i_cell) {
        const auto l_cell = static_cast<unsigned>(i_cell);
        return {l_cell >> 9, l_cell >> 8 & 1, l_cell >> 4 & 15, l_cell >> 2 & 3, l_cell & 3};
    }
};

struct Tally {
    std::array<std::uint64_t, 4> version{}, frequency{}, channels{};
    std::array<std::uint64_t, 2> protection{};

    // A header is read from front to back and votes up to its first impossible field.
    void Add(const Fields& i_fields, std::uint64_t i_count) {
        version[i_fields.version] += i_count;
        if (i_fields.version == c_reservedVersion)
            return;
        protection[i_fields.protection] += i_count;
        if (i_fields.frequency == c_reservedFrequency)
            return;
        frequency[i_fields.frequency] += i_count;
        channels[i_fields.channels] += i_count;
    }

    // MPEG-2.5 wins its ties, MPEG-2 those against MPEG-1.
    unsigned Version() const {
        const unsigned l_best = version[c_mpeg2] >= version[c_mpeg1] ? c_mpeg2 : c_mpeg1;
        return version[c_mpeg25] >= version[l_best] ? c_mpeg25 : l_best;
    }
    unsigned Protection() const { return protection[1] > protection[0] ? 1 : 0; }
    unsigned Frequency() const { return HighestOf(frequency, 3); }
    unsigned Channels() const { return HighestOf(channels, 4); }

    // A tie goes to the higher code.
    static unsigned HighestOf(const std::array<std::uint64_t, 4>& i_votes, unsigned i_codes) {
        unsigned l_best = 0;
        for (unsigned l_code = 1; l_code < i_codes; ++l_code)
            if (i_votes[l_code] >= i_votes[l_best])
                l_best = l_code;
        return l_best;
    }
};

#ifdef __SSE2__
// As many places as a word has bits.
constexpr std::size_t c_group = 64;

// All bits of a byte are set if a candidate starts there. Reads one byte beyond the sixteen.
__m128i CandidatesAmong16(const unsigned char* ip_places) {
    const __m128i l_mark = _mm_set1_epi8(static_cast<char>(0xFF));
    const __m128i l_topBits = _mm_set1_epi8(static_cast<char>(0xE0));
    const __m128i l_first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ip_places));
    const __m128i l_second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ip_places + 1));
    return _mm_and_si128(_mm_cmpeq_epi8(l_first, l_mark),
                         _mm_cmpeq_epi8(_mm_and_si128(l_second, l_topBits), l_topBits));
}

std::uint64_t Bits(__m128i i_bytes) {
    return static_cast<unsigned>(_mm_movemask_epi8(i_bytes));
}

// Bit n is set if a candidate starts at ip_group[n].
std::uint64_t CandidatesInGroup(const unsigned char* ip_group) {
    const __m128i l_a = CandidatesAmong16(ip_group);
    const __m128i l_b = CandidatesAmong16(ip_group + 16);
    const __m128i l_c = CandidatesAmong16(ip_group + 32);
    const __m128i l_d = CandidatesAmong16(ip_group + 48);
    // Most groups hold none: one test settles them.
    if (Bits(_mm_or_si128(_mm_or_si128(l_a, l_b), _mm_or_si128(l_c, l_d))) == 0)
        return 0;
    return Bits(l_a) | Bits(l_b) << 16 | Bits(l_c) << 32 | Bits(l_d) << 48;
}
#endif

} // namespace

inline void MP3Votes::Vote(const unsigned char* ip_header) {
    const unsigned l_b1 = ip_header[1], l_b2 = ip_header[2], l_b3 = ip_header[3];
    const unsigned l_version = l_b1 >> 3 & 3;
    if ((l_b1 >> 1 & 3) != c_layer3) {
        ++m_otherLayers[l_version];
        return;
    }
    const Fields l_fields{l_version, l_b1 & 1, l_b2 >> 4, l_b2 >> 2 & 3, l_b3 >> 6};
    ++m_candidates[l_fields.Cell()];
}

void MP3Votes::TakeBlock(std::span<const unsigned char> i_block) {
    // The last four bytes of a block start no candidate: one byte must follow the header.
    if (i_block.size() <= c_headerSize)
        return;
    const std::span<const unsigned char> l_places = i_block.first(i_block.size() - c_headerSize);
    TakeSingly(l_places.subspan(TakeGroups(l_places)));
}

std::size_t MP3Votes::TakeGroups(std::span<const unsigned char> i_places) {
    std::size_t l_at = 0;
#ifdef __SSE2__
    for (; l_at + c_group <= i_places.size(); l_at += c_group)
        for (std::uint64_t l_hits = CandidatesInGroup(&i_places[l_at]); l_hits != 0; l_hits &= l_hits - 1)
            Vote(&i_places[l_at + static_cast<std::size_t>(std::countr_zero(l_hits))]);
#endif
    return l_at;
}

void MP3Votes::TakeSingly(std::span<const unsigned char> i_places) {
    const unsigned char* lp_at = i_places.data();
    const unsigned char* const lp_end = lp_at + i_places.size();
    while (lp_at != lp_end) {
        lp_at = static_cast<const unsigned char*>(std::memchr(lp_at, 0xFF, static_cast<std::size_t>(lp_end - lp_at)));
        if (lp_at == nullptr)
            return;
        // Runs of 0xFF are walked here: a call for each of their bytes would make them slow.
        for (; lp_at != lp_end && *lp_at == 0xFF; ++lp_at)
            if ((lp_at[1] & 0xE0) == 0xE0)
                Vote(lp_at);
    }
}

std::optional<MP3Attributes> MP3Votes::Result() const {
    Tally l_tally;
    l_tally.version = m_otherLayers;
    for (std::size_t l_cell = 0; l_cell < m_candidates.size(); ++l_cell)
        l_tally.Add(Fields::Of(l_cell), m_candidates[l_cell]);

    Fields l_winner{l_tally.Version(), l_tally.Protection(), 0, l_tally.Frequency(), l_tally.Channels()};
    if (l_winner.version == c_mpeg25)
        return std::nullopt;

    const Rates& l_rates = l_winner.version == c_mpeg1 ? c_mpeg1Rates : c_mpeg2Rates;
    std::uint64_t l_count = 0, l_sum = 0, l_most = 0;
    int l_mostRate = 0;
    for (l_winner.rate = c_firstRate; l_winner.rate <= c_lastRate; ++l_winner.rate) {
        const std::uint64_t l_frames = m_candidates[l_winner.Cell()];
        const int l_rate = l_rates[l_winner.rate];
        l_count += l_frames;
        l_sum += l_frames * static_cast<unsigned>(l_rate);
        if (l_frames > l_most) {
            l_most = l_frames;
            l_mostRate = l_rate;
        }
    }
    if (l_count == 0)
        return std::nullopt;
    const bool l_constant = l_most * 100 / l_count > c_constantPercent;
    return MP3Attributes{l_winner.version == c_mpeg1 ? 1 : 2, c_channelModes[l_winner.channels],
                         static_cast<int>(l_winner.frequency), !l_constant,
                         l_constant ? l_mostRate : static_cast<int>(l_sum / l_count)};
}
