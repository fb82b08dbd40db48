// A copy of what a list tells of shared files, free of the store: what a list is made from on another thread.
#pragma once

#include "peer/file_records.h"
#include "sharing/audio_attributes.h"

#include <cstdint>
#include <string>
#include <vector>

struct SnapshotFile {
    std::string name;
    long long size = 0;
    AudioAttributes audio;
};

struct SnapshotFolder {
    std::string path; // as the file system has it
    std::vector<SnapshotFile> files;
};

using ShareSnapshot = std::vector<SnapshotFolder>;

// Paths get backslashes; folders without files are there too. A name is what stands behind its last separator, either
// one: a backslash is an ordinary character of the file system, but cuts the name for who reads the list.
FileInfoMap FoldersToSend(const ShareSnapshot& i_snapshot);
// Names and sizes alone.
SharedFolderInfo FilesToSend(const ShareSnapshot& i_snapshot);
