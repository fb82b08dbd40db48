// The search index: each shared file is connected to a `search_token` item for every token of its place and name.
#pragma once

#include "sharing/search_tokens.h"
#include "store/data.h"

#include <string_view>
#include <vector>

// For the files of one directory, whose own tokens are cut and looked up once. Lives within one Data::Operation.
class FolderIndexer {
public:
    FolderIndexer(SearchTokenCutter& io_cutter, Item* ip_folder) : m_cutter(io_cutter), mp_folder(ip_folder) {}

    // Nothing is done for a file that has tokens: place and name of a file never change.
    void TokenizeSharedFile(Item* ip_file, std::string_view i_name);

private:
    void FindFolderTokens();

    SearchTokenCutter& m_cutter;
    Item* mp_folder;
    std::vector<Item*> m_folderTokens; // empty until the first file needs them
};
