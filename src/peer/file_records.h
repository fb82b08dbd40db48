// Records of shared files, as they travel in share lists, folder replies and search replies. Integers are
// little-endian; strings and counts are those of net/streams.h with their limits.
//
//   AttributeMap      string extension; count; count times int code, int value
//   FileInfo          byte present (written as 1; a reader that sees 0 stops there with an empty record); string name;
//                     64-bit size in bytes; AttributeMap
//   SharedFolderInfo  count; that many FileInfo; int 0
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "net/streams.h"

// Codes of AttributeMap::attributes; others are read and kept, and mean nothing here.
enum FileAttribute : int {
    FileAttributeBitRate = 0,         // kbit/s
    FileAttributeLength = 1,          // seconds
    FileAttributeVariableBitRate = 2, // 0 is constant, anything else variable
};

class AttributeMap : public Persistent {
public:
    std::string extension;                       // "mp3" for MP3 files, else empty
    std::vector<std::pair<int, int>> attributes; // code and value, in order of insertion

    [[nodiscard]] bool Read(InputStream& io_stream) override;
    bool Write(OutputStream& o_stream) const override;

    bool operator==(const AttributeMap& i_other) const;
};

class FileInfo : public Persistent {
public:
    std::string name; // a bare name in lists, the whole path with backslashes in search replies
    long long size = 0;
    AttributeMap attributes;

    [[nodiscard]] bool Read(InputStream& io_stream) override;
    bool Write(OutputStream& o_stream) const override;

    // By name, bytewise, then by size: a set holds no two records that agree in both.
    bool operator<(const FileInfo& i_other) const;
    bool operator==(const FileInfo& i_other) const;

    // The fields behind the flag.
    [[nodiscard]] bool ReadPresent(InputStream& io_stream);
};

class SharedFolderInfo : public Persistent {
public:
    std::set<FileInfo> files;

    [[nodiscard]] bool Read(InputStream& io_stream) override;
    bool Write(OutputStream& o_stream) const override;
};

// The records of one folder: count, then that many. What is read joins the set.
[[nodiscard]] bool ReadFiles(InputStream& io_stream, std::set<FileInfo>& io_files);

// Folder path, with backslashes, to the folder's files; bytewise by path.
using FileInfoMap = std::map<std::string, std::set<FileInfo>>;
// Attribute code to name. Written empty, read and not used.
using AttributeTranslationTable = std::map<int, std::string>;
