#include "peer/file_records.h"

#include <tuple>

bool AttributeMap::Read(InputStream& io_stream) {
    return io_stream.Read(extension) && io_stream.Read(attributes);
}

bool AttributeMap::Write(OutputStream& o_stream) const {
    return o_stream.Write(extension) && o_stream.Write(attributes);
}

bool AttributeMap::operator==(const AttributeMap& i_other) const {
    return extension == i_other.extension && attributes == i_other.attributes;
}

bool FileInfo::Read(InputStream& io_stream) {
    bool l_isPresent = false;
    if (!io_stream.Read(l_isPresent))
        return false;
    if (!l_isPresent) {
        *this = FileInfo();
        return true;
    }
    return ReadPresent(io_stream);
}

bool FileInfo::ReadPresent(InputStream& io_stream) {
    return io_stream.Read(name) && io_stream.Read(size) && attributes.Read(io_stream);
}

bool FileInfo::Write(OutputStream& o_stream) const {
    return o_stream.Write(true) && o_stream.Write(name) && o_stream.Write(size) && attributes.Write(o_stream);
}

bool FileInfo::operator<(const FileInfo& i_other) const {
    return std::tie(name, size) < std::tie(i_other.name, i_other.size);
}

bool FileInfo::operator==(const FileInfo& i_other) const {
    return name == i_other.name && size == i_other.size && attributes == i_other.attributes;
}

bool SharedFolderInfo::Read(InputStream& io_stream) {
    std::uint32_t l_reserved = 0;
    files.clear();
    return ReadFiles(io_stream, files) && io_stream.Read(l_reserved);
}

bool SharedFolderInfo::Write(OutputStream& o_stream) const {
    return o_stream.Write(files) && o_stream.Write(std::uint32_t{0});
}

// Absent records take one byte each, so a packed list may hold hundreds of millions of them: they must be cheap to
// pass.
bool ReadFiles(InputStream& io_stream, std::set<FileInfo>& io_files) {
    std::uint32_t l_count = 0;
    if (!io_stream.ReadCount(l_count))
        return false;
    bool l_hasAbsent = false;
    for (; l_count > 0; --l_count) {
        bool l_isPresent = false;
        if (!io_stream.Read(l_isPresent))
            return false;
        if (!l_isPresent) {
            l_hasAbsent = true;
            continue;
        }
        FileInfo l_file;
        if (!l_file.ReadPresent(io_stream))
            return false;
        io_files.insert(std::move(l_file));
    }
    if (l_hasAbsent)
        io_files.insert(FileInfo());
    return true;
}
