// The command as a process of its own: what it prints, what it leaves on the disk, how it ends.
#include "sharing/temp_tree.h"

#include <QProcess>

#include <gmock/gmock.h>

#include <optional>
#include <sstream>

#include <sys/stat.h>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

struct Outcome {
    int status = -1; // -1: no ordinary end
    std::string output;
    std::string error;
};

Outcome RunStore(const std::vector<std::string>& i_arguments) {
    QStringList l_arguments;
    for (const std::string& l_argument : i_arguments)
        l_arguments << QString::fromStdString(l_argument);
    QProcess l_process;
    l_process.start(QStringLiteral(TIDEWELL_STORE_PROGRAM), l_arguments);
    if (!l_process.waitForFinished(60000) || l_process.exitStatus() != QProcess::NormalExit)
        return {};
    return {l_process.exitCode(), l_process.readAllStandardOutput().toStdString(),
            l_process.readAllStandardError().toStdString()};
}

std::string Content(const std::string& i_path) {
    std::ostringstream l_content;
    l_content << std::ifstream(i_path, std::ios::binary).rdbuf();
    return l_content.str();
}

void Write(const std::string& i_path, const std::string& i_bytes) {
    std::ofstream(i_path, std::ios::binary) << i_bytes;
}

std::string Int(std::uint32_t i_number) {
    std::string l_bytes;
    for (int l_byte = 0; l_byte < 4; ++l_byte)
        l_bytes += static_cast<char>(i_number >> (8 * l_byte));
    return l_bytes;
}

std::string Text(const std::string& i_text) {
    return Int(static_cast<std::uint32_t>(i_text.size())) + i_text;
}

// A Type with one item in the file's own form; without a value if the Type is null.
std::string OneItem(const std::string& i_type, std::uint32_t i_id, const std::optional<std::string>& i_value) {
    return Text(i_type) + std::string(1, i_value ? '\0' : '\1') + Int(1) + Int(i_id) + (i_value ? Text(*i_value) : "");
}

class TidewellStore : public testing::Test {
protected:
    TempTree m_tree;
    const std::string m_file = m_tree.Path("store");

    // A verb that must succeed in silence.
    void Do(const std::string& i_verb, std::vector<std::string> i_arguments) {
        i_arguments.insert(i_arguments.begin(), {i_verb, m_file});
        const Outcome l_outcome = RunStore(i_arguments);
        EXPECT_EQ(l_outcome.status, 0) << i_verb;
        EXPECT_EQ(l_outcome.output + l_outcome.error, "") << i_verb;
    }

    std::string Dump() const { return RunStore({"dump", m_file}).output; }

    std::vector<std::string> FilesBeside() const {
        std::vector<std::string> l_names;
        for (const auto& l_entry : std::filesystem::directory_iterator(m_tree.Path()))
            l_names.push_back(l_entry.path().filename());
        return l_names;
    }
};

TEST_F(TidewellStore, KeepsSettingsInAFileForTheOwnerAlone) {
    Do("set", {"username", "alice"});
    Do("set", {"note", "two\nlines \\ \xc3\xa4\x01"});
    Do("set", {"empty", ""});
    struct stat l_stat;
    ASSERT_EQ(stat(m_file.c_str(), &l_stat), 0);
    EXPECT_EQ(l_stat.st_mode & 07777, 0600u);
    EXPECT_EQ(RunStore({"get", m_file, "username"}).output, "alice\n");
    EXPECT_EQ(RunStore({"get", m_file, "note"}).output, "two\nlines \\ \xc3\xa4\x01\n");
    EXPECT_EQ(RunStore({"get", m_file, "empty"}).output, "\n");
    EXPECT_EQ(Dump(), "global\n"
                      "  \"empty\"\n    global_value=\n"
                      "  \"note\"\n    global_value=two\\nlines \\\\ \xc3\xa4\\001\n"
                      "  \"username\"\n    global_value=alice\n"
                      "global_value\n"
                      "  \"\"\n    global=empty\n"
                      "  \"alice\"\n    global=username\n"
                      "  \"two\\nlines \\\\ \xc3\xa4\\001\"\n    global=note\n");

    Do("set", {"username", "bob"});
    EXPECT_EQ(RunStore({"get", m_file, "username"}).output, "bob\n");
    Do("set", {"username"});
    Do("set", {"never set"});
    const Outcome l_gone = RunStore({"get", m_file, "username"});
    EXPECT_EQ(l_gone.status, 1);
    EXPECT_THAT(l_gone.error, HasSubstr("\"username\" has no value"));
}

TEST_F(TidewellStore, SharesFoldersWithTheRightsLastGiven) {
    const std::string l_folder = m_tree.Path("Music");
    Do("share", {l_folder + "/", "public"});
    EXPECT_THAT(Dump(), HasSubstr("shared_folder\n  \"" + l_folder + "\"\n    shared_public\n"));
    Do("share", {l_folder, "group", "friends", "family"});
    EXPECT_THAT(Dump(), AllOf(HasSubstr("shared_folder\n  \"" + l_folder +
                                        "\"\n    user_list_group=family\n    user_list_group=friends\n"),
                              Not(HasSubstr("shared_public"))));
    Do("share", {l_folder, "userlist"});
    EXPECT_THAT(Dump(), HasSubstr("\"\n    shared_userlist\nshared_userlist"));
    Do("share", {l_folder, "nobody"});
    EXPECT_EQ(Dump(), "shared_folder\n  \"" + l_folder + "\"\nuser_list_group\n  \"family\"\n  \"friends\"\n");

    Do("unshare", {l_folder});
    EXPECT_THAT(Dump(), Not(HasSubstr("shared_folder")));
    EXPECT_EQ(RunStore({"unshare", m_file, l_folder}).status, 1);
}

TEST_F(TidewellStore, QueuesDownloadsInOrderAndEachOnce) {
    Do("want", {"bob", "Music\\Sub\\a.mp3", "1000"});
    Do("want", {"bob", "/srv/music/b.mp3", "9000000000", "2"});
    Do("want", {"bob", "Music\\Sub\\a.mp3", "1000"});
    Do("want", {"carol", "c.mp3", "0"});
    EXPECT_EQ(RunStore({"get", m_file, "transfer_order_counter"}).output, "4\n");
    const std::string l_dump = Dump();
    EXPECT_THAT(l_dump, HasSubstr("  -\n    download_entry_status=queued\n    download_order=1\n    file_name=a.mp3\n"
                                  "    file_size=1000\n    remote_folder=Music\\\\Sub\n    subfolder_save_level=0\n"
                                  "    user=bob\n"));
    EXPECT_THAT(l_dump, HasSubstr("    download_order=2\n    file_name=b.mp3\n    file_size=9000000000\n"
                                  "    remote_folder=/srv/music\n    subfolder_save_level=2\n    user=bob\n"));
    EXPECT_THAT(l_dump, HasSubstr("    download_order=3\n    file_name=c.mp3\n    file_size=0\n    remote_folder=\n"));
}

TEST_F(TidewellStore, PutsUsersIntoTheUserList) {
    Do("friend", {"bob"});
    Do("friend", {"bob", "friends"});
    Do("friend", {"bob", "family"});
    EXPECT_EQ(Dump(), "in_user_list\n  -\n    user=bob\n    user_list_group=family\n    user_list_group=friends\n"
                      "user\n  \"bob\"\n    in_user_list\n"
                      "user_list_group\n  \"family\"\n    in_user_list\n  \"friends\"\n    in_user_list\n");
}

TEST_F(TidewellStore, HasRoomsEnteredAtTheLogin) {
    Do("autojoin", {"Harbour"});
    Do("autojoin", {"Harbour"});
    EXPECT_EQ(Dump(), "room\n  \"Harbour\"\n    room_autojoin\nroom_autojoin\n  -\n    room=Harbour\n");
}

TEST_F(TidewellStore, TellsHowItIsUsed) {
    const Outcome l_help = RunStore({"--help"});
    EXPECT_EQ(l_help.status, 0);
    for (const char* l_verb : {"dump", "get", "set", "share", "unshare", "want", "friend", "autojoin"})
        EXPECT_THAT(l_help.output, HasSubstr(std::string("\n  ") + l_verb + " FILE"));

    const std::vector<std::vector<std::string>> l_wrong = {{},
                                                           {"drop", m_file},
                                                           {"dump"},
                                                           {"dump", m_file, "more"},
                                                           {"get", m_file},
                                                           {"set", m_file},
                                                           {"set", m_file, "a", "b", "c"},
                                                           {"share", m_file, "/x"},
                                                           {"want", m_file, "bob", "a.mp3"},
                                                           {"friend", m_file}};
    for (const std::vector<std::string>& l_arguments : l_wrong) {
        const Outcome l_outcome = RunStore(l_arguments);
        EXPECT_EQ(l_outcome.status, 2) << testing::PrintToString(l_arguments);
        EXPECT_THAT(l_outcome.error, HasSubstr("tidewell-store --help")) << testing::PrintToString(l_arguments);
    }
    EXPECT_THAT(FilesBeside(), IsEmpty()) << "nothing was done";
}

TEST_F(TidewellStore, RefusesArgumentsThatMakeNoSenseAndLeavesTheFileAlone) {
    Do("set", {"username", "alice"});
    const std::string l_before = Content(m_file);
    const std::vector<std::vector<std::string>> l_wrong = {{"set", m_file, "", "x"},
                                                           {"share", m_file, "/x", "everyone"},
                                                           {"share", m_file, "/x", "group"},
                                                           {"share", m_file, "/x", "public", "friends"},
                                                           {"share", m_file, "", "public"},
                                                           {"want", m_file, "bob", "a\\", "1"},
                                                           {"want", m_file, "", "a", "1"},
                                                           {"want", m_file, "bob", "a", "-1"},
                                                           {"want", m_file, "bob", "a", "9223372036854775808"},
                                                           {"want", m_file, "bob", "a", "1", "-1"},
                                                           {"want", m_file, "bob", "a", "1", "2147483648"},
                                                           {"friend", m_file, ""}};
    for (const std::vector<std::string>& l_arguments : l_wrong) {
        const Outcome l_outcome = RunStore(l_arguments);
        EXPECT_EQ(l_outcome.status, 1) << testing::PrintToString(l_arguments);
        EXPECT_THAT(l_outcome.error, AllOf(StartsWith("tidewell-store: "), EndsWith(".\n")));
    }
    EXPECT_EQ(Content(m_file), l_before);
}

TEST_F(TidewellStore, SaysWhenAFileIsMissingUnreadableOrUnwritable) {
    for (const char* l_verb : {"dump", "get"}) {
        std::vector<std::string> l_arguments = {l_verb, m_file};
        if (std::string(l_verb) == "get")
            l_arguments.push_back("username");
        const Outcome l_missing = RunStore(l_arguments);
        EXPECT_EQ(l_missing.status, 1);
        EXPECT_THAT(l_missing.error, HasSubstr("\"" + m_file + "\""));
    }
    EXPECT_THAT(FilesBeside(), IsEmpty());
    for (const std::string& l_place : {m_tree.Path("no/such/folder/store"), m_tree.Path()}) {
        const Outcome l_outcome = RunStore({"set", l_place, "username", "alice"});
        EXPECT_EQ(l_outcome.status, 1) << l_place;
        EXPECT_THAT(l_outcome.error, HasSubstr("\"" + l_place + "\""));
    }
    EXPECT_THAT(FilesBeside(), IsEmpty());
}

// What a later client keeps in the file: Types of its own, and a user who is kept for the sake of one of these.
TEST_F(TidewellStore, CarriesTypesThatItDoesNotKnow) {
    Write(m_file, Int(5) + OneItem("future_mark", 1, std::nullopt) + OneItem("future_window", 2, "main") +
                      OneItem("global", 3, "username") + OneItem("global_value", 4, "alice") +
                      OneItem("user", 5, "zoe") + Int(4) + Int(1) + Int(2) + Int(1) + Int(5) + Int(2) + Int(5) +
                      Int(3) + Int(4));
    const std::string l_foreign = "future_mark\n  -\n    future_window=main\n    user=zoe\n"
                                  "future_window\n  \"main\"\n    future_mark\n    user=zoe\n";
    EXPECT_THAT(Dump(), StartsWith(l_foreign + "global\n"));
    Do("set", {"username", "bob"});
    EXPECT_THAT(Dump(), AllOf(StartsWith(l_foreign + "global\n"), HasSubstr("global_value=bob"),
                              EndsWith("user\n  \"zoe\"\n    future_mark\n    future_window=main\n")));
}

// Wherever it breaks off, reading shows what there is and says that it is damaged, and writing does not touch it.
TEST_F(TidewellStore, LeavesADamagedFileAsItIs) {
    Do("set", {"username", "alice"});
    Do("share", {"/music", "public"});
    const std::string l_whole = Content(m_file);
    for (std::size_t l_length = 0; l_length < l_whole.size(); l_length += 11) {
        Write(m_file, l_whole.substr(0, l_length));
        const Outcome l_set = RunStore({"set", m_file, "username", "bob"});
        EXPECT_EQ(l_set.status, 1) << l_length;
        EXPECT_THAT(l_set.error, HasSubstr("damaged")) << l_length;
        const Outcome l_dump = RunStore({"dump", m_file});
        EXPECT_EQ(l_dump.status, 1) << l_length;
        EXPECT_THAT(l_dump.error, HasSubstr("damaged")) << l_length;
        EXPECT_EQ(Content(m_file), l_whole.substr(0, l_length));
    }
    EXPECT_THAT(FilesBeside(), ElementsAre("store"));
    Write(m_file, l_whole.substr(0, l_whole.size() - 4));
    EXPECT_THAT(RunStore({"dump", m_file}).output, HasSubstr("\"username\""));

    std::string l_crowd = Int(60000);
    for (int l_type = 0; l_type < 60000; ++l_type)
        l_crowd += Text("t" + std::to_string(l_type)) + '\0' + Int(0);
    Write(m_file, l_crowd + Int(0));
    EXPECT_THAT(RunStore({"dump", m_file}).error, HasSubstr("damaged"));
}

} // namespace
