// Runs a fuzz target once over every file below the folders and files given, and over the empty input.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size);

namespace {

void ReplayFile(const std::filesystem::path& i_path)
{
    std::ifstream l_file(i_path, std::ios::binary);
    const std::vector<char> l_bytes((std::istreambuf_iterator<char>(l_file)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(l_bytes.data()), l_bytes.size());
}

} // namespace

int main(int i_count, char** ip_arguments)
{
    size_t l_files = 0;
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (int l_index = 1; l_index < i_count; ++l_index) {
        const std::filesystem::path l_path(ip_arguments[l_index]);
        if (std::filesystem::is_regular_file(l_path)) {
            ReplayFile(l_path);
            ++l_files;
            continue;
        }
        for (const auto& l_entry : std::filesystem::recursive_directory_iterator(l_path)) {
            if (l_entry.is_regular_file()) {
                ReplayFile(l_entry.path());
                ++l_files;
            }
        }
    }
    std::printf("%zu inputs replayed\n", l_files);
    return l_files > 0 ? 0 : 1;
}
