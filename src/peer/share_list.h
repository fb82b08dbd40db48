// The plain bodies of the two messages that list files, before they are packed.
//
//   share list     count; that many folders: string path, count, that many FileInfo; then the attribute names: count,
//                  that many int and string, written as count 0
//   folder reply   int request; string folder; count 1; string folder; SharedFolderInfo
//
// They read from any stream, so a packed list is inflated only as far as it is read, and read only as far as it holds.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "net/mem_stream.h"
#include "peer/file_records.h"

struct ShareList {
    FileInfoMap folders; // of a repeated path the first one stays
    AttributeTranslationTable attributeNames;
};

// Empty when the folders cannot be read whole. Attribute names that cannot be read count as none.
[[nodiscard]] std::optional<ShareList> DecodeShareList(InputStream& io_body);
// The same from its packed form; also empty when that is not sound to its end or too large, when memory is short, and
// when ip_stop, if given, is set on the way.
[[nodiscard]] std::optional<ShareList> UnpackShareList(std::string_view i_packed,
                                                       const std::atomic<bool>* ip_stop = nullptr);
[[nodiscard]] MemStream EncodeShareList(const FileInfoMap& i_folders);

struct FolderReply {
    std::uint32_t request = 0; // the number of the question
    std::string folder;        // as the question named it
    SharedFolderInfo files;
};

[[nodiscard]] std::optional<FolderReply> DecodeFolderReply(InputStream& io_body);
[[nodiscard]] MemStream EncodeFolderReply(const FolderReply& i_reply);
