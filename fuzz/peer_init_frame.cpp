// The first frame of a connection, as anybody may send it.
#include <cstddef>
#include <cstdint>

#include "peer/init_frame.h"
#include "store/contract.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    MemStream l_body;
    l_body.WriteBuffer(ip_data, i_size);
    const InitFrame l_frame = DecodeInitFrame(l_body);
    // What was understood says the same again when it is sent on.
    if (const auto* lp_init = std::get_if<DirectInit>(&l_frame)) {
        MemStream l_again = EncodeInitFrame(*lp_init);
        const auto l_same = std::get<DirectInit>(DecodeInitFrame(l_again));
        TIDEWELL_CONTRACT(l_same.user == lp_init->user && l_same.type == lp_init->type);
    }
    return 0;
}
