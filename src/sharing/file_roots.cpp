#include "sharing/file_roots.h"

#include <algorithm>
#include <map>

namespace {

constexpr int c_pageBits = 16; // some 600 files

} // namespace

FileRoots::FileRoots() {
    Type* const lp_folder = d.GetType("shared_file_folder");
    for (Type* const lp_other : {d.GetType("shared_folder"), d.GetType("shared_file")}) {
        d.AddConnectionEventHandler(lp_other, lp_folder, MakeHandler(this, &FileRoots::OnChange));
        d.AddDisconnectionEventHandler(lp_other, lp_folder, MakeHandler(this, &FileRoots::OnChange));
    }
}

std::uintptr_t FileRoots::PageOf(const Item* ip_file) {
    return reinterpret_cast<std::uintptr_t>(ip_file) >> c_pageBits;
}

void FileRoots::Read() {
    m_places.clear();
    m_placeOfPage.clear();
    std::size_t l_filesRead = 0;
    std::map<std::vector<Item*>, Place> l_placeOfRoots;
    for (Item* const lp_folder : g("shared_file_folder")) {
        const ItemSet l_roots = lp_folder->GetItems("shared_folder");
        const auto [l_place, l_isNew] =
            l_placeOfRoots.try_emplace({l_roots.begin(), l_roots.end()}, static_cast<Place>(m_places.size()));
        if (l_isNew)
            m_places.push_back(l_place->first);
        l_filesRead += ReadFolder(lp_folder, l_place->second);
    }
    // Only an edited store file has files of no directory. Nobody may see them.
    const ItemSet l_lost = l_filesRead == d.GetType("shared_file")->CountItems()
                               ? ItemSet()
                               : g("shared_file").NotConnected("shared_file_folder");
    for (const Item* const lp_file : l_lost)
        m_placeOfPage[PageOf(lp_file)] = c_mixed;
    m_isRead = true;
}

std::size_t FileRoots::ReadFolder(Item* ip_folder, Place i_place) {
    std::size_t l_filesRead = 0;
    std::uintptr_t l_page = 0;
    d.AnyOfSubset({&ip_folder, 1}, "shared_file", [&](const Item* ip_file) {
        ++l_filesRead;
        if (PageOf(ip_file) != l_page) {
            l_page = PageOf(ip_file);
            Place& l_place = m_placeOfPage.try_emplace(l_page, i_place).first->second;
            if (l_place != i_place)
                l_place = c_mixed;
        }
        return false;
    });
    return l_filesRead;
}

FileRoots::Sight::Sight(FileRoots& io_roots, const ItemSet& i_visible) : m_roots(io_roots), m_visible(i_visible) {
    if (!io_roots.m_isRead)
        io_roots.Read();
    m_ofPlace.resize(io_roots.m_places.size(), Verdict::Unknown);
}

FileRoots::Verdict FileRoots::Sight::Of(const Item* ip_file) {
    const std::uintptr_t l_page = PageOf(ip_file);
    if (l_page == m_page)
        return m_ofPage;
    m_page = l_page;
    const auto l_found = m_roots.m_placeOfPage.find(l_page);
    if (l_found == m_roots.m_placeOfPage.end() || l_found->second == c_mixed)
        return m_ofPage = Verdict::Unknown;
    Verdict& l_verdict = m_ofPlace[l_found->second];
    if (l_verdict == Verdict::Unknown) {
        const std::vector<Item*>& l_roots = m_roots.m_places[l_found->second];
        const bool l_isVisible =
            std::any_of(l_roots.begin(), l_roots.end(), [this](Item* ip_root) { return m_visible.contains(ip_root); });
        l_verdict = l_isVisible ? Verdict::Visible : Verdict::Hidden;
    }
    return m_ofPage = l_verdict;
}
