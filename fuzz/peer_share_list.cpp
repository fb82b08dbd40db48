// The plain body of a share list. What can be read comes back the same when it is written and read again.
#include <cstddef>
#include <cstdint>

#include "peer/share_list.h"
#include "store/contract.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    MemStream l_body;
    l_body.WriteBuffer(ip_data, i_size);
    const auto l_list = DecodeShareList(l_body);
    if (!l_list)
        return 0;
    MemStream l_again = EncodeShareList(l_list->folders);
    const auto l_same = DecodeShareList(l_again);
    TIDEWELL_CONTRACT(l_same && l_same->folders == l_list->folders);
    return 0;
}
