// A store file brought into the global store and back, whole: also what only other programs, or other versions of
// this one, keep in it.
#pragma once

#include <optional>
#include <string>

struct LoadedFile {
    enum State { Whole, Absent, Damaged, Unreadable };
    State state = Whole;
    std::string reason; // of an unreadable file
};

// Needs the Types of the program. For what the file holds beyond them it makes Types and relations of its own, so that
// all of it can be seen and is written back. Of a damaged file, what reads cleanly is in the store afterwards. The file
// is only read.
LoadedFile LoadStoreFile(const std::string& i_path);

// Nothing when the file is replaced; otherwise why not, and the old one is as it was.
std::optional<std::string> SaveStoreFile(const std::string& i_path);
