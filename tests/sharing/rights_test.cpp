#include "sharing/sharing_fixture.h"

namespace {

class Rights : public SharingTest {
protected:
    // One folder of each form, each with the file "x".
    Rights() {
        for (const char* l_folder : {"public", "userlist", "group", "nobody"}) {
            m_tree.File(std::string(l_folder) + "/x");
            Share(m_tree.Path(l_folder));
        }
        Root("public").NewItem("shared_public");
        Root("userlist").NewItem("shared_userlist");
        Root("group").Connect(d.GetType("user_list_group")->GetItem("friends"));
        Root("group").Connect(d.GetType("user_list_group")->GetItem("family"));
        ItemPtr(d.GetType("user")->GetItem("listed")).NewItem("in_user_list");
        AddTo("member", "friends");
        AddTo("outsider", "strangers");
    }

    ItemPtr Root(const std::string& i_folder) const {
        return d.GetType("shared_folder")->HasItem(m_tree.Path(i_folder));
    }

    static void AddTo(const std::string& i_user, const std::string& i_group) {
        ItemPtr l_user = d.GetType("user")->GetItem(i_user);
        l_user.NewItem("in_user_list").Connect(d.GetType("user_list_group")->GetItem(i_group));
    }

    // What the user sees, told alike by the roots and by the files: "p", "u", "g", "n" for the four forms.
    std::string Seen(const std::string& i_user) const {
        const ItemSet l_roots = sharedFoldersManager->GetUserSharedFolders(i_user);
        std::string l_byRoots;
        std::string l_byFiles;
        for (const char* l_folder : {"public", "userlist", "group", "nobody"}) {
            const ItemPtr l_file = sharedFoldersManager->GetSharedFileItem(m_tree.Path(l_folder) + "/x");
            if (l_roots.contains(Root(l_folder).Get()))
                l_byRoots += l_folder[0];
            if (sharedFoldersManager->IsFileSharedWithUser(l_file, i_user))
                l_byFiles += l_folder[0];
        }
        return l_byRoots == l_byFiles ? l_byRoots : l_byRoots + " by roots, by files " + l_byFiles;
    }

    TempTree m_tree;
};

TEST_F(Rights, FollowTheFormOfTheFolderAndThePlaceOfTheUser) {
    EXPECT_EQ(Seen("anyone"), "p");
    EXPECT_EQ(Seen("listed"), "pu");
    EXPECT_EQ(Seen("member"), "pug");
    EXPECT_EQ(Seen("outsider"), "pu");
    AddTo("outsider", "family");
    EXPECT_EQ(Seen("outsider"), "pug");
}

TEST_F(Rights, AnUnsharedUserSeesNothing) {
    for (const char* l_user : {"anyone", "member"}) {
        ItemPtr l_item = d.GetType("user")->GetItem(l_user);
        l_item.NewItem("unshared");
        EXPECT_EQ(Seen(l_user), "") << l_user;
        l_item.Disconnect("unshared");
    }
    EXPECT_EQ(Seen("member"), "pug");
}

TEST_F(Rights, OneOpenRootIsEnough) {
    Share(m_tree.Path());
    Root("").NewItem("shared_public");
    for (const char* l_folder : {"userlist", "group", "nobody"}) {
        const ItemPtr l_file = sharedFoldersManager->GetSharedFileItem(m_tree.Path(l_folder) + "/x");
        EXPECT_TRUE(sharedFoldersManager->IsFileSharedWithUser(l_file, "anyone")) << l_folder;
    }
}

TEST_F(Rights, AFileThatNoRootReachesIsNobodys) {
    const ItemPtr l_file = sharedFoldersManager->GetSharedFileItem(m_tree.Path("public/x"));
    Root("public").Remove();
    EXPECT_FALSE(sharedFoldersManager->IsFileSharedWithUser(l_file, "member"));
}

class SharedFileByPath : public SharingTest {
protected:
    TempTree m_tree;

    std::string Found(const std::string& i_path) const {
        const ItemPtr l_file = sharedFoldersManager->GetSharedFileItem(i_path);
        return l_file ? l_file.HasItem("shared_file_folder").AsString().substr(m_tree.Path().size()) + "/" +
                            l_file.HasItem("shared_file_name").AsString()
                      : "nothing";
    }
};

TEST_F(SharedFileByPath, TakesAnyCaseAndAnySeparator) {
    m_tree.File("Music/Song.TXT");
    m_tree.File("Other/Song.TXT");
    m_tree.File("Music/\xc3\x84.txt");
    Share(m_tree.Path());
    const std::string l_root = m_tree.Path();
    EXPECT_EQ(Found(l_root + "/Music/Song.TXT"), "/Music/Song.TXT");
    EXPECT_EQ(Found(l_root + "/mUSIC/sONG.txt"), "/Music/Song.TXT");
    EXPECT_EQ(Found(l_root + "//Music/Song.TXT/"), "/Music/Song.TXT");
    EXPECT_EQ(Found(l_root + "/Music\\Song.TXT"), "/Music/Song.TXT");
    EXPECT_EQ(Found(l_root + "/Music/\xc3\x84.TXT"), "/Music/\xc3\x84.txt");
    EXPECT_EQ(Found(l_root + "/Music/\xc3\xa4.txt"), "nothing") << "only ASCII letters are alike in both cases";
    for (const char* l_path : {"", "/", "\\", "Song.TXT", "Music/Song.TXT"})
        EXPECT_EQ(Found(l_path), "nothing") << l_path;
    EXPECT_EQ(Found(l_root + "/Music"), "nothing") << "a folder is no file";
    EXPECT_EQ(Found(l_root + "/Music/../Other/Song.TXT"), "nothing");
}

TEST_F(SharedFileByPath, TellsNamesThatDifferInCaseOnlyAsOne) {
    m_tree.File("a/readme");
    m_tree.File("a/README");
    Share(m_tree.Path());
    EXPECT_THAT(Found(m_tree.Path("a/ReadMe")), testing::AnyOf("/a/readme", "/a/README"));
}

} // namespace
