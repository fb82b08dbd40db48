#include "peer/share_list.h"

#include "peer/inflate.h"

#include <new>

namespace {

bool ReadFolders(InputStream& io_body, FileInfoMap& o_folders) {
    std::uint32_t l_count = 0;
    if (!io_body.ReadCount(l_count))
        return false;
    for (; l_count > 0; --l_count) {
        std::string l_path;
        std::set<FileInfo> l_files;
        if (!io_body.Read(l_path) || !ReadFiles(io_body, l_files))
            return false;
        o_folders.emplace(std::move(l_path), std::move(l_files));
    }
    return true;
}

} // namespace

std::optional<ShareList> DecodeShareList(InputStream& io_body) {
    ShareList l_list;
    if (!ReadFolders(io_body, l_list.folders))
        return std::nullopt;
    if (!io_body.Read(l_list.attributeNames))
        l_list.attributeNames.clear();
    return l_list;
}

std::optional<ShareList> UnpackShareList(std::string_view i_packed, const std::atomic<bool>* ip_stop) {
    try {
        InflateStream l_inflated(i_packed, limits::inflatedShare, ip_stop);
        std::optional<ShareList> l_list = DecodeShareList(l_inflated);
        return l_inflated.Finish() ? std::move(l_list) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

MemStream EncodeShareList(const FileInfoMap& i_folders) {
    MemStream l_body;
    l_body.Write(i_folders);
    l_body.Write(AttributeTranslationTable());
    return l_body;
}

std::optional<FolderReply> DecodeFolderReply(InputStream& io_body) {
    FolderReply l_reply;
    std::uint32_t l_count = 0;
    std::string l_folder;
    if (!io_body.Read(l_reply.request) || !io_body.Read(l_reply.folder) || !io_body.ReadCount(l_count))
        return std::nullopt;
    // Only one folder is ever asked for; whatever follows it has no meaning.
    if (l_count == 0 || !io_body.Read(l_folder) || !io_body.Read(l_reply.files))
        return std::nullopt;
    return l_reply;
}

MemStream EncodeFolderReply(const FolderReply& i_reply) {
    MemStream l_body;
    l_body.Write(i_reply.request);
    l_body.Write(i_reply.folder);
    l_body.Write(std::uint32_t{1});
    l_body.Write(i_reply.folder);
    l_body.Write(i_reply.files);
    return l_body;
}
