// A directory tree on the real file system, removed with the object.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <cstdlib>

class TempTree {
public:
    TempTree() {
        std::string l_pattern = (std::filesystem::temp_directory_path() / "tidewell-tree-XXXXXX").native();
        m_root = mkdtemp(l_pattern.data());
    }
    ~TempTree() {
        std::error_code l_error;
        std::filesystem::remove_all(m_root, l_error);
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    std::string Path(const std::string& i_name = "") const { return i_name.empty() ? m_root : m_root + "/" + i_name; }

    void File(const std::string& i_name, std::size_t i_size = 0) {
        std::filesystem::create_directories(std::filesystem::path(Path(i_name)).parent_path());
        std::ofstream(Path(i_name), std::ios::binary) << std::string(i_size, 'x');
    }
    void Folder(const std::string& i_name) { std::filesystem::create_directories(Path(i_name)); }
    // i_target as it stands in the link: relative to the link's own folder.
    void Link(const std::string& i_name, const std::string& i_target) {
        std::filesystem::create_symlink(i_target, Path(i_name));
    }
    void Remove(const std::string& i_name) { std::filesystem::remove_all(Path(i_name)); }

private:
    std::string m_root;
};
