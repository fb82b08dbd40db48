// Walks a directory and everything below it, links to directories included.
//
// A directory, told by its device and inode, is never entered below itself, and never more than eight times in one
// walk, one of the eight being kept for the way without links: links cannot make the walk endless, nor let it grow with
// the number of ways through them, nor hide a directory. A way left out for that reason is not reported at all.
//
// Depth is limited by memory alone: the walk goes from directory to directory by descriptor, so that no path needs to
// fit into one system call, and holds a handful of descriptors however deep it is.
#pragma once

#include <absl/functional/function_ref.h>

#include <string>

class FolderListing;

// i_visit is called once for each directory, the root first and each directory before those below it, those of one
// directory in the order of their names. The listing is valid during the call. A root or folder that cannot be opened
// is reported with an empty listing. The root is called as i_root has it; what is below has a clean absolute path.
void WalkFolders(const std::string& i_root, absl::FunctionRef<void(const FolderListing&)> i_visit);
