#include "peer/inflate.h"
#include "peer/share_list.h"
#include "sharing/asking_peer.h"
#include "sharing/sharing_fixture.h"

#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// Folder without the tree's own path, and its files.
using Listed = std::vector<std::pair<std::string, std::vector<std::string>>>;

class ShareLists : public SharingTest {
protected:
    ShareLists() {
        m_tree.File("open/a.txt", 3);
        m_tree.File("open/sub/b.mp3", 4);
        m_tree.File("closed/c.txt", 5);
        Share(m_tree.Path("open"))->NewItem("shared_public");
        Share(m_tree.Path("closed"))->NewItem("shared_userlist");
        ItemPtr(d.GetType("user")->GetItem("friend")).NewItem("in_user_list");
        const ItemPtr l_banned = d.GetType("user")->GetItem("banned");
        l_banned.NewItem("in_user_list");
        l_banned.NewItem("unshared");
    }
    ~ShareLists() override { ForgetPeers(); }

    std::string Backslashed(const std::string& i_folder) const {
        std::string l_path = m_tree.Path(i_folder);
        std::replace(l_path.begin(), l_path.end(), '/', '\\');
        return l_path;
    }

    // The plain body of a message; the stream holds it and nothing else.
    static std::string Plain(const std::string& i_message) {
        InflateStream l_inflated(std::string_view(i_message).substr(4), limits::inflatedShare);
        std::string l_body;
        for (char l_byte = 0; l_inflated.ReadBuffer(&l_byte, 1);)
            l_body.push_back(l_byte);
        EXPECT_TRUE(l_inflated.Finish());
        return l_body;
    }

    static std::optional<ShareList> ListIn(const std::string& i_message) {
        EXPECT_EQ(i_message.substr(0, 4), std::string("\x05\0\0\0", 4));
        const auto l_list = UnpackShareList(std::string_view(i_message).substr(4));
        EXPECT_TRUE(l_list);
        if (l_list) {
            EXPECT_EQ(Plain(i_message), EncodeShareList(l_list->folders).GetWritten()) << "the body to the last byte";
        }
        return l_list;
    }

    Listed ListFor(const std::string& i_user) {
        AskingPeer l_peer(i_user);
        l_peer.Ask(ShareListRequest());
        Listed l_listed;
        const auto l_list = ListIn(l_peer.Next());
        for (const auto& [l_path, l_files] : l_list.value_or(ShareList()).folders) {
            EXPECT_THAT(l_path, testing::StartsWith(Backslashed("")));
            l_listed.emplace_back(l_path.substr(m_tree.Path().size()), std::vector<std::string>());
            for (const FileInfo& l_file : l_files)
                l_listed.back().second.push_back(l_file.name);
        }
        return l_listed;
    }

    TempTree m_tree;
};

TEST_F(ShareLists, TellWhatTheAskerMaySee) {
    m_tree.Folder("open/empty");
    Rescan();
    EXPECT_THAT(ListFor("anyone"), ElementsAre(Pair("\\open", ElementsAre("a.txt")), Pair("\\open\\empty", IsEmpty()),
                                               Pair("\\open\\sub", ElementsAre("b.mp3"))));
    EXPECT_EQ(ListFor("friend").front(), std::pair("\\closed" + std::string(), std::vector<std::string>{"c.txt"}));
    EXPECT_EQ(ListFor("friend").size(), 4U);
    EXPECT_THAT(ListFor("banned"), IsEmpty()) << "a sound list of no folders, not silence";
}

TEST_F(ShareLists, CarrySizesAttributesAndTheBytesOfNames) {
    m_tree.File("open/b\xe4r.MP3", 9);
    m_tree.File("open/cut\\tail", 2);
    Rescan();
    const ItemPtr l_scanned = sharedFoldersManager->GetSharedFileItem(m_tree.Path("open/b\xe4r.MP3"));
    l_scanned.Connect(d.GetType("bitrate")->GetItem(320));
    l_scanned.Connect(d.GetType("bitrate_mode")->GetItem("cbr"));
    AskingPeer l_peer("anyone");
    l_peer.Ask(ShareListRequest());
    const auto l_list = ListIn(l_peer.Next());
    ASSERT_TRUE(l_list);
    const std::vector<FileInfo> l_files(l_list->folders.at(Backslashed("open")).begin(),
                                        l_list->folders.at(Backslashed("open")).end());
    ASSERT_EQ(l_files.size(), 3U);
    EXPECT_EQ(l_files[0].attributes, AttributeMap());
    EXPECT_EQ(l_files[1].name, "b\xe4r.MP3");
    EXPECT_EQ(l_files[1].size, 9);
    EXPECT_EQ(l_files[1].attributes.extension, "mp3");
    EXPECT_THAT(l_files[1].attributes.attributes, ElementsAre(Pair(0, 320), Pair(2, 0)));
    EXPECT_EQ(l_files[2].name, "tail");
    EXPECT_EQ(l_list->folders.at(Backslashed("open\\sub")).begin()->attributes.extension, "mp3")
        << "also for a file that has not been scanned";
}

TEST_F(ShareLists, AskersOfEqualRightsAtOnceShareOneRun) {
    std::vector<const char*> l_answered;
    std::vector<MemStream> l_messages;
    const auto l_ask = [&](const char* ip_user) {
        sharedFoldersManager->GetSharedFilesMessage(ip_user, [&, ip_user](const std::optional<MemStream>& i_message) {
            l_answered.push_back(ip_user);
            l_messages.push_back(i_message.value());
        });
    };
    for (const char* l_user : {"anyone", "friend", "stranger"})
        l_ask(l_user);
    ASSERT_TRUE(Until([&] { return l_answered.size() == 3; }));
    EXPECT_THAT(l_answered,
                ElementsAre(testing::StrEq("anyone"), testing::StrEq("stranger"), testing::StrEq("friend")));
    EXPECT_EQ(l_messages[0].GetReadBuffer(), l_messages[1].GetReadBuffer()) << "the very same message";
    EXPECT_NE(l_messages[0].GetReadBuffer(), l_messages[2].GetReadBuffer());
}

TEST_F(ShareLists, WhatGoesWhileAListIsMadeDoesNotHarm) {
    bool l_isAnswered = false;
    sharedFoldersManager->GetSharedFilesMessage(
        "anyone", [&](const std::optional<MemStream>& i_message) { l_isAnswered = i_message.has_value(); });
    sharedFoldersManager->UnshareFolder(m_tree.Path("open"));
    ASSERT_TRUE(Until([&] { return l_isAnswered; }));
    EXPECT_THAT(ListFor("anyone"), IsEmpty());

    AskingPeer l_gone("friend");
    l_gone.Ask(ShareListRequest());
    l_gone.Close();
    EXPECT_THAT(ListFor("other"), IsEmpty()) << "the next one is served";
}

TEST_F(ShareLists, TheFilesOfOneFolderGoOutToThoseWhoMaySeeIt) {
    const std::string l_name = Backslashed("open\\sub");
    AskingPeer l_friend("friend");
    l_friend.Ask(FolderRequest{7, l_name});
    const std::string l_message = l_friend.Next();
    EXPECT_EQ(l_message.substr(0, 4), std::string("\x25\0\0\0", 4));
    FolderReply l_expected{7, l_name, {}};
    FileInfo l_file;
    l_file.name = "b.mp3";
    l_file.size = 4;
    l_expected.files.files = {l_file};
    EXPECT_EQ(Plain(l_message), EncodeFolderReply(l_expected).GetWritten()) << "no extension, no attributes";

    // Silence for the first three; the name with slashes is another name for the same.
    AskingPeer l_other("anyone");
    AskingPeer l_banned("banned");
    l_other.Ask(FolderRequest{1, Backslashed("closed")});
    l_other.Ask(FolderRequest{2, Backslashed("open\\none")});
    l_banned.Ask(FolderRequest{3, l_name});
    l_other.Ask(FolderRequest{4, m_tree.Path("open/sub")});
    EXPECT_EQ(Plain(l_other.Next()).substr(0, 4), std::string("\x04\0\0\0", 4));
    EXPECT_FALSE(l_banned.Read());
}

TEST(ShareListBuilding, TheBuilderCanGoWhileItsWorkerIsBusy) {
    BackgroundWorker::Finish l_never = [] { ADD_FAILURE() << "finished after its owner"; };
    std::atomic<bool> l_isBusy = false;
    {
        BackgroundWorker l_worker("busy");
        l_worker.Do([&](const std::atomic<bool>& i_stop) {
            l_isBusy = true;
            while (!i_stop)
                std::this_thread::yield();
            return l_never;
        });
        l_worker.Do([&](const std::atomic<bool>&) {
            ADD_FAILURE() << "started after the end";
            return l_never;
        });
        ASSERT_TRUE(Until([&] { return l_isBusy.load(); }));
    }
    QCoreApplication::processEvents();

    // Packing ends between two pieces of the body.
    std::atomic<bool> l_stop = true;
    EXPECT_FALSE(PackMessage(5, EncodeShareList({{"a", {}}}), &l_stop));
}

} // namespace
