// The voting rules once more, byte by byte and with a list of candidates: what the fast scan must agree with, and the
// yardstick of its benchmark. i_file is a whole file.
#pragma once

#include "sharing/mp3_votes.h"

#include <algorithm>
#include <vector>

class MP3VotesReference {
public:
    static std::optional<MP3Attributes> Scan(std::span<const unsigned char> i_file) {
        MP3VotesReference l_reference;
        for (std::size_t l_start = 0; l_start < i_file.size(); l_start += 65536) {
            const std::size_t l_length = std::min<std::size_t>(65536, i_file.size() - l_start);
            const unsigned char* lp_block = i_file.data() + l_start;
            for (std::size_t l_at = 0; l_start + l_at + 4 < i_file.size() && l_length - l_at >= 5; ++l_at)
                if (lp_block[l_at] == 0xFF && (lp_block[l_at + 1] & 0xE0) == 0xE0)
                    l_reference.Take(lp_block[l_at + 1], lp_block[l_at + 2], lp_block[l_at + 3]);
        }
        return l_reference.Decide();
    }

private:
    struct Candidate {
        int version;
        bool isProtected;
        int frequency;
        int channels;
        int rate;
    };

    void Take(int i_b1, int i_b2, int i_b3) {
        Candidate l_candidate;
        switch (i_b1 & 0x18) {
        case 0x18:
            l_candidate.version = 1;
            ++m_mpeg1;
            break;
        case 0x10:
            l_candidate.version = 2;
            ++m_mpeg2;
            break;
        case 0x00:
            l_candidate.version = 3;
            ++m_mpeg25;
            break;
        default:
            return;
        }
        if ((i_b1 & 0x06) != 0x02)
            return;
        l_candidate.isProtected = (i_b1 & 0x01) != 0;
        ++(l_candidate.isProtected ? m_set : m_clear);
        l_candidate.frequency = (i_b2 & 0x0C) / 4;
        if (l_candidate.frequency == 3)
            return;
        ++m_frequency[l_candidate.frequency];
        l_candidate.channels = (i_b3 & 0xC0) / 64;
        ++m_channels[l_candidate.channels];
        l_candidate.rate = (i_b2 & 0xF0) / 16;
        if (l_candidate.rate != 0 && l_candidate.rate != 15)
            m_kept.push_back(l_candidate);
    }

    int Version() const {
        if (m_mpeg2 >= m_mpeg1)
            return m_mpeg25 >= m_mpeg2 ? 3 : 2;
        return m_mpeg25 >= m_mpeg1 ? 3 : 1;
    }
    int Frequency() const {
        if (m_frequency[0] > m_frequency[1])
            return m_frequency[2] >= m_frequency[0] ? 2 : 0;
        return m_frequency[2] >= m_frequency[1] ? 2 : 1;
    }
    int Channels() const {
        const long l_most = *std::max_element(m_channels, m_channels + 4);
        return m_channels[3] == l_most ? 3 : m_channels[2] == l_most ? 2 : m_channels[1] == l_most ? 1 : 0;
    }

    std::optional<MP3Attributes> Decide() const {
        static constexpr int c_rates[3][14] = {{32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
                                               {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}};
        static constexpr const char* c_texts[] = {"stereo", "joint stereo", "dual mono", "mono"};
        if (Version() == 3 || m_kept.empty())
            return std::nullopt;
        long l_count = 0, l_sum = 0;
        std::vector<long> l_histogram(321);
        for (const Candidate& l_candidate : m_kept) {
            if (l_candidate.version != Version() || l_candidate.isProtected != (m_set > m_clear) ||
                l_candidate.frequency != Frequency() || l_candidate.channels != Channels())
                continue;
            const int l_rate = c_rates[l_candidate.version - 1][l_candidate.rate - 1];
            l_sum += l_rate;
            ++l_count;
            ++l_histogram[l_rate];
        }
        if (l_count == 0)
            return std::nullopt;
        MP3Attributes l_result{Version(), c_texts[Channels()], Frequency(), true, static_cast<int>(l_sum / l_count)};
        for (int l_rate = 1; l_rate <= 320; ++l_rate) {
            if (l_histogram[l_rate] * 100 / l_count > 98) {
                l_result.vbr = false;
                l_result.bitrate = l_rate;
            }
        }
        return l_result;
    }

    long m_mpeg1 = 0, m_mpeg2 = 0, m_mpeg25 = 0;
    long m_set = 0, m_clear = 0;
    long m_frequency[3] = {};
    long m_channels[4] = {};
    std::vector<Candidate> m_kept;
};
