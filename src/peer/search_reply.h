// The plain body of a search reply, before it is packed.
//
//   string user; int token; count; that many FileInfo; bool free to upload; int speed; int uploads in queue; map of int
//   to string, the attribute names
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "net/mem_stream.h"
#include "peer/file_records.h"

struct SearchReply {
    std::string user; // who answers
    std::uint32_t token = 0;
    std::vector<FileInfo> files; // names are whole paths with backslashes
    bool isFree = false;         // an upload would start at once
    std::uint32_t speed = 0;     // bytes a second
    std::uint32_t uploadsInQueue = 0;
    AttributeTranslationTable attributeNames;
};

// In two steps, so that an answer to a search that is closed, or in another's name, costs no more than its first bytes.
// False when a field cannot be read.
[[nodiscard]] bool DecodeSearchReplyHead(InputStream& io_body, SearchReply& o_reply);
// False when the files cannot be read whole; what is missing behind them counts as false, 0 and none.
[[nodiscard]] bool DecodeSearchReplyRest(InputStream& io_body, SearchReply& o_reply);

[[nodiscard]] MemStream EncodeSearchReply(const SearchReply& i_reply);
