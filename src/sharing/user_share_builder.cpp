#include "sharing/user_share_builder.h"

#include "app/text.h"

#include <QElapsedTimer>

#include <utility>

namespace {

constexpr qint64 c_makingSlice = 8; // ms

// Null if the folder above is not in the list. A path without a separator is above itself.
ItemPtr FindParent(Item* ip_share, const std::string& i_path) {
    const ItemPtr l_name = d.GetType("user_share_folder_name")->HasItem(GetParentFolder(i_path));
    if (!l_name)
        return ItemPtr();
    // Lists share their names: the folder wanted is the one of this list.
    const ItemSet l_folders = d.GetItems(l_name, ip_share, "user_share_folder");
    return l_folders.empty() ? ItemPtr() : ItemPtr(*l_folders.begin());
}

Item* AddFolder(Item* ip_share, const std::string& i_path) {
    const ItemPtr l_folder = ip_share->NewItem("user_share_folder");
    l_folder.Connect(d.GetType("user_share_folder_name")->GetItem(i_path));
    if (const ItemPtr l_parent = FindParent(ip_share, i_path))
        l_folder.NewItem("user_share_folder_parent").Connect(l_parent.NewItem("user_share_folder_child"));
    return l_folder.Get();
}

void AddFile(Item* ip_folder, const FileInfo& i_file) {
    const ItemPtr l_file = ip_folder->NewItem("user_share_file");
    l_file.Connect(d.GetType("user_share_file_name")->GetItem(i_file.name));
    l_file.Connect(d.GetType("user_share_file_size")->GetItem(i_file.size));
    for (const auto& [l_code, l_value] : i_file.attributes.attributes) {
        if (l_code == FileAttributeBitRate)
            l_file.Connect(d.GetType("bitrate")->GetItem(l_value));
        else if (l_code == FileAttributeLength)
            l_file.Connect(d.GetType("length_seconds")->GetItem(l_value));
        else if (l_code == FileAttributeVariableBitRate)
            l_file.Connect(d.GetType("bitrate_mode")->GetItem(l_value != 0 ? "vbr" : "cbr"));
    }
}

} // namespace

UserShareBuilder::UserShareBuilder() {
    d.AddDisconnectionEventHandler(d.GetType("user_share"), d.GetType("user"),
                                   MakeHandler(this, &UserShareBuilder::OnListLost));
    connect(&m_slice, &QTimer::timeout, this, &UserShareBuilder::MakeSlice);
}

void UserShareBuilder::Take(const std::string& i_user, FileInfoMap i_folders) {
    m_jobs.push_back({d.GetType("user")->GetItem(i_user)->NewItem("user_share").Get(), std::move(i_folders)});
    m_slice.start(0);
}

void UserShareBuilder::OnListLost(ConnectionInfo& i_info) {
    m_jobs.remove_if([&i_info](const Job& i_job) { return i_job.share == i_info.m_itemFrom; });
}

void UserShareBuilder::MakeSlice() {
    const Data::Operation l_making(d); // listeners may remove what is at hand here
    QElapsedTimer l_time;
    l_time.start();
    while (!m_jobs.empty() && !l_time.hasExpired(c_makingSlice))
        MakeNext();
    if (m_jobs.empty())
        m_slice.stop();
}

// One folder or file of the first job, or its end. Whatever makes items may end the job: nothing of it is touched
// afterwards.
void UserShareBuilder::MakeNext() {
    Job& l_job = m_jobs.front();
    Item* const lp_share = l_job.share;
    if (l_job.folders.empty()) {
        m_jobs.pop_front();
        lp_share->NewItem("user_share_loaded");
        return;
    }
    const auto l_first = l_job.folders.begin();
    if (l_job.folder == nullptr) {
        const std::string l_path = l_first->first;
        Item* const lp_folder = AddFolder(lp_share, l_path);
        if (!m_jobs.empty() && m_jobs.front().share == lp_share)
            m_jobs.front().folder = lp_folder;
    } else if (l_first->second.empty()) {
        l_job.folders.erase(l_first);
        l_job.folder = nullptr;
    } else {
        const auto l_file = l_first->second.extract(l_first->second.begin());
        AddFile(l_job.folder, l_file.value());
    }
}
