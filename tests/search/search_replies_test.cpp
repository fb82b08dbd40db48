// Answers to searches, from the peer's connection to items.
#include "peer_network.h"

#include "peer/search_reply.h"
#include "search/search_replies.h"
#include "support/thread_time.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

FileInfo MakeFile(const std::string& i_name, long long i_size = 1) {
    FileInfo l_file;
    l_file.name = i_name;
    l_file.size = i_size;
    return l_file;
}

class SearchRepliesTest : public PeerNetworkTest {
protected:
    void SetUp() override {
        PeerNetworkTest::SetUp();
        peerMessenger->SetSearchReplyReceiver(&m_replies);
        QObject::connect(peerMessenger, &PeerMessenger::SearchResults, &m_context, [this](ItemPtr i_results) {
            EXPECT_TRUE(i_results.IsConnected("user"));
            m_arrived.push_back(i_results);
        });
    }
    void TearDown() override {
        g("search_results").Remove();
        g("search_result").Remove();
        PeerNetworkTest::TearDown();
    }

    static std::string PackedReply(const SearchReply& i_reply) { return Packed(BytesOf(EncodeSearchReply(i_reply))); }
    static SearchReply Reply(const std::string& i_user, unsigned int i_token, std::vector<FileInfo> i_files) {
        SearchReply l_reply;
        l_reply.user = i_user;
        l_reply.token = i_token;
        l_reply.files = std::move(i_files);
        return l_reply;
    }
    // True if results arrived; the connection stands either way.
    bool Answer(ScriptedPeer& io_peer, const std::string& i_packed) {
        const std::size_t l_before = m_arrived.size();
        bool l_isHandled = false;
        const auto l_mark =
            QObject::connect(peerMessenger, &PeerMessenger::UploadFailed, &m_context, [&] { l_isHandled = true; });
        io_peer.SendFrame(Int32(PM_FILE_SEARCH_RESULT) + i_packed);
        io_peer.Send(UploadFailure{"mark"});
        EXPECT_TRUE(WaitFor([&] { return l_isHandled; }));
        QObject::disconnect(l_mark);
        return m_arrived.size() > l_before;
    }
    // "folder|name|size|mode|rate|length" of each result.
    static std::vector<std::string> Files(ItemPtr i_results) {
        std::vector<std::string> l_files;
        for (Item* lp_result : i_results.GetItems("search_result")) {
            std::string l_text;
            for (const char* lp_type : {"search_result_file_folder", "search_result_file_name",
                                        "search_result_file_size", "bitrate_mode", "bitrate", "length_seconds"})
                l_text += ItemPtr(lp_result)[lp_type].AsString() + "|";
            l_files.push_back(l_text);
        }
        return l_files;
    }

    SearchReplies m_replies;
    std::vector<ItemPtr> m_arrived;
};

TEST_F(SearchRepliesTest, AnAnswerBecomesItems) {
    const unsigned int l_token = gp_server->FileSearch("some words", false);
    const auto l_peer = ScriptedPeer::Introduced("r1");
    SearchReply l_reply = Reply("r1", l_token, {MakeFile("music\\old\\a.mp3", 5'000'000'000), MakeFile("bare", -1)});
    l_reply.files[0].attributes.attributes = {{0, 128}, {1, 200}, {2, 0}, {9, 9}, {0, 192}, {2, 7}};
    l_reply.files[1].attributes.attributes = {{2, 0}};
    l_reply.isFree = true;
    l_reply.speed = 0xFFFFFFFF;
    l_reply.uploadsInQueue = 3;
    ASSERT_TRUE(Answer(*l_peer, PackedReply(l_reply)));
    const ItemPtr l_results = m_arrived[0];
    EXPECT_THAT(Files(l_results),
                UnorderedElementsAre("music\\old|a.mp3|5000000000|vbr|192|200|", "bare|bare|-1|cbr|||"));
    EXPECT_EQ(l_results["search_request"].AsUInt(), l_token);
    EXPECT_EQ(l_results["user"].AsView(), "r1");
    EXPECT_EQ(l_results["search_results_user_available"].AsView(), "yes");
    EXPECT_EQ(l_results["search_results_user_speed"].AsView(), "4294967295");
    EXPECT_EQ(l_results["search_results_uploads_in_queue"].AsView(), "3");

    // The request's end takes all of it, as the closing of a tab does.
    l_results["search_request"].Remove();
    d.RemoveDisconnectedItems();
    EXPECT_TRUE(g("search_results").empty());
    EXPECT_TRUE(g("search_result").empty());
    EXPECT_FALSE(Answer(*l_peer, PackedReply(l_reply)));
}

TEST_F(SearchRepliesTest, AFileOfAUserShowsOnceInTheProgramAndOthersSeeTheirs) {
    const unsigned int l_first = gp_server->FileSearch("one", false);
    const unsigned int l_second = gp_server->FileSearch("two", false);
    const auto l_anna = ScriptedPeer::Introduced("r2 anna");
    const auto l_ben = ScriptedPeer::Introduced("r2 ben");
    ASSERT_TRUE(Answer(*l_anna, PackedReply(Reply("r2 anna", l_first, {MakeFile("f\\a"), MakeFile("f\\b")}))));
    const std::size_t l_count = g("search_results").size();
    EXPECT_FALSE(Answer(*l_anna, PackedReply(Reply("r2 anna", l_second, {MakeFile("f\\b"), MakeFile("f\\a", 9)}))));
    EXPECT_EQ(g("search_results").size(), l_count);

    ASSERT_TRUE(Answer(
        *l_anna, PackedReply(Reply("r2 anna", l_second, {MakeFile("f\\a"), MakeFile("g\\a"), MakeFile("f\\c")}))));
    EXPECT_THAT(Files(m_arrived[1]), UnorderedElementsAre("g|a|1||||", "f|c|1||||"));
    ASSERT_TRUE(Answer(*l_ben, PackedReply(Reply("r2 ben", l_second, {MakeFile("f\\a"), MakeFile("f\\a")}))));
    EXPECT_THAT(Files(m_arrived[2]), ElementsAre("f|a|1||||", "f|a|1||||")); // repeats inside one answer stay

    ItemPtr(i("search_request", l_first)).Remove();
    d.RemoveDisconnectedItems();
    EXPECT_TRUE(Answer(*l_anna, PackedReply(Reply("r2 anna", l_second, {MakeFile("f\\a")}))));
}

TEST_F(SearchRepliesTest, WhatIsMissingBehindTheFilesCountsAsNothing) {
    const unsigned int l_token = gp_server->FileSearch("cut", false);
    const auto l_peer = ScriptedPeer::Introduced("r3");
    SearchReply l_reply = Reply("r3", l_token, {MakeFile("f\\a")});
    l_reply.isFree = true;
    l_reply.speed = 5;
    l_reply.uploadsInQueue = 6;
    const std::string l_body = BytesOf(EncodeSearchReply(l_reply));
    const std::size_t l_ofFiles = l_body.size() - 1 - 3 * 4;
    for (std::size_t l_length = l_ofFiles; l_length < l_body.size(); ++l_length) {
        ASSERT_TRUE(Answer(*l_peer, Packed(l_body.substr(0, l_length)))) << l_length;
        const ItemPtr l_results = m_arrived.back();
        EXPECT_EQ(l_results["search_results_user_available"].AsView(), l_length > l_ofFiles ? "yes" : "no");
        EXPECT_EQ(l_results["search_results_user_speed"].AsView(), l_length >= l_ofFiles + 5 ? "5" : "0");
        EXPECT_EQ(l_results["search_results_uploads_in_queue"].AsView(), l_length >= l_ofFiles + 9 ? "6" : "0");
        l_results.Remove();
        g("search_result").Remove();
    }
}

TEST_F(SearchRepliesTest, AWrongNameOrABrokenRecordEndsTheConnectionAndStoresNothing) {
    const unsigned int l_token = gp_server->FileSearch("bad", false);
    const std::string l_body = BytesOf(EncodeSearchReply(Reply("r4", l_token, {MakeFile("f\\a"), MakeFile("f\\b")})));
    const std::string l_bad[] = {
        PackedReply(Reply("another", l_token, {MakeFile("f\\a")})),
        Packed(l_body.substr(0, 7)),  // no token
        Packed(l_body.substr(0, 60)), // the second record cut
        Packed(Text("r4") + Int32(l_token) + Int32(0x20001)),
        PackedReply(Reply("r4", l_token, {MakeFile("f\\a")})).substr(0, 20),
        PackedBomb(l_body, limits::inflatedSearchReply),
        "not packed at all",
    };
    for (const std::string& l_packed : l_bad) {
        const auto l_peer = ScriptedPeer::Introduced("r4");
        l_peer->SendFrame(Int32(PM_FILE_SEARCH_RESULT) + l_packed);
        EXPECT_TRUE(WaitFor([&] { return l_peer->IsClosed(); })) << l_packed.size();
    }
    EXPECT_THAT(m_arrived, IsEmpty());
    EXPECT_TRUE(g("search_results").empty());
    // A search that is not asked for costs the answer nothing but itself, however it goes on.
    const auto l_peer = ScriptedPeer::Introduced("r4");
    EXPECT_FALSE(Answer(*l_peer, Packed(Text("r4") + Int32(l_token + 1000) + Int32(0x20001))));
    EXPECT_FALSE(g("search_request").contains(d.GetType("search_request")->HasItem(l_token + 1000)));
}

TEST_F(SearchRepliesTest, TheSameNameOverAndOverTakesNoLongerThanOthers) {
    const unsigned int l_token = gp_server->FileSearch("flood", false);
    constexpr int l_files = 8'000;
    const Data::Operation l_operation(d); // the graph is checked once, at the end
    for (const char* lp_user : {"r5 one", "r5 two", "r5 two"}) {
        SearchReply l_reply = Reply(lp_user, l_token, std::vector<FileInfo>(l_files, MakeFile("same\\name")));
        l_reply.files.push_back(MakeFile(lp_user + std::to_string(m_arrived.size())));
        const ThreadTime l_work;
        const ItemPtr l_results = m_replies.TakeSearchReply(d.GetType("search_request")->HasItem(l_token), l_reply);
        EXPECT_LT(l_work.Milliseconds(), 3000); // were each compared with each: far longer
        ASSERT_TRUE(l_results);
        m_arrived.push_back(l_results);
    }
    EXPECT_EQ(m_arrived[1].CountItems("search_result"), l_files + 1U);
    EXPECT_EQ(m_arrived[2].CountItems("search_result"), 1U);
}

} // namespace
