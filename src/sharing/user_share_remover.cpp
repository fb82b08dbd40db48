#include "sharing/user_share_remover.h"

#include <QElapsedTimer>

#include <vector>

namespace {

constexpr qint64 c_removingSlice = 8;  // ms
constexpr std::size_t c_atOnce = 5000; // files and folders that nobody waits for
constexpr std::size_t c_step = 256;    // of them between two looks at the clock

std::vector<Item*> SomeOf(Item* ip_item, std::string_view i_type) {
    std::vector<Item*> l_items;
    d.AnyOfSubset({&ip_item, 1}, i_type, [&l_items](Item* ip_found) {
        l_items.push_back(ip_found);
        return l_items.size() == c_step;
    });
    return l_items;
}

// With the named values of its own that nothing else has. The sweep would find them too, all in one go.
void RemoveWith(ItemPtr i_item, std::initializer_list<const char*> i_types) {
    std::vector<ItemPtr> l_values;
    for (const char* const lp_type : i_types) {
        if (const ItemPtr l_value = i_item[lp_type])
            l_values.push_back(l_value);
    }
    i_item.Remove();
    for (const ItemPtr l_value : l_values) {
        if (l_value.IsDisconnectedFromAll())
            l_value.Remove();
    }
}

void RemoveFolder(ItemPtr i_folder) {
    if (const ItemPtr l_way = i_folder["user_share_folder_parent"])
        RemoveWith(l_way, {"user_share_folder_child"});
    RemoveWith(i_folder, {"user_share_folder_name"});
}

} // namespace

UserShareRemover::UserShareRemover() {
    d.GetType("user_share")->m_itemRemoved.AddHandler(MakeHandler(this, &UserShareRemover::OnShareRemoved));
    connect(&m_slice, &QTimer::timeout, this, &UserShareRemover::RemoveSlice);
}

void UserShareRemover::Take(ItemPtr i_share) {
    i_share.Disconnect("user");
    m_shares.push_back(i_share.Get());
    {
        const Data::Operation l_removing(d);
        for (std::size_t l_removed = 0; !m_shares.empty() && l_removed < c_atOnce;)
            l_removed += RemoveSome();
    }
    if (m_shares.empty())
        d.RemoveDisconnectedItems();
    else
        m_slice.start(0);
}

void UserShareRemover::OnShareRemoved(Item* ip_share) {
    std::erase(m_shares, ip_share);
}

void UserShareRemover::RemoveSlice() {
    {
        const Data::Operation l_removing(d); // listeners may remove what is at hand here
        QElapsedTimer l_time;
        l_time.start();
        while (!m_shares.empty() && !l_time.hasExpired(c_removingSlice))
            RemoveSome();
    }
    if (m_shares.empty()) {
        m_slice.stop();
        d.RemoveDisconnectedItems();
    }
}

// Some of the files of a folder, or the emptied folder, or the emptied list; how many that were.
std::size_t UserShareRemover::RemoveSome() {
    Item* const lp_share = m_shares.front();
    const std::vector<Item*> l_folders = SomeOf(lp_share, "user_share_folder");
    if (l_folders.empty()) {
        lp_share->Remove();
        return 1;
    }
    std::size_t l_removed = 0;
    for (Item* const lp_folder : l_folders) {
        const std::vector<Item*> l_files = SomeOf(lp_folder, "user_share_file");
        for (Item* const lp_file : l_files)
            RemoveWith(lp_file, {"user_share_file_name", "user_share_file_size"});
        l_removed += l_files.size();
        if (l_files.size() < c_step) {
            RemoveFolder(lp_folder);
            ++l_removed;
        }
        if (l_removed >= c_step)
            break;
    }
    return l_removed;
}
