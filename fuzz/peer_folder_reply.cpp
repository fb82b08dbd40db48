// The plain body of a folder reply. What can be read comes back the same when it is written and read again.
#include <cstddef>
#include <cstdint>

#include "peer/share_list.h"
#include "store/contract.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    MemStream l_body;
    l_body.WriteBuffer(ip_data, i_size);
    const auto l_reply = DecodeFolderReply(l_body);
    if (!l_reply)
        return 0;
    MemStream l_again = EncodeFolderReply(*l_reply);
    const auto l_same = DecodeFolderReply(l_again);
    TIDEWELL_CONTRACT(l_same && l_same->request == l_reply->request && l_same->folder == l_reply->folder &&
                      l_same->files.files == l_reply->files.files);
    return 0;
}
