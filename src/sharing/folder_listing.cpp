#include "sharing/folder_listing.h"

#include <absl/strings/ascii.h>

#include <algorithm>
#include <array>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// A block of this size takes a few hundred entries a call; larger ones measure no better.
constexpr std::size_t c_blockSize = 32 * 1024;

bool NameBefore(std::string_view i_a, std::string_view i_b) {
    const auto [l_a, l_b] = std::mismatch(i_a.begin(), i_a.end(), i_b.begin(), i_b.end(), [](char i_x, char i_y) {
        return absl::ascii_tolower(static_cast<unsigned char>(i_x)) ==
               absl::ascii_tolower(static_cast<unsigned char>(i_y));
    });
    if (l_a == i_a.end() || l_b == i_b.end())
        return i_a.size() != i_b.size() ? i_a.size() < i_b.size() : i_a < i_b;
    return static_cast<unsigned char>(absl::ascii_tolower(static_cast<unsigned char>(*l_a))) <
           static_cast<unsigned char>(absl::ascii_tolower(static_cast<unsigned char>(*l_b)));
}

} // namespace

void FolderListing::Read(int i_descriptor, std::string_view i_path, std::string_view i_base) {
    m_descriptor = i_descriptor;
    m_path = i_path;
    m_base = i_base;
    m_names.clear();
    m_entries.clear();
    if (i_descriptor != -1) {
        alignas(dirent64) std::array<char, c_blockSize> l_block;
        ssize_t l_length;
        while ((l_length = getdents64(i_descriptor, l_block.data(), l_block.size())) > 0)
            TakeEntries(l_block.data(), static_cast<std::size_t>(l_length));
    }
    ArrangeEntries();
}

void FolderListing::TakeEntries(const char* ip_buffer, std::size_t i_length) {
    for (std::size_t l_at = 0; l_at < i_length;) {
        const auto* lp_record = reinterpret_cast<const dirent64*>(ip_buffer + l_at);
        l_at += lp_record->d_reclen;
        if (lp_record->d_name[0] == '.')
            continue;
        const Kind l_kind = KindOf(lp_record->d_name, lp_record->d_type);
        if (l_kind == Kind::Other)
            continue;
        const std::string_view l_name(lp_record->d_name);
        m_entries.push_back(
            {static_cast<std::uint32_t>(m_names.size()), static_cast<std::uint32_t>(l_name.size()), l_kind});
        m_names.append(l_name).push_back('\0');
    }
}

FolderListing::Kind FolderListing::KindOf(const char* ip_name, unsigned char i_type) const {
    if (i_type == DT_REG)
        return Kind::File;
    if (i_type == DT_DIR)
        return Kind::Folder;
    if (i_type != DT_LNK && i_type != DT_UNKNOWN)
        return Kind::Other;
    struct stat l_stat;
    if (fstatat(m_descriptor, ip_name, &l_stat, 0) != 0)
        return Kind::Other;
    return S_ISREG(l_stat.st_mode) ? Kind::File : S_ISDIR(l_stat.st_mode) ? Kind::Folder : Kind::Other;
}

void FolderListing::ArrangeEntries() {
    m_files.clear();
    m_folders.clear();
    for (const Entry& l_entry : m_entries) {
        const std::string_view l_name(m_names.data() + l_entry.begin, l_entry.length);
        (l_entry.kind == Kind::File ? m_files : m_folders).push_back(l_name);
    }
    std::sort(m_files.begin(), m_files.end(), NameBefore);
    std::sort(m_folders.begin(), m_folders.end(), NameBefore);
}

std::string FolderListing::FilePath(std::string_view i_name) const {
    std::string l_path;
    l_path.reserve(m_base.size() + 1 + i_name.size());
    l_path.append(m_base);
    if (!m_base.ends_with('/'))
        l_path.push_back('/');
    return l_path.append(i_name);
}

std::optional<long long> FolderListing::FileSize(std::string_view i_name) const {
    struct stat l_stat;
    if (fstatat(m_descriptor, i_name.data(), &l_stat, 0) != 0 || !S_ISREG(l_stat.st_mode))
        return std::nullopt;
    return l_stat.st_size;
}
