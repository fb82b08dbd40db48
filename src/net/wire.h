// The small records that the server, peer and distributed protocols share. The encodings of scalars, strings and
// containers are in net/streams.h.
#pragma once

#include <cstdint>
#include <utility>

#include "net/mem_stream.h"

// An IPv4 address and a port, 8 bytes on the wire. The first number of the dotted form is the most significant byte of
// the integer, so that 1.2.3.4 travels as 4, 3, 2, 1. The port is as it came: ask limits::IsConnectablePort before
// connecting.
using TCPAddress = std::pair<unsigned int, int>;

// What the server knows about a user's sharing; 20 bytes on the wire, in this order.
class UserStats : public Persistent {
public:
    std::int32_t averageSpeed = 0; // bytes a second
    std::int64_t statsValue64 = 0; // kept and written back, no meaning here
    std::int32_t sharedFileCount = 0;
    std::int32_t statsValue32 = 0; // likewise

    [[nodiscard]] bool Read(InputStream& io_stream) override;
    bool Write(OutputStream& o_stream) const override;

    bool operator==(const UserStats& i_other) const;
};
