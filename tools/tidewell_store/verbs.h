// What tidewell-store can do to a store that is loaded. A verb works on the global `d` alone; it answers nothing when
// it is done, or one sentence that says why it is not.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

using Arguments = std::vector<std::string>;
using Complaint = std::optional<std::string>;

struct Verb {
    std::string_view name;
    std::string_view arguments; // behind the file, as the help shows them
    std::string_view help;
    std::size_t least; // number of arguments behind the file
    std::size_t most;
    bool isWriting; // the file is saved afterwards, and need not exist before
    Complaint (*run)(const Arguments& i_arguments);
};

const std::vector<Verb>& Verbs();
