// A stream of frames on a messaging connection: the frame reader with its limits, then the decoder of each code. The
// first byte of the input says in which pieces the rest arrives.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "net/frame_reader.h"
#include "peer/inflate.h"
#include "peer/peer_messages.h"
#include "peer/search_reply.h"
#include "peer/share_list.h"
#include "store/contract.h"

namespace {

// Small, so that a run is short; the limits themselves are counted in tests.
constexpr std::size_t inflatedLimit = 1 << 20;

template <class Message>
void Check(MemStream& io_fields) {
    Message l_message;
    if (!Decode(io_fields, l_message))
        return;
    MemStream l_again = Encode(l_message);
    std::int32_t l_code = 0;
    Message l_same;
    TIDEWELL_CONTRACT(l_again.Read(l_code) && l_code == Message::code && Decode(l_again, l_same));
}

void HandleFrame(MemStream& io_message) {
    std::int32_t l_code = 0;
    if (!io_message.Read(l_code))
        return;
    InflateStream l_inflated(io_message.GetPending(), inflatedLimit);
    SearchReply l_reply;
    switch (l_code) {
    case PM_SHARED_FILE_LIST:
        (void)DecodeShareList(l_inflated);
        break;
    case PM_FILE_SEARCH_RESULT:
        if (DecodeSearchReplyHead(l_inflated, l_reply))
            (void)DecodeSearchReplyRest(l_inflated, l_reply);
        break;
    case PM_GET_SHARED_FILES_IN_FOLDER:
        Check<FolderRequest>(io_message);
        break;
    case PM_SHARED_FILES_IN_FOLDER:
        (void)DecodeFolderReply(l_inflated);
        break;
    case PM_TRANSFER_REQUEST:
        Check<TransferRequest>(io_message);
        break;
    case PM_TRANSFER_RESPONSE:
        Check<TransferResponse>(io_message);
        break;
    case PM_QUEUE_UPLOAD:
        Check<QueueUpload>(io_message);
        break;
    case PM_UPLOAD_PLACE_IN_LINE:
        Check<PlaceInLine>(io_message);
        break;
    case PM_UPLOAD_FAILED:
        Check<UploadFailure>(io_message);
        break;
    case PM_UPLOAD_DENIED:
        Check<UploadDenial>(io_message);
        break;
    case PM_UPLOAD_PLACE_IN_LINE_REQUEST:
        Check<PlaceInLineRequest>(io_message);
        break;
    default:
        (void)MessageCodeToString(l_code);
        break;
    }
    (void)l_inflated.Finish();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    if (i_size < 1)
        return 0;
    const std::size_t l_piece = std::size_t{ip_data[0]} + 1;
    const char* lp_bytes = reinterpret_cast<const char*>(ip_data) + 1;
    std::size_t l_left = i_size - 1;
    FrameReader l_reader(limits::shareFrame);
    while (l_left > 0 || l_reader.GetStatus() != FrameReader::Status::NeedMore) {
        if (l_reader.GetStatus() == FrameReader::Status::BadLength)
            return 0;
        if (l_reader.GetStatus() == FrameReader::Status::FrameReady) {
            HandleFrame(l_reader.Frame());
            l_reader.Reset();
            l_reader.SetLimit(limits::shareFrame);
            continue;
        }
        const std::size_t l_count = std::min({l_piece, l_left, l_reader.Wanted()});
        l_reader.Take(lp_bytes, l_count);
        lp_bytes += l_count;
        l_left -= l_count;
        if (const auto l_code = PeekMessageCode(l_reader.Frame()))
            l_reader.SetLimit(LongestPeerFrame(*l_code));
        TIDEWELL_CONTRACT(static_cast<std::size_t>(l_reader.Frame().GetWriteIndex()) <= i_size);
    }
    return 0;
}
