// Finds out how an MP3 file is encoded by letting everything in it that looks like a frame header vote.
//
// Frames are not followed from one to the next: each byte position is looked at, so that tags, damage and junk between
// frames do not matter, and chance byte pairs in the audio data are outvoted. A header is four bytes: 0xFF; three set
// bits, version (2), layer (2), protection (1); bit rate index (4), sample rate index (2), two bits unused here;
// channel mode (2), six bits unused here.
//
// No file, no memory beyond the object (16 KiB), no failure but "no answer".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

struct MP3Attributes {
    int mpegVersion;              // 1 or 2
    std::string_view channelMode; // "stereo", "joint stereo", "dual mono" or "mono"
    int frequencyIndex;           // 0 to 2 as in the header, not hertz
    bool vbr;                     // no single rate holds 99% of the frames
    int bitrate;                  // kbit/s: the one rate, or the mean rounded down

    bool operator==(const MP3Attributes&) const = default;
};

class MP3Votes {
public:
    // The unit in which files are cut, in bytes. The outcome depends on it: a header across two blocks is not seen.
    static constexpr std::size_t blockSize = 65536;

    // i_block is the next blockSize bytes of the file, or the shorter rest.
    void TakeBlock(std::span<const unsigned char> i_block);

    // Of all that was taken so far. Nothing if no header is left that agrees with the majority in every field, or if
    // the majority is MPEG-2.5.
    std::optional<MP3Attributes> Result() const;

private:
    // Of the places where a candidate may start; three readable bytes follow them. TakeGroups gives how many it took:
    // whole groups, and none on machines without vectors.
    std::size_t TakeGroups(std::span<const unsigned char> i_places);
    void TakeSingly(std::span<const unsigned char> i_places);
    void Vote(const unsigned char* ip_header);

    // Candidates of Layer III, by the fields that count: protection, version, bit rate, sample rate and channel mode,
    // packed as they stand in the header. Every vote and the mean are sums over this table.
    std::array<std::uint64_t, 2048> m_candidates{};
    // Candidates of other layers, by version: they vote on the version alone.
    std::array<std::uint64_t, 4> m_otherLayers{};
};
