// Below which roots the shared files lie, told by the addresses of their items alone: a search need not touch thousands
// of files that the asker may not see, nor their directories. The items of one walk lie side by side, so that nearly
// every page of memory holds files of the same roots.
#pragma once

#include "store/data.h"

#include <absl/container/flat_hash_map.h>
#include <absl/container/inlined_vector.h>

#include <cstdint>
#include <vector>

class FileRoots : public DataHandler {
public:
    enum class Verdict : std::uint8_t {
        Unknown, // files of various roots lie side by side here: the file's own directory tells
        Visible,
        Hidden,
    };

    // What somebody sees. Good as long as nothing changes.
    class Sight {
    public:
        // Reads the roots of all files anew, some 50 ns a file, if shares have changed since that was done last.
        Sight(FileRoots& io_roots, const ItemSet& i_visible);

        Verdict Of(const Item* ip_file);

    private:
        const FileRoots& m_roots;
        const ItemSet& m_visible;
        absl::InlinedVector<Verdict, 16> m_ofPlace; // Unknown: not asked yet
        std::uintptr_t m_page = 0;                  // asked for last, and the answer
        Verdict m_ofPage = Verdict::Unknown;
    };

    FileRoots(); // the Types stand by now

private:
    using Place = std::uint32_t;
    static constexpr Place c_mixed = ~Place{0};

    static std::uintptr_t PageOf(const Item* ip_file);
    void Read();
    std::size_t ReadFolder(Item* ip_folder, Place i_place); // how many files it has
    void OnChange(ConnectionInfo&) { m_isRead = false; }

    bool m_isRead = false;
    std::vector<std::vector<Item*>> m_places; // the roots of each
    absl::flat_hash_map<std::uintptr_t, Place> m_placeOfPage;
};
