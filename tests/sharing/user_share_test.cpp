#include "app/text.h"
#include "peer/inflate.h"
#include "peer/share_list.h"
#include "sharing/asking_peer.h"
#include "sharing/sharing_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FileInfo File(const char* ip_name, long long i_size, std::vector<std::pair<int, int>> i_attributes = {}) {
    FileInfo l_file;
    l_file.name = ip_name;
    l_file.size = i_size;
    l_file.attributes.attributes = std::move(i_attributes);
    return l_file;
}

class UserShare : public SharingTest {
protected:
    static ItemPtr ShareOf(const std::string& i_user) { return d.GetType("user")->HasItem(i_user)["user_share"]; }
    static bool IsLoaded(const std::string& i_user) { return ShareOf(i_user)["user_share_loaded"].Get() != nullptr; }

    static void Take(const std::string& i_user, FileInfoMap i_folders) {
        AttributeTranslationTable l_names;
        Q_EMIT peerMessenger->UserShare(i_user, i_folders, l_names);
    }

    static ItemPtr Folder(const std::string& i_user, const std::string& i_path) {
        for (Item* lp_folder : ShareOf(i_user).GetItems("user_share_folder"))
            if (lp_folder->HasItem("user_share_folder_name").AsView() == i_path)
                return lp_folder;
        return ItemPtr();
    }

    static ItemPtr ParentOf(ItemPtr i_folder) {
        return i_folder["user_share_folder_parent"]["user_share_folder_child"]["user_share_folder"];
    }

    // Name, size and display text of each file, sorted.
    static std::vector<std::string> FilesOf(ItemPtr i_folder) {
        std::vector<std::string> l_files;
        for (Item* lp_file : i_folder.GetItems("user_share_file"))
            l_files.push_back(lp_file->HasItem("user_share_file_name").AsString() + "|" +
                              lp_file->HasItem("user_share_file_size").AsString() + "|" +
                              ToUtf8(sharedFoldersManager->GetFileItemDisplayString(lp_file)));
        std::sort(l_files.begin(), l_files.end());
        return l_files;
    }
};

TEST_F(UserShare, BecomesATreeOfFoldersWithTheirFiles) {
    Take("anna",
         {{"music", {}},
          {"music\\jazz",
           {File("a.mp3", 1LL << 40, {{0, 192}, {2, 0}, {1, 245}, {9, 9}}), File("b.mp3", 2, {{2, 7}, {0, 130}})}},
          {"music\\rock\\old", {File("c.ogg", 3, {{1, 245}}), File("d\xff.txt", 4)}}});
    EXPECT_FALSE(IsLoaded("anna")) << "listeners wait for the marker";
    Take("bert", {{"music", {}}, {"music\\jazz", {}}});
    ASSERT_TRUE(Until([] { return IsLoaded("anna") && IsLoaded("bert"); }));

    EXPECT_EQ(ShareOf("anna").GetItems("user_share_folder").size(), 3U);
    EXPECT_EQ(ParentOf(Folder("anna", "music\\jazz")), Folder("anna", "music")) << "and not the one in bert's list";
    EXPECT_EQ(ParentOf(Folder("bert", "music\\jazz")), Folder("bert", "music"));
    EXPECT_FALSE(ParentOf(Folder("anna", "music\\rock\\old"))) << "the level between is not in the list";
    EXPECT_THAT(FilesOf(Folder("anna", "music\\jazz")),
                ElementsAre("a.mp3|1099511627776|192 CBR, 4m5s", "b.mp3|2|130 VBR"));
    EXPECT_THAT(FilesOf(Folder("anna", "music\\rock\\old")), ElementsAre("c.ogg|3|, 4m5s", "d\xff.txt|4|"));
    EXPECT_EQ(ParentOf(Folder("anna", "music")), Folder("anna", "music")) << "a path of one part is above itself";
}

TEST_F(UserShare, ANewerListReplacesTheOneBeforeFinishedOrNot) {
    FileInfoMap l_large;
    for (int l_file = 0; l_file < 20'000; ++l_file)
        l_large["old"].insert(File(std::to_string(l_file).c_str(), l_file));
    Take("anna", l_large);
    QCoreApplication::processEvents();
    ASSERT_TRUE(ShareOf("anna"));
    EXPECT_FALSE(IsLoaded("anna")) << "it takes more than one slice";
    Take("anna", {{"new", {File("n", 1)}}});
    EXPECT_EQ(g("user_share").size(), 1U);
    ASSERT_TRUE(Until([] { return IsLoaded("anna"); }));
    EXPECT_FALSE(Folder("anna", "old"));
    EXPECT_THAT(FilesOf(Folder("anna", "new")), ElementsAre("n|1|"));

    Take("anna", {});
    ASSERT_TRUE(Until([] { return IsLoaded("anna"); }));
    EXPECT_THAT(ShareOf("anna").GetItems("user_share_folder"), IsEmpty());

    Take("anna", l_large);
    ASSERT_TRUE(Until([] { return IsLoaded("anna"); }));
    Take("anna", {{"old", {File("1", 1)}}});
    EXPECT_GT(d.GetType("user_share_file")->CountItems(), 10'000U) << "too many to be taken out in one go";
    ASSERT_TRUE(Until([] { return IsLoaded("anna") && g("user_share").size() == 1; }));
    EXPECT_THAT(FilesOf(Folder("anna", "old")), ElementsAre("1|1|")) << "it shares its names with the other";
    for (const char* lp_type : {"user_share_folder", "user_share_folder_child", "user_share_file",
                                "user_share_file_name", "user_share_file_size"})
        EXPECT_EQ(d.GetType(lp_type)->CountItems(), 1U) << lp_type;

    Take("anna", l_large);
    QCoreApplication::processEvents();
    sharedFoldersManager->RemoveUserShare(ShareOf("anna")); // as when its page is closed
    Take("bert", {{"b", {}}});
    ASSERT_TRUE(Until([] { return IsLoaded("bert"); }));
    EXPECT_FALSE(ShareOf("anna"));
}

TEST_F(UserShare, ComesOverAConnectionAndABrokenOneLeavesTheOldInPlace) {
    AskingPeer l_anna("anna");
    l_anna.Say(PackMessage(5, EncodeShareList({{"m", {File("x", 1)}}})).value());
    ASSERT_TRUE(Until([] { return IsLoaded("anna"); }));
    const ItemPtr l_share = ShareOf("anna");
    MemStream l_broken;
    l_broken.Write(std::int32_t{5});
    l_broken.WriteBuffer("no zlib", 7);
    l_anna.Say(l_broken);
    AskingPeer l_bert("bert");
    l_bert.Say(PackMessage(5, EncodeShareList({})).value());
    ASSERT_TRUE(Until([] { return IsLoaded("bert"); }));
    EXPECT_EQ(ShareOf("anna"), l_share);
    ForgetPeers();
}

} // namespace
