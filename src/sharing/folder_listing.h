// What one directory holds, hidden entries left out: its files and its folders, links counted as what they lead to.
// Everything else (sockets, devices, dead links) is left out. Names are the file system's bytes, in any encoding.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class FolderListing {
public:
    // Reads the directory behind the descriptor; -1 and a directory that cannot be read give an empty listing. The
    // descriptor stays the caller's and must be open while FileSize is asked. The object can be used again for
    // another directory and then needs no new memory.
    // i_path is what the directory is called, i_base what its entries' paths begin with; they differ for a root
    // that was not written as a clean absolute path.
    void Read(int i_descriptor, std::string_view i_path, std::string_view i_base);

    const std::string& Path() const { return m_path; }
    std::string FilePath(std::string_view i_name) const;

    // Ordered by name without regard to the case of ASCII letters. Each view ends at a zero byte and lives until the
    // next Read.
    const std::vector<std::string_view>& Files() const { return m_files; }
    const std::vector<std::string_view>& Folders() const { return m_folders; }

    // In bytes; i_name is one of Files(). Nothing if the file has vanished since.
    std::optional<long long> FileSize(std::string_view i_name) const;

private:
    enum class Kind : unsigned char { File, Folder, Other };

    struct Entry {
        std::uint32_t begin; // into m_names
        std::uint32_t length;
        Kind kind;
    };

    void TakeEntries(const char* ip_buffer, std::size_t i_length);
    Kind KindOf(const char* ip_name, unsigned char i_type) const;
    void ArrangeEntries();

    std::string m_path;
    std::string m_base;
    std::string m_names; // all names, each with a zero byte behind it
    std::vector<Entry> m_entries;
    std::vector<std::string_view> m_files;
    std::vector<std::string_view> m_folders;
    int m_descriptor = -1;
};
