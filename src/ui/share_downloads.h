// Queueing what a share list offers. Null items are passed over.
#pragma once

#include "store/data.h"

#include <string>
#include <vector>

void DownloadShareFile(const std::string& i_user, ItemPtr i_file);
// The folders, each with all below it. Files that lie deeper than the folder that was chosen keep one more folder level
// on the own disk. A list may link folders in a circle, and one chosen folder may lie in another: each is entered once.
void DownloadShareFolders(const std::string& i_user, const std::vector<ItemPtr>& i_folders);
