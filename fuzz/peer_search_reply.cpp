// The plain body of a search reply. What can be read comes back the same when it is written and read again.
#include <cstddef>
#include <cstdint>

#include "peer/search_reply.h"
#include "store/contract.h"

namespace {

bool Decode(InputStream& io_body, SearchReply& o_reply) {
    return DecodeSearchReplyHead(io_body, o_reply) && DecodeSearchReplyRest(io_body, o_reply);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    MemStream l_body;
    l_body.WriteBuffer(ip_data, i_size);
    SearchReply l_reply;
    if (!Decode(l_body, l_reply))
        return 0;
    MemStream l_again = EncodeSearchReply(l_reply);
    SearchReply l_same;
    TIDEWELL_CONTRACT(Decode(l_again, l_same));
    TIDEWELL_CONTRACT(l_same.user == l_reply.user && l_same.token == l_reply.token);
    TIDEWELL_CONTRACT(l_same.isFree == l_reply.isFree && l_same.speed == l_reply.speed &&
                      l_same.uploadsInQueue == l_reply.uploadsInQueue);
    TIDEWELL_CONTRACT(l_same.attributeNames == l_reply.attributeNames);
    TIDEWELL_CONTRACT(l_same.files == l_reply.files);
    return 0;
}
