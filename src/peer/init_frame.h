// The first frame on a new peer connection, sent by the side that opened it.
//
//   direct      byte 1 (a reader takes every non-zero byte); string own user name; string connection type; int 0
//   answer      byte 0; int token. The opener connects back on an indirect request, and the token names that request
//
// Connection types are one letter: "P" for messages, "F" for a file, "D" for the distributed network.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "net/mem_stream.h"

inline constexpr char messagingConnection[] = "P";
inline constexpr char fileConnection[] = "F";
inline constexpr char distributedConnection[] = "D";

struct DirectInit {
    std::string user;
    std::string type; // any text: what it says is for the caller to judge
};

struct IndirectAnswer {
    std::uint32_t token = 0;
};

enum class InitFault {
    NoDirection, // not even the first byte
    NoToken,     // an answer without its token
    NoIdentity,  // a direct init cut short, or with an overlong text
};

using InitFrame = std::variant<DirectInit, IndirectAnswer, InitFault>;

[[nodiscard]] InitFrame DecodeInitFrame(InputStream& io_body);

[[nodiscard]] MemStream EncodeInitFrame(const DirectInit& i_init);
[[nodiscard]] MemStream EncodeInitFrame(const IndirectAnswer& i_answer);
