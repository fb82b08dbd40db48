#include "sharing/share_snapshot.h"

#include "app/text.h"

#include <algorithm>

FileInfoMap FoldersToSend(const ShareSnapshot& i_snapshot) {
    FileInfoMap l_folders;
    for (const SnapshotFolder& l_folder : i_snapshot) {
        std::string l_path = l_folder.path;
        std::replace(l_path.begin(), l_path.end(), '/', '\\');
        std::set<FileInfo>& l_files = l_folders[l_path];
        for (const SnapshotFile& l_file : l_folder.files) {
            FileInfo l_record;
            l_record.name = GetFileName(l_file.name);
            l_record.size = l_file.size;
            l_record.attributes = AttributesToSend(l_record.name, l_file.audio);
            l_files.insert(std::move(l_record));
        }
    }
    return l_folders;
}

SharedFolderInfo FilesToSend(const ShareSnapshot& i_snapshot) {
    SharedFolderInfo l_info;
    for (const SnapshotFolder& l_folder : i_snapshot) {
        for (const SnapshotFile& l_file : l_folder.files) {
            FileInfo l_record;
            l_record.name = GetFileName(l_file.name);
            l_record.size = l_file.size;
            l_info.files.insert(std::move(l_record));
        }
    }
    return l_info;
}
