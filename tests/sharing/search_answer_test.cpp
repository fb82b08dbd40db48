#include "app/text.h"
#include "peer/inflate.h"
#include "peer/search_reply.h"
#include "sharing/asking_peer.h"
#include "sharing/sharing_fixture.h"
#include "sharing/upload_slots.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class SearchIndex : public SharingTest {
protected:
    static std::vector<std::string> TokensOf(const std::string& i_path) {
        std::vector<std::string> l_tokens;
        for (Item* lp_token : sharedFoldersManager->GetSharedFileItem(i_path).GetItems("search_token"))
            l_tokens.push_back(lp_token->AsString());
        std::sort(l_tokens.begin(), l_tokens.end());
        return l_tokens;
    }

    TempTree m_tree;
};

TEST_F(SearchIndex, HoldsTheWordsOfThePathAndTheWordsWithTheirPunctuation) {
    m_tree.File("My Music/Song-Title \xc3\x84.MP3");
    Share(m_tree.Path());
    std::vector<std::string> l_expected = TokensOf(m_tree.Path("My Music/Song-Title \xc3\x84.MP3"));
    for (const char* l_token : {"my", "music", "song", "title", "song-title", "\xc3\x84", "\xc3\x84.mp3", "mp3"})
        EXPECT_THAT(l_expected, testing::Contains(l_token));
    const std::string l_tempName = GetAbsoluteFileName(m_tree.Path().substr(m_tree.Path().rfind('/') + 1));
    EXPECT_THAT(l_expected, testing::Contains(l_tempName)) << "the whole path counts, from the root of the disk on";
}

TEST_F(SearchIndex, FollowsTheWalksAndForgetsWhatIsGone) {
    m_tree.File("leaver.txt");
    m_tree.File("stayer.txt");
    Share(m_tree.Path());
    const std::vector<std::string> l_before = TokensOf(m_tree.Path("stayer.txt"));
    m_tree.Remove("leaver.txt");
    m_tree.File("comer.txt");
    Rescan();
    EXPECT_FALSE(d.GetType("search_token")->HasItem("leaver"));
    EXPECT_EQ(TokensOf(m_tree.Path("stayer.txt")), l_before);
    EXPECT_THAT(TokensOf(m_tree.Path("comer.txt")), testing::Contains("comer.txt"));
}

class SlotsOfTheTest : public UploadSlots {
public:
    bool IsFreeToUpload() override { return true; }
    int QueuedUploadCount() override { return 17; }
};

class SearchAnswer : public SharingTest {
protected:
    SearchAnswer() { SetSetting("username", "me"); }
    ~SearchAnswer() override { ForgetPeers(); }

    void ShareAll() { Share(m_tree.Path())->NewItem("shared_public"); }

    // The bare names of the files that the reply to the user's search lists; empty for no reply.
    static std::vector<std::string> Found(const std::string& i_text, const std::string& i_user = "asker") {
        std::vector<std::string> l_names;
        const auto l_reply = Answer(i_text, i_user);
        if (l_reply) {
            EXPECT_FALSE(l_reply->files.empty());
            for (const FileInfo& l_file : l_reply->files)
                l_names.push_back(GetFileName(l_file.name));
        }
        return l_names;
    }

    // The message waits for a connection that never comes: what waits is what would be sent.
    static std::optional<SearchReply> Answer(const std::string& i_text, const std::string& i_user = "asker") {
        g("unsent_message").Remove();
        sharedFoldersManager->OnDNetSearchRequest(i_user, 42, i_text);
        const ItemSet l_waiting = g("unsent_message");
        if (l_waiting.empty())
            return std::nullopt;
        return Unpack(*ItemPtr(l_waiting).AsPointer<MemStream>());
    }

    static std::optional<SearchReply> Unpack(const MemStream& i_message) {
        EXPECT_EQ(PeekMessageCode(i_message), PM_FILE_SEARCH_RESULT);
        InflateStream l_plain(i_message.GetWritten().substr(4), limits::inflatedSearchReply);
        SearchReply l_reply;
        EXPECT_TRUE(DecodeSearchReplyHead(l_plain, l_reply) && DecodeSearchReplyRest(l_plain, l_reply));
        std::uint8_t l_more = 0;
        EXPECT_FALSE(l_plain.Read(l_more)) << "nothing follows the body";
        EXPECT_TRUE(l_plain.Finish());
        return l_reply;
    }

    TempTree m_tree;
    SlotsOfTheTest m_slots;
};

TEST_F(SearchAnswer, TellsWholePathsSizesAttributesAndTheStateOfTheQueue) {
    m_tree.File("Live/b song.MP3", 7);
    m_tree.File("Live/a song.Mp3", 8);
    m_tree.File("Live/song.ogg", 9);
    ShareAll();
    const ItemPtr l_scanned = sharedFoldersManager->GetSharedFileItem(m_tree.Path("Live/b song.MP3"));
    l_scanned.Connect(d.GetType("bitrate")->GetItem(192));
    l_scanned.Connect(d.GetType("bitrate_mode")->GetItem("vbr"));
    SetSetting("upload_speed", 123456);
    sharedFoldersManager->SetUploadSlots(&m_slots);
    const auto l_reply = Answer("song");
    sharedFoldersManager->SetUploadSlots(nullptr);

    ASSERT_TRUE(l_reply);
    EXPECT_EQ(l_reply->user, "me");
    EXPECT_EQ(l_reply->token, 42U);
    EXPECT_TRUE(l_reply->isFree);
    EXPECT_EQ(l_reply->speed, 123456U);
    EXPECT_EQ(l_reply->uploadsInQueue, 17U);
    EXPECT_THAT(l_reply->attributeNames, IsEmpty());
    std::string l_folder = m_tree.Path("Live");
    std::replace(l_folder.begin(), l_folder.end(), '/', '\\');
    ASSERT_EQ(l_reply->files.size(), 3U);
    EXPECT_EQ(l_reply->files[0].name, l_folder + "\\a song.Mp3");
    EXPECT_EQ(l_reply->files[0].attributes.extension, "mp3");
    EXPECT_THAT(l_reply->files[0].attributes.attributes, IsEmpty());
    EXPECT_EQ(l_reply->files[1].name, l_folder + "\\b song.MP3");
    EXPECT_EQ(l_reply->files[1].size, 7);
    EXPECT_THAT(l_reply->files[1].attributes.attributes, ElementsAre(std::pair(0, 192), std::pair(2, 1)));
    EXPECT_EQ(l_reply->files[2].attributes.extension, "");
}

TEST_F(SearchAnswer, GoesOutOnTheConnectionToTheAsker) {
    m_tree.File("song");
    ShareAll();
    AskingPeer l_peer("asker");
    sharedFoldersManager->ProcessSearch("asker", 1, "song");
    const std::string l_frame = l_peer.Next();
    MemStream l_message;
    l_message.WriteBuffer(l_frame.data(), l_frame.size());
    EXPECT_EQ(Unpack(l_message)->files.size(), 1U);
}

TEST_F(SearchAnswer, TakesWordsPartsAndExclusionsByTheirRules) {
    m_tree.File("live/jazz one.txt");
    m_tree.File("studio/jazz two live.txt");
    m_tree.File("studio/Big Jazz.txt");
    m_tree.File("studio/rock-jazz.txt");
    ShareAll();
    EXPECT_THAT(Found("jazz"),
                UnorderedElementsAre("jazz one.txt", "jazz two live.txt", "Big Jazz.txt", "rock-jazz.txt"));
    EXPECT_THAT(Found("jazz -live"), UnorderedElementsAre("jazz one.txt", "Big Jazz.txt", "rock-jazz.txt"))
        << "a folder's name does not exclude";
    EXPECT_THAT(Found("live jazz"), UnorderedElementsAre("jazz one.txt", "jazz two live.txt"));
    EXPECT_THAT(Found("jazz *\"z t\""), ElementsAre("jazz two live.txt"));
    EXPECT_THAT(Found("jazz *Jazz"), ElementsAre("Big Jazz.txt")) << "parts heed the case";
    EXPECT_THAT(Found("jazz -ja -Ja"), IsEmpty());
    EXPECT_THAT(Found("rock-jazz.txt"), ElementsAre("rock-jazz.txt"));
    EXPECT_THAT(Found("txt\tone\t"), ElementsAre("jazz one.txt"));
    for (const char* l_text : {"Jazz", "-live", "*azz", "\"jazz one\"", "jazz -", "jazz *", "", "\"", "\"\"",
                               "jazz\"one", "jazz unheard", "jaz", "one two"})
        EXPECT_THAT(Found(l_text), IsEmpty()) << l_text;
}

TEST_F(SearchAnswer, Answers200MatchesAndNot201) {
    for (int l_file = 0; l_file < 200; ++l_file)
        m_tree.File("many" + std::to_string(l_file % 3) + "/word " + std::to_string(l_file));
    m_tree.File("one/word extra");
    ShareAll();
    EXPECT_EQ(Found("word").size(), 0U);
    EXPECT_EQ(Found("word -extra").size(), 200U);
    m_tree.Remove("one/word extra");
    Rescan();
    EXPECT_EQ(Found("word").size(), 200U);
}

TEST_F(SearchAnswer, CountsOnlyWhatTheAskerMayHave) {
    for (int l_file = 0; l_file < 201; ++l_file)
        m_tree.File("nobody/word " + std::to_string(l_file));
    for (const char* l_folder : {"nobody", "public", "userlist", "group"}) {
        m_tree.File(std::string(l_folder) + "/word of " + l_folder);
        Share(m_tree.Path(l_folder));
    }
    const auto l_root = [this](const char* ip_folder) {
        return ItemPtr(d.GetType("shared_folder")->HasItem(m_tree.Path(ip_folder)));
    };
    EXPECT_THAT(Found("word"), IsEmpty()) << "no root is open";
    l_root("userlist").NewItem("shared_userlist");
    l_root("group").Connect(d.GetType("user_list_group")->GetItem("friends"));
    ItemPtr(d.GetType("user")->GetItem("listed")).NewItem("in_user_list");
    const ItemPtr l_member = d.GetType("user")->GetItem("member");
    l_member.NewItem("in_user_list").Connect(d.GetType("user_list_group")->GetItem("friends"));
    EXPECT_THAT(Found("word"), IsEmpty()) << "nothing for strangers";
    l_root("public").NewItem("shared_public");

    EXPECT_THAT(Found("word"), ElementsAre("word of public"));
    EXPECT_THAT(Found("word", "listed"), UnorderedElementsAre("word of public", "word of userlist"));
    EXPECT_THAT(Found("word", "member"), UnorderedElementsAre("word of public", "word of userlist", "word of group"));
    l_member.NewItem("unshared");
    EXPECT_THAT(Found("word", "member"), IsEmpty());

    // Roots that come and go above files that have been asked for, in the midst of files that stay as they were.
    m_tree.File("nobody/inner/word of inner");
    Rescan();
    EXPECT_THAT(Found("word"), ElementsAre("word of public"));
    Share(m_tree.Path("nobody/inner"))->NewItem("shared_public");
    EXPECT_THAT(Found("word"), UnorderedElementsAre("word of inner", "word of public"));
    EXPECT_THAT(Found("word -inner"), ElementsAre("word of public"));
    Share(m_tree.Path())->NewItem("shared_public");
    EXPECT_THAT(Found("word"), IsEmpty()) << "too many by now";
    sharedFoldersManager->UnshareFolder(m_tree.Path());
    EXPECT_THAT(Found("word"), UnorderedElementsAre("word of inner", "word of public"));
    sharedFoldersManager->UnshareFolder(m_tree.Path("nobody/inner"));
    EXPECT_THAT(Found("word"), ElementsAre("word of public"));
}

TEST_F(SearchAnswer, NamesThatAreNotUtf8KeepTheirBytes) {
    m_tree.File("b\xe4r word");
    ShareAll();
    EXPECT_THAT(Found("b\xe4r"), ElementsAre("b\xe4r word"));
    EXPECT_THAT(Found("word *\xe4"), ElementsAre("b\xe4r word"));
}

TEST_F(SearchAnswer, ATextOfTensOfThousandsOfWordsEndsSoon) {
    for (int l_file = 0; l_file < 1000; ++l_file)
        m_tree.File("word " + std::to_string(l_file));
    m_tree.File("word needle");
    ShareAll();
    std::string l_text = "word";
    for (int l_word = 0; l_word < 15'000; ++l_word)
        l_text += " -x" + std::to_string(l_word);
    EXPECT_THAT(Found(l_text + " *needle"), IsEmpty());
    EXPECT_THAT(Found(l_text.substr(0, 100) + " *needle"), ElementsAre("word needle"));
}

} // namespace
