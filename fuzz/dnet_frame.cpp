// A stream of frames on a distributed connection: the frame reader with its limit, then the decoders of what a parent
// and of what a child may say. The first byte of the input says in which pieces the rest arrives.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "dnet/dnet_messages.h"
#include "dnet/tree_arithmetic.h"
#include "net/frame_reader.h"
#include "net/limits.h"
#include "store/contract.h"

namespace {

// What was read comes back the same when it is written and read again.
void CheckSearch(MemStream& io_body) {
    const DNetSearchFields l_fields = DecodeDNetSearch(io_body);
    TIDEWELL_CONTRACT(l_fields.isRead || !l_fields.search);
    if (!l_fields.search)
        return;
    MemStream l_again = EncodeDNetSearch(*l_fields.search);
    TIDEWELL_CONTRACT(DecodeDNetCode(l_again) == DNetCode::Search);
    const DNetSearchFields l_same = DecodeDNetSearch(l_again);
    TIDEWELL_CONTRACT(l_same.search && l_same.search->user == l_fields.search->user &&
                      l_same.search->token == l_fields.search->token && l_same.search->text == l_fields.search->text);
    TIDEWELL_CONTRACT(l_again.GetPendingReadLength() == 0);
}

void HandleFrame(MemStream& io_body) {
    const auto l_code = DecodeDNetCode(io_body);
    if (!l_code)
        return;
    switch (*l_code) {
    case DNetCode::Search:
        CheckSearch(io_body);
        break;
    case DNetCode::Level:
    case DNetCode::ChildDepth:
        if (const auto l_number = DecodeDNetNumber(io_body)) {
            TIDEWELL_CONTRACT(OneFurther(*l_number) >= *l_number);
            (void)ChildCapacity(*l_number, *l_number);
            (void)IsFastEnoughForParent(*l_number, *l_number);
        }
        break;
    case DNetCode::GroupLeader:
        (void)DecodeDNetGroupLeader(io_body);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    if (i_size < 1)
        return 0;
    const std::size_t l_piece = std::size_t{ip_data[0]} + 1;
    const char* lp_bytes = reinterpret_cast<const char*>(ip_data) + 1;
    std::size_t l_left = i_size - 1;
    FrameReader l_reader(limits::distributedFrame);
    while (l_left > 0 || l_reader.GetStatus() != FrameReader::Status::NeedMore) {
        if (l_reader.GetStatus() == FrameReader::Status::BadLength)
            return 0;
        if (l_reader.GetStatus() == FrameReader::Status::FrameReady) {
            HandleFrame(l_reader.Frame());
            l_reader.Reset();
            continue;
        }
        const std::size_t l_count = std::min({l_piece, l_left, l_reader.Wanted()});
        l_reader.Take(lp_bytes, l_count);
        lp_bytes += l_count;
        l_left -= l_count;
        TIDEWELL_CONTRACT(static_cast<std::size_t>(l_reader.Frame().GetWriteIndex()) <= i_size);
    }
    return 0;
}
