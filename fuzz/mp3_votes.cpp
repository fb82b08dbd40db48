// The fast scan gives what the byte-by-byte scan gives, whatever the bytes.
#include "sharing/mp3_votes.h"

#include "../tests/sharing/mp3_votes_reference.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* ip_data, std::size_t i_size) {
    const std::span<const unsigned char> l_file(ip_data, i_size);
    MP3Votes l_votes;
    for (std::size_t l_at = 0; l_at < i_size; l_at += MP3Votes::blockSize)
        l_votes.TakeBlock(l_file.subspan(l_at, std::min(MP3Votes::blockSize, i_size - l_at)));
    if (l_votes.Result() != MP3VotesReference::Scan(l_file))
        std::abort();
    return 0;
}
