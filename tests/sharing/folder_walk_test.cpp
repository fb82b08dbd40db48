#include "sharing/folder_walk.h"

#include "sharing/folder_listing.h"
#include "sharing/temp_tree.h"

#include <gmock/gmock.h>

#include <map>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::_;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;
using testing::Pair;
using testing::SizeIs;

// Each directory that a walk reported, in order, with its files; paths below the root without the root's own.
struct Report {
    std::vector<std::string> folders;
    std::map<std::string, std::vector<std::string>> files;
};

Report WalkAndReport(const std::string& i_root) {
    Report l_report;
    WalkFolders(i_root, [&](const FolderListing& i_listing) {
        const std::string l_folder =
            i_listing.Path() == i_root ? "."
                                       : i_listing.Path().substr(std::min(i_root.size() + 1, i_listing.Path().size()));
        l_report.folders.push_back(l_folder);
        for (const std::string_view l_file : i_listing.Files())
            l_report.files[l_folder].emplace_back(l_file);
    });
    return l_report;
}

int OpenDescriptors() {
    int l_count = 0;
    DIR* const lp_folder = opendir("/proc/self/fd");
    while (readdir(lp_folder))
        ++l_count;
    closedir(lp_folder);
    return l_count;
}

TEST(FolderWalk, ReportsFilesAndFoldersInNameOrderWithoutHiddenAndSpecialOnes) {
    TempTree l_tree;
    for (const char* l_file :
         {"b.txt", "A.txt", "c.txt", "Sub/one", "Sub/deep/two", ".hidden", ".secret/three", "also/x"})
        l_tree.File(l_file);
    l_tree.Folder("empty");
    ASSERT_EQ(mkfifo(l_tree.Path("pipe").c_str(), 0600), 0);
    l_tree.Link("to file", "b.txt");
    l_tree.Link("to nothing", "nowhere");
    l_tree.Link("to pipe", "pipe");

    const Report l_report = WalkAndReport(l_tree.Path());
    EXPECT_THAT(l_report.folders, ElementsAre(".", "also", "empty", "Sub", "Sub/deep"));
    EXPECT_THAT(l_report.files.at("."), ElementsAre("A.txt", "b.txt", "c.txt", "to file"));
    EXPECT_THAT(l_report.files.at("Sub/deep"), ElementsAre("two"));
}

TEST(FolderWalk, TellsSizesThroughLinksAndOfFilesThatAreGone) {
    TempTree l_tree;
    l_tree.File("real", 1234);
    l_tree.File("gone", 5);
    l_tree.Link("link", "real");
    WalkFolders(l_tree.Path(), [&](const FolderListing& i_listing) {
        l_tree.Remove("gone");
        EXPECT_EQ(i_listing.FileSize("real"), 1234);
        EXPECT_EQ(i_listing.FileSize("link"), 1234);
        EXPECT_EQ(i_listing.FileSize("gone"), std::nullopt);
        EXPECT_EQ(i_listing.FilePath("real"), l_tree.Path("real"));
    });
}

TEST(FolderWalk, KeepsNamesOfAnyBytes) {
    TempTree l_tree;
    const std::string l_long(255, 'L');
    for (const std::string& l_name : {std::string("\xff\xfe.mp3"), std::string("a\nb"), std::string("back\\slash"),
                                      std::string("<img src=x>"), std::string("\xc3\x84"), l_long})
        l_tree.File("\xe9t\xe9/" + l_name);
    const Report l_report = WalkAndReport(l_tree.Path());
    EXPECT_THAT(l_report.folders, ElementsAre(".", "\xe9t\xe9"));
    EXPECT_THAT(l_report.files.at("\xe9t\xe9"),
                ElementsAre("<img src=x>", "a\nb", "back\\slash", l_long, "\xc3\x84", "\xff\xfe.mp3"));
}

TEST(FolderWalk, RootsThatCannotBeReadLookEmpty) {
    TempTree l_tree;
    l_tree.File("file");
    for (const std::string& l_root : {l_tree.Path("missing"), l_tree.Path("file"), std::string()}) {
        const Report l_report = WalkAndReport(l_root);
        EXPECT_THAT(l_report.folders, ElementsAre(".")) << l_root;
        EXPECT_THAT(l_report.files, IsEmpty()) << l_root;
    }
}

TEST(FolderWalk, GivesCleanPathsBelowARootThatIsNotClean) {
    TempTree l_tree;
    l_tree.File("a/b/file");
    std::vector<std::string> l_paths;
    WalkFolders(l_tree.Path("a/../a//"), [&](const FolderListing& i_listing) { l_paths.push_back(i_listing.Path()); });
    EXPECT_THAT(l_paths, ElementsAre(l_tree.Path("a/../a//"), l_tree.Path("a/b")));
}

TEST(FolderWalk, LinksUpwardsAreNotFollowed) {
    TempTree l_tree;
    l_tree.File("a/b/file");
    l_tree.Link("a/b/up", "..");
    l_tree.Link("a/b/top", "../..");
    l_tree.Link("a/b/self", ".");
    l_tree.Link("a/b/round", "round");
    EXPECT_THAT(WalkAndReport(l_tree.Path()).folders, ElementsAre(".", "a", "a/b"));
}

// Thirty folders, each with links to all the others: the ways through them are beyond counting.
TEST(FolderWalk, EntersADirectoryEightTimesAtMost) {
    TempTree l_tree;
    constexpr int c_folders = 30;
    for (int l_from = 0; l_from < c_folders; ++l_from) {
        l_tree.Folder(std::to_string(l_from));
        for (int l_to = 0; l_to < c_folders; ++l_to)
            l_tree.Link(std::to_string(l_from) + "/to" + std::to_string(l_to), "../" + std::to_string(l_to));
    }
    const std::vector<std::string> l_reported = WalkAndReport(l_tree.Path()).folders;
    std::map<std::string, int> l_entries;
    for (const std::string& l_path : l_reported) {
        const std::string l_name = l_path.substr(l_path.rfind('/') + 1);
        ++l_entries[l_name.starts_with("to") ? l_name.substr(2) : l_name];
    }
    EXPECT_THAT(l_entries, SizeIs(1 + c_folders));
    EXPECT_THAT(l_entries, Each(Pair(_, Le(8))));
    for (int l_folder = 0; l_folder < c_folders; ++l_folder)
        EXPECT_THAT(l_reported, Contains(std::to_string(l_folder)));

    TempTree l_many;
    l_many.File("target/file");
    for (char l_link = 'a'; l_link <= 'm'; ++l_link)
        l_many.Link(std::string(1, l_link), "target");
    EXPECT_THAT(WalkAndReport(l_many.Path()).folders, ElementsAre(".", "a", "b", "c", "d", "e", "f", "g", "target"));
}

// Far beyond the length of path that a system call takes, with work left to do at every level on the way back.
TEST(FolderWalk, GoesToAnyDepthWithFewDescriptors) {
    TempTree l_tree;
    constexpr int c_depth = 700;
    const std::string l_name(20, 'd');
    int l_folder = open(l_tree.Path().c_str(), O_RDONLY | O_DIRECTORY);
    for (int l_level = 0; l_level < c_depth; ++l_level) {
        ASSERT_EQ(mkdirat(l_folder, "z after", 0700), 0);
        ASSERT_EQ(mkdirat(l_folder, l_name.c_str(), 0700), 0);
        const int l_next = openat(l_folder, l_name.c_str(), O_RDONLY | O_DIRECTORY);
        close(l_folder);
        l_folder = l_next;
    }
    close(openat(l_folder, "bottom", O_CREAT | O_WRONLY, 0600));
    close(l_folder);

    const int l_before = OpenDescriptors();
    int l_most = 0;
    int l_folders = 0;
    bool l_reachedBottom = false;
    WalkFolders(l_tree.Path(), [&](const FolderListing& i_listing) {
        ++l_folders;
        l_most = std::max(l_most, OpenDescriptors() - l_before);
        l_reachedBottom = l_reachedBottom || i_listing.Files() == std::vector<std::string_view>{"bottom"};
    });
    EXPECT_EQ(l_folders, 1 + 2 * c_depth);
    EXPECT_TRUE(l_reachedBottom);
    EXPECT_LE(l_most, 10);
    EXPECT_EQ(OpenDescriptors(), l_before);
}

TEST(FolderWalk, GoesOnWhereADirectoryVanishesUnderIt) {
    TempTree l_tree;
    l_tree.File("a/b/c/file");
    l_tree.File("z/file");
    std::vector<std::string> l_paths;
    WalkFolders(l_tree.Path(), [&](const FolderListing& i_listing) {
        l_paths.push_back(i_listing.Path());
        if (i_listing.Path() == l_tree.Path("a"))
            l_tree.Remove("a");
    });
    EXPECT_THAT(l_paths, ElementsAre(l_tree.Path(), l_tree.Path("a"), l_tree.Path("a/b"), l_tree.Path("z")));
}

} // namespace
