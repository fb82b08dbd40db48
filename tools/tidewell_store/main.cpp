// tidewell-store: reads and edits the file in which the client keeps its settings, shared folders, user list and
// downloads. For a client that is not running: a running one writes over what is done here.

#include "store_file.h"
#include "verbs.h"

#include "app/settings.h"
#include "net/server_schema.h"
#include "peer/peer_schema.h"
#include "search/wish_list_schema.h"
#include "sharing/shares_schema.h"
#include "store/data_saver.h"
#include "transfers/transfer_schema.h"

#include <algorithm>
#include <iostream>

namespace {

enum ExitStatus { Done = 0, Failed = 1, WrongUse = 2 };

int Fail(ExitStatus i_status, const std::string& i_sentence) {
    std::cerr << "tidewell-store: " << i_sentence << '\n';
    return i_status;
}

void CreateTypes() {
    CreateServerTypes();
    CreatePeerTypes();
    CreateSettingsTypes();
    CreateWishListTypes();
    CreateSharesTypes();
    CreateTransferTypes();
}

void PrintHelp() {
    std::cout << "Usage: tidewell-store VERB FILE [ARGUMENT...]\n\n"
                 "Reads and edits a store file of Tidewell while no client uses it.\n\n";
    for (const Verb& l_verb : Verbs()) {
        const std::string l_usage =
            std::string(l_verb.name) + " FILE" + (l_verb.arguments.empty() ? "" : " ") + std::string(l_verb.arguments);
        std::cout << "  " << l_usage << "\n      " << l_verb.help << '\n';
    }
    std::cout << "\nVerbs that write start an empty store where there is no file. PATH has either separator.\n"
                 "Exit status: 0 done, 1 not done, 2 wrong use.\n";
}

// Empty if the verb can go on with what was loaded.
std::string ReasonToStop(const LoadedFile& i_loaded, bool i_isWriting, const std::string& i_file) {
    const std::string l_name = "file \"" + i_file + "\"";
    if (i_loaded.state == LoadedFile::Unreadable)
        return "Cannot read the " + l_name + ": " + i_loaded.reason + ".";
    if (i_loaded.state == LoadedFile::Absent && !i_isWriting)
        return "There is no " + l_name + ".";
    if (i_loaded.state == LoadedFile::Damaged && i_isWriting)
        return "The " + l_name + " is damaged, so it was left as it is.";
    return "";
}

int RunVerb(const Verb& i_verb, const std::string& i_file, const Arguments& i_arguments) {
    DataSaver l_saver;
    CreateTypes();
    const LoadedFile l_loaded = LoadStoreFile(i_file);
    if (const std::string l_reason = ReasonToStop(l_loaded, i_verb.isWriting, i_file); !l_reason.empty())
        return Fail(Failed, l_reason);
    if (const Complaint l_complaint = i_verb.run(i_arguments))
        return Fail(Failed, *l_complaint);
    if (i_verb.isWriting) {
        if (const std::optional<std::string> l_failure = SaveStoreFile(i_file))
            return Fail(Failed, "Cannot write the file \"" + i_file + "\": " + *l_failure + ".");
    }
    if (!std::cout.flush())
        return Fail(Failed, "Cannot write the output.");
    if (l_loaded.state == LoadedFile::Damaged)
        return Fail(Failed, "The file \"" + i_file + "\" is damaged; this is what could be read.");
    return Done;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    const Arguments l_all(ip_arguments + std::min(i_count, 1), ip_arguments + i_count);
    if (!l_all.empty() && (l_all[0] == "--help" || l_all[0] == "-h")) {
        PrintHelp();
        return Done;
    }
    const std::string l_hint = " Try tidewell-store --help.";
    if (l_all.size() < 2)
        return Fail(WrongUse, "A verb and a file are needed." + l_hint);
    const auto l_verb =
        std::find_if(Verbs().begin(), Verbs().end(), [&](const Verb& i_verb) { return i_verb.name == l_all[0]; });
    if (l_verb == Verbs().end())
        return Fail(WrongUse, "There is no verb \"" + l_all[0] + "\"." + l_hint);
    const Arguments l_arguments(l_all.begin() + 2, l_all.end());
    if (l_arguments.size() < l_verb->least || l_arguments.size() > l_verb->most)
        return Fail(WrongUse, "Use: " + l_all[0] + " FILE " + std::string(l_verb->arguments) + "." + l_hint);
    return RunVerb(*l_verb, l_all[1], l_arguments);
}
