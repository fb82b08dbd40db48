// An answer to the search for routers, from whoever hears it: the address that it names, and that address's host.
#include <cstddef>
#include <cstdint>

#include "net/device_url.h"
#include "store/contract.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    const std::string_view l_answer(reinterpret_cast<const char*>(ip_data), i_size);
    const std::string_view l_url = LocationOf(l_answer);
    TIDEWELL_CONTRACT(l_url.find('\n') == std::string_view::npos);
    if (const auto l_host = HostAddress(l_url)) {
        TIDEWELL_CONTRACT(l_url.size() >= sizeof "http://1.1.1.1/" - 1);
        (void)IsPrivateOrLinkLocal(*l_host);
    }
    return 0;
}
