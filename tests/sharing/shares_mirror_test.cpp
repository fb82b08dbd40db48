#include "sharing/sharing_fixture.h"

#include <QThread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class SharesMirror : public SharingTest {
protected:
    TempTree m_tree;

    std::string In(const std::string& i_name) const { return m_tree.Path(i_name); }
    static std::string SizeOf(const std::string& i_path) {
        return sharedFoldersManager->GetSharedFileItem(i_path).HasItem("shared_file_size").AsString();
    }
};

TEST_F(SharesMirror, ANewFolderIsWalkedAtOnceAndASecondTimeNotAgain) {
    m_tree.File("one.txt", 10);
    m_tree.File("sub/two.txt", 10);
    m_tree.Folder("empty");
    Item* const lp_root = Share(m_tree.Path());
    EXPECT_THAT(SharedPaths(), ElementsAre(In("one.txt"), In("sub/two.txt")));
    EXPECT_THAT(g("shared_file_folder").Connected(lp_root), SizeIs(3));
    EXPECT_THAT(g("shared_file_size"), SizeIs(1)) << "files of one size share the item";

    m_tree.File("three.txt");
    EXPECT_EQ(Share(m_tree.Path()), lp_root);
    EXPECT_THAT(SharedPaths(), SizeIs(2));
}

TEST_F(SharesMirror, ARescanCountsWhatCameAndWentAndKeepsTheSizeOfKnownFiles) {
    m_tree.File("stays", 1);
    m_tree.File("goes");
    m_tree.File("dir/a");
    m_tree.File("dir/deep/b");
    m_tree.File("other/a");
    Share(m_tree.Path());
    EXPECT_THAT(Rescan(), Pair(0, 0));
    const ItemPtr l_stays = sharedFoldersManager->GetSharedFileItem(In("stays"));

    m_tree.Remove("goes");
    m_tree.Remove("dir");
    m_tree.File("new", 7);
    m_tree.File("stays", 99);
    EXPECT_THAT(Rescan(), Pair(1, 3));
    EXPECT_THAT(SharedPaths(), ElementsAre(In("new"), In("other/a"), In("stays")));
    EXPECT_EQ(sharedFoldersManager->GetSharedFileItem(In("stays")), l_stays);
    EXPECT_EQ(SizeOf(In("stays")), "1");
    EXPECT_EQ(SizeOf(In("new")), "7");
    EXPECT_THAT(Rescan(), Pair(0, 0)) << "what is gone is counted once";

    EXPECT_THAT(g("shared_file_folder"), SizeIs(2));
    EXPECT_FALSE(d.GetType("shared_file_name")->HasItem("goes"));
    EXPECT_FALSE(d.GetType("shared_file_lowercase_name")->HasItem("goes"));
    EXPECT_FALSE(d.GetType("shared_file_folder_lowercase_name")->HasItem(In("dir/deep")));
}

TEST_F(SharesMirror, AMissingRootLosesItsFilesAndFindsThemAgain) {
    m_tree.File("disk/file");
    Share(In("disk"));
    std::filesystem::rename(In("disk"), In("unmounted"));
    EXPECT_THAT(Rescan(), Pair(0, 1));
    EXPECT_THAT(g("shared_folder"), SizeIs(1));
    std::filesystem::rename(In("unmounted"), In("disk"));
    EXPECT_THAT(Rescan(), Pair(1, 0));
}

TEST_F(SharesMirror, ADirectoryOfTwoRootsStaysUntilTheLastOneGoes) {
    m_tree.File("outer/inner/file");
    m_tree.File("outer/file");
    Share(In("outer"));
    Share(In("outer/inner"));
    EXPECT_THAT(SharedPaths(), SizeIs(2));
    EXPECT_THAT(g("shared_folder").Connected("shared_file_folder", In("outer/inner")), SizeIs(2));
    EXPECT_THAT(Rescan(), Pair(0, 0));

    sharedFoldersManager->UnshareFolder(In("outer"));
    EXPECT_THAT(SharedPaths(), ElementsAre(In("outer/inner/file")));
    sharedFoldersManager->UnshareFolder(In("never shared"));
    EXPECT_THAT(g("shared_folder"), SizeIs(1));
    sharedFoldersManager->UnshareFolder(In("outer/inner"));
    for (const char* l_type : {"shared_folder", "shared_file_folder", "shared_file", "shared_file_name",
                               "shared_file_size", "shared_file_lowercase_name"})
        EXPECT_THAT(g(l_type), IsEmpty()) << l_type;
}

// Two files of one bitrate in a users' share list and in ours are connected through that bitrate.
TEST_F(SharesMirror, FilesOfAVanishedFolderGoEvenWhenAShareListHoldsTheirAttributes) {
    m_tree.File("dir/song.mp3");
    Share(m_tree.Path());
    ItemPtr l_file(*g("shared_file").begin());
    l_file.NewItem("is_scanned");
    l_file.Connect(d.GetType("bitrate")->GetItem("192"));
    ItemPtr l_share = d.GetType("user_share")->NewItem();
    ItemPtr l_theirs = l_share.NewItem("user_share_folder").NewItem("user_share_file");
    l_theirs.Connect(d.GetType("bitrate")->GetItem("192"));

    m_tree.Remove("dir");
    EXPECT_THAT(Rescan(), Pair(0, 1));
    EXPECT_THAT(g("shared_file"), IsEmpty());
    EXPECT_THAT(g("user_share_file"), SizeIs(1));
    EXPECT_THAT(Rescan(), Pair(0, 0));
}

// A saved file comes back with its folder, name and size before the walk meets it.
TEST_F(SharesMirror, AFileThatTheStoreAlreadyHoldsIsFoundAgain) {
    m_tree.File("song.mp3", 20);
    ItemPtr l_folder = d.GetType("shared_file_folder")->NewItem(m_tree.Path());
    const auto l_addSaved = [&](const char* i_name) {
        ItemPtr l_file = l_folder.NewItem("shared_file");
        l_file.NewItem("is_scanned");
        if (i_name)
            l_file.Connect(d.GetType("shared_file_name")->GetItem(i_name));
        return l_file;
    };
    l_addSaved("song.mp3");
    EXPECT_THAT(Rescan(), Pair(0, 1)) << "no root leads there";

    l_folder = d.GetType("shared_file_folder")->NewItem(m_tree.Path());
    const ItemPtr l_file = l_addSaved("song.mp3");
    QSignalSpy l_scans(sharedFoldersManager, &SharedFoldersManager::MP3ScanRequired);
    Share(m_tree.Path());
    EXPECT_THAT(g("shared_file"), SizeIs(1));
    EXPECT_EQ(sharedFoldersManager->GetSharedFileItem(In("song.mp3")), l_file);
    EXPECT_THAT(l_scans, IsEmpty());

    // Twins and nameless files cannot come from a walk, only from a file that was edited or damaged.
    l_addSaved("song.mp3");
    l_addSaved(nullptr);
    EXPECT_THAT(Rescan(), Pair(0, 2));
    EXPECT_THAT(SharedPaths(), ElementsAre(In("song.mp3")));
}

TEST_F(SharesMirror, AsksForAScanOfUnscannedMP3Files) {
    for (const char* l_name : {"a.mp3", "b.MP3", "c.Mp3", "d.mp3.txt", "mp3", "x/\xc3\xa9.mp3"})
        m_tree.File(l_name);
    QSignalSpy l_spy(sharedFoldersManager, &SharedFoldersManager::MP3ScanRequired);
    Share(m_tree.Path());
    const auto l_asked = [&] {
        std::vector<std::string> l_paths;
        for (const QList<QVariant>& l_call : l_spy)
            l_paths.push_back(l_call[0].toString().toLatin1().toStdString());
        l_spy.clear();
        return l_paths;
    };
    EXPECT_THAT(l_asked(), UnorderedElementsAre(In("a.mp3"), In("b.MP3"), In("x/\xc3\xa9.mp3")));
    sharedFoldersManager->GetSharedFileItem(In("a.mp3")).NewItem("is_scanned");
    Rescan();
    EXPECT_THAT(l_asked(), UnorderedElementsAre(In("b.MP3"), In("x/\xc3\xa9.mp3")));
}

TEST_F(SharesMirror, ALongWalkTellsHowFarItIs) {
    for (const char* l_name : {"a", "b", "c.mp3", "sub/d", "sub/e"})
        m_tree.File(l_name);
    Share(m_tree.Path());
    const auto l_slow =
        QObject::connect(sharedFoldersManager, &SharedFoldersManager::MP3ScanRequired, [] { QThread::msleep(110); });
    QSignalSpy l_spy(sharedFoldersManager, &SharedFoldersManager::WalkProgressed);
    Rescan();
    QObject::disconnect(l_slow);
    ASSERT_FALSE(l_spy.isEmpty());
    EXPECT_EQ(l_spy[0][0].toInt(), 3);
}

TEST_F(SharesMirror, LoopsOfLinksEndAndNamesOfAnyBytesAreShared) {
    m_tree.File("a/b/\xff\xfe name");
    m_tree.File("a/b/line\nend");
    m_tree.Link("a/b/up", "..");
    m_tree.Link("a/b/top", "../..");
    Share(m_tree.Path());
    EXPECT_THAT(SharedPaths(), ElementsAre(In("a/b/line\nend"), In("a/b/\xff\xfe name")));
    EXPECT_THAT(Rescan(), Pair(0, 0));
}

} // namespace
