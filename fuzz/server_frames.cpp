// The frame reader under pieces of any size. Input: a byte that says the size of the pieces, then the stream. Whatever
// the pieces, the frames must be those that a plain walk over the whole stream finds, and memory must follow the
// bytes that arrived.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "net/frame_reader.h"

namespace {

constexpr std::size_t limit = 1000; // small, so that inputs of both sides of it are found

void Require(bool i_condition) {
    if (!i_condition)
        std::abort();
}

// Cuts the next frame off the front; false if it is cut short or beyond the limit.
bool NextFrame(std::string_view& io_stream, std::string_view& o_frame) {
    std::uint32_t l_length = 0;
    if (io_stream.size() < sizeof(l_length))
        return false;
    std::memcpy(&l_length, io_stream.data(), sizeof(l_length));
    if (l_length > limit || l_length > io_stream.size() - sizeof(l_length))
        return false;
    o_frame = io_stream.substr(sizeof(l_length), l_length);
    io_stream.remove_prefix(sizeof(l_length) + l_length);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    if (i_size == 0)
        return 0;
    const std::size_t l_piece = 1 + ip_data[0];
    std::string_view l_pending(reinterpret_cast<const char*>(ip_data) + 1, i_size - 1);
    std::string_view l_expected = l_pending;
    FrameReader l_reader(limit);
    while (true) {
        const std::size_t l_count = std::min({l_piece, l_reader.Wanted(), l_pending.size()});
        const FrameReader::Status l_status = l_reader.Take(l_pending.data(), l_count);
        l_pending.remove_prefix(l_count);
        Require(static_cast<std::size_t>(l_reader.Frame().GetCapacity()) <= limit);
        std::string_view l_frame;
        if (l_status == FrameReader::Status::FrameReady) {
            Require(NextFrame(l_expected, l_frame) && l_reader.Frame().GetPending() == l_frame);
            l_reader.Reset();
        } else if (l_status == FrameReader::Status::BadLength || l_pending.empty()) {
            Require(!NextFrame(l_expected, l_frame));
            return 0;
        }
    }
}
