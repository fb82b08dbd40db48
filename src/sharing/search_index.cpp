#include "sharing/search_index.h"

#include <algorithm>

// A token never reaches across a separator of the path, so the directory's path and the name are cut apart.
void FolderIndexer::TokenizeSharedFile(Item* ip_file, std::string_view i_name) {
    if (ip_file->IsConnected("search_token"))
        return;
    if (m_folderTokens.empty())
        FindFolderTokens();
    for (Item* lp_token : m_folderTokens)
        ip_file->Connect(lp_token);
    m_cutter.Cut({}, i_name, [ip_file](std::string_view i_token) {
        ip_file->Connect(d.GetType("search_token")->GetItem(i_token));
    });
}

void FolderIndexer::FindFolderTokens() {
    m_cutter.Cut(mp_folder->AsView(), {}, [this](std::string_view i_token) {
        m_folderTokens.push_back(d.GetType("search_token")->GetItem(i_token));
    });
    std::sort(m_folderTokens.begin(), m_folderTokens.end());
    m_folderTokens.erase(std::unique(m_folderTokens.begin(), m_folderTokens.end()), m_folderTokens.end());
}
