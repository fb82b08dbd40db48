// One codec for all messages of the server protocol: a message is a plain struct with its code, and says its fields in
// wire order by a static Fields(); one with optional parts has Read and Write of its own instead.
//
//   body:  | code (int) | first field | second field | ...
//
// Bytes behind the last field are left alone: a later version may have put something there.
#pragma once

#include <cstdint>
#include <tuple>

#include "net/mem_stream.h"

template <class Message>
concept ReadsItself = requires(Message& o_message, InputStream& io_body) {
    o_message.Read(io_body);
};

// Reads the fields behind the code. Stops at the first that fails and returns false; the fields before it hold what was
// read, those from it on their initial values. A side that tolerates short messages goes on with what there is, a side
// that does not treats false as malformed.
template <class Message>
[[nodiscard]] bool Decode(InputStream& io_body, Message& o_message) {
    o_message = Message();
    if constexpr (ReadsItself<Message>) {
        return o_message.Read(io_body);
    } else {
        return std::apply([&io_body](auto&... o_fields) { return (io_body.Read(o_fields) && ...); },
                          Message::Fields(o_message));
    }
}

// A whole body, code first. MakeFrame puts its length in front.
template <class Message>
[[nodiscard]] MemStream Encode(const Message& i_message) {
    MemStream l_body;
    l_body.Write(std::int32_t{Message::code});
    if constexpr (ReadsItself<Message>) {
        i_message.Write(l_body);
    } else {
        std::apply([&l_body](auto&... i_fields) { (l_body.Write(i_fields), ...); }, Message::Fields(i_message));
    }
    return l_body;
}
