// The messages of the distributed network, in which searches travel from parent to child.
//
//   on a connection:        | length (int) | code (1 byte) | fields |
//   in the server's relay:  | 93 (int)                     | code (1 byte) | fields |
//
// Integers are little-endian; strings are those of net/streams.h with their limits. Bytes behind the last field are
// left alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "net/mem_stream.h"

enum class DNetCode : std::uint8_t {
    Search = 3,      // from the parent or the server
    Level = 4,       // from the parent
    GroupLeader = 5, // from the parent
    ChildDepth = 7,  // from a child
};

// The fields of a search: int 49, string user, int token, string text.
struct DNetSearch {
    std::string user; // who searches, and is answered
    std::uint32_t token = 0;
    std::string text;
};

// What a code Search holds. Only the inner code 49 is known here; whatever else there is, is passed on unread.
struct DNetSearchFields {
    bool isRead = false;              // false: a field that should be there is missing
    std::optional<DNetSearch> search; // empty for another inner code
};

// Each reads behind the code; empty when the field is cut.
[[nodiscard]] std::optional<DNetCode> DecodeDNetCode(InputStream& io_body);
[[nodiscard]] DNetSearchFields DecodeDNetSearch(InputStream& io_body);
[[nodiscard]] std::optional<std::int32_t> DecodeDNetNumber(InputStream& io_body); // a level or a depth
[[nodiscard]] std::optional<std::string> DecodeDNetGroupLeader(InputStream& io_body);

// Whole bodies, code first. MakeFrame puts the length in front.
[[nodiscard]] MemStream EncodeDNetSearch(const DNetSearch& i_search);
[[nodiscard]] MemStream EncodeDNetLevel(std::int32_t i_level);
[[nodiscard]] MemStream EncodeDNetGroupLeader(const std::string& i_leader);
[[nodiscard]] MemStream EncodeDNetChildDepth(std::int32_t i_depth);
