// The plain bodies of the two messages that list files, before they are packed.
//
//   share list     count; that many folders: string path, count, that many FileInfo; then the attribute names: count,
//                  that many int and string, written as count 0
//   folder reply   int request; string folder; count 1; string folder; SharedFolderInfo
//
// They read from any stream, so a packed list is inflated only as far as it is read, and read only as far as it holds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "net/mem_stream.h"
#include "peer/file_records.h"

struct ShareList {
    FileInfoMap folders; // of a repeated path the first one stays
    AttributeTranslationTable attributeNames;
};

// Empty when the folders cannot be read whole. Attribute names that cannot be read count as none.
[[nodiscard]] std::optional<ShareList> DecodeShareList(InputStream& io_body);
[[nodiscard]] MemStream EncodeShareList(const FileInfoMap& i_folders);

struct FolderReply {
    std::uint32_t request = 0; // the number of the question
    std::string folder;        // as the question named it
    SharedFolderInfo files;
};

[[nodiscard]] std::optional<FolderReply> DecodeFolderReply(InputStream& io_body);
[[nodiscard]] MemStream EncodeFolderReply(const FolderReply& i_reply);
