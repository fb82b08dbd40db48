// Candidates, adoption, what the parent says, and its loss.
#include "dnet_network.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ParentTest : public DNetTest {
protected:
    // The other messages of the parent have been handled when this search is heard.
    void Pass(ScriptedPeer& io_parent) {
        m_searches.clear();
        io_parent.SendFrame(SearchFrom("next"));
        EXPECT_TRUE(HearsSearchOf("next"));
    }
};

TEST_F(ParentTest, TheFirstCandidateToDeliverASearchIsAdopted) {
    const auto l_child = ConnectChild("p1 child");
    const auto l_slow = ConnectCandidate("p1 slow");
    const auto l_fast = ConnectCandidate("p1 fast");
    TheServer().Forget();
    l_slow->SendFrame(BytesOf(EncodeDNetLevel(9)));
    l_slow->SendFrame(BytesOf(EncodeDNetGroupLeader("wrong")));
    l_fast->SendFrame(BytesOf(EncodeDNetLevel(3)));
    l_fast->SendFrame(BytesOf(EncodeDNetLevel(-1))); // does not take back the 3
    l_fast->SendFrame(BytesOf(EncodeDNetGroupLeader("root")));
    LetThingsSettle();
    EXPECT_EQ(Entry("dnet_level"), "none");
    EXPECT_FALSE(TheServer().Has<to_server::DNetLevel>());
    l_fast->SendFrame(SearchFrom("asker"));

    ASSERT_TRUE(WaitFor([&] { return l_slow->IsClosed(); }));
    EXPECT_EQ(Entry("dnet_parent_user"), "p1 fast");
    EXPECT_EQ(Entry("dnet_level"), "4");
    EXPECT_EQ(Entry("dnet_group_leader"), "root");
    EXPECT_TRUE(g("dnet_parent_candidate").empty());
    EXPECT_EQ(TakeFromServer<to_server::DNetLevel>().level, 4);
    EXPECT_EQ(TakeFromServer<to_server::DNetGroupLeader>().user, "root");
    EXPECT_FALSE(TakeFromServer<to_server::DNetNoParent>().hasNoParent);
    ASSERT_TRUE(WaitFor([&] { return l_child->Frames().size() == 3; }));
    EXPECT_THAT(l_child->Frames(),
                ElementsAre(BytesOf(EncodeDNetLevel(4)), BytesOf(EncodeDNetGroupLeader("root")), SearchFrom("asker")));
    EXPECT_THAT(m_searches, ElementsAre("asker 7 some words"));
    EXPECT_TRUE(HasLine("1 Received first search request from parent candidate p1 fast, adopting as parent."));
    EXPECT_TRUE(HasLine("2 Level recorded as 4."));
    EXPECT_FALSE(l_fast->IsClosed());
}

TEST_F(ParentTest, ASilentCandidateLeavesNoLevelAndAnEmptyLeader) {
    const auto l_parent = ConnectCandidate("p2");
    TheServer().Forget();
    l_parent->SendFrame(SearchFrom("asker"));
    ASSERT_TRUE(HearsSearchOf("asker"));
    EXPECT_EQ(Entry("dnet_level"), "none");
    EXPECT_EQ(Entry("dnet_group_leader"), "");
    EXPECT_EQ(TakeFromServer<to_server::DNetGroupLeader>().user, "");
    EXPECT_FALSE(TheServer().Has<to_server::DNetLevel>());
    // An empty leader is one, also for a child that comes now.
    const auto l_child = ConnectChild("p2 child");
    ASSERT_TRUE(WaitFor([&] { return !l_child->Frames().empty(); }));
    EXPECT_THAT(l_child->Frames(), ElementsAre(BytesOf(EncodeDNetGroupLeader(""))));

    // A new login tells all again.
    dnetManager->OnConnected();
    EXPECT_EQ(TakeFromServer<to_server::DNetGroupLeader>().user, "");
    EXPECT_FALSE(TakeFromServer<to_server::DNetNoParent>().hasNoParent);
}

TEST_F(ParentTest, ChangesFromTheParentGoOnAndRepetitionsDoNot) {
    const auto l_parent = ConnectParent("p3", 0, "root");
    const auto l_child = ConnectChild("p3 child");
    ASSERT_TRUE(WaitFor([&] { return l_child->Frames().size() == 2; }));
    EXPECT_THAT(l_child->Frames(), ElementsAre(BytesOf(EncodeDNetLevel(1)), BytesOf(EncodeDNetGroupLeader("root"))));
    l_child->Frames().clear();

    l_parent->SendFrame(BytesOf(EncodeDNetLevel(0)));
    l_parent->SendFrame(BytesOf(EncodeDNetGroupLeader("root")));
    Pass(*l_parent);
    EXPECT_FALSE(TheServer().Has<to_server::DNetLevel>());
    EXPECT_FALSE(TheServer().Has<to_server::DNetGroupLeader>());

    const std::string l_leader = BytesOf(EncodeDNetGroupLeader("other")) + "unread";
    l_parent->SendFrame(BytesOf(EncodeDNetLevel(0x7FFFFFFF)));
    l_parent->SendFrame(l_leader);
    l_parent->SendFrame(BytesOf(EncodeDNetLevel(-1)));
    l_parent->SendFrame("\x63what is this");
    Pass(*l_parent);
    EXPECT_EQ(TakeFromServer<to_server::DNetLevel>().level, 0x7FFFFFFF);
    EXPECT_EQ(TakeFromServer<to_server::DNetGroupLeader>().user, "other");
    EXPECT_EQ(TakeFromServer<to_server::DNetLevel>().level, -1);
    EXPECT_EQ(Entry("dnet_level"), "none");
    EXPECT_EQ(Entry("dnet_group_leader"), "other");
    ASSERT_TRUE(WaitFor([&] { return l_child->Frames().size() == 5; }));
    EXPECT_THAT(l_child->Frames(), ElementsAre(SearchFrom("next"), BytesOf(EncodeDNetLevel(0x7FFFFFFF)), l_leader,
                                               BytesOf(EncodeDNetLevel(-1)), SearchFrom("next")));
    EXPECT_TRUE(HasLine("1 Received level from parent, updating to -1"));
    EXPECT_TRUE(HasLine("1 Received group leader from parent, updating to other"));
}

TEST_F(ParentTest, AnotherInnerCodeIsPassedOnUnreadAndAdoptsNobody) {
    const auto l_child = ConnectChild("p4 child");
    const auto l_peer = ConnectCandidate("p4");
    const std::string l_strange = "\x03" + Int32(50) + "anything at all";
    l_peer->SendFrame(l_strange);
    ASSERT_TRUE(WaitFor([&] { return l_child->Frames().size() == 1; }));
    EXPECT_EQ(l_child->Frames()[0], l_strange);
    EXPECT_EQ(Entry("dnet_parent_user"), "none");
    EXPECT_THAT(m_searches, IsEmpty());
}

TEST_F(ParentTest, TheServerIsHeardInItsOwnRightAndMakesNoParent) {
    const auto l_child = ConnectChild("p5 child");
    const auto l_candidate = ConnectCandidate("p5");
    RelayFromServer(SearchFrom("rooted"));
    ASSERT_TRUE(HearsSearchOf("rooted"));
    EXPECT_EQ(Entry("dnet_parent_user"), "none");
    RelayFromServer(BytesOf(EncodeDNetLevel(5)));
    RelayFromServer(BytesOf(EncodeDNetGroupLeader("x")));
    RelayFromServer("");
    RelayFromServer(SearchFrom("cut").substr(0, 20));
    // Longer than a child would take.
    RelayFromServer("\x03" + Int32(1) + std::string(limits::distributedFrame, 'x'));
    RelayFromServer(SearchFrom("last"));
    ASSERT_TRUE(WaitFor([&] { return l_child->Frames().size() == 2; }));
    EXPECT_THAT(l_child->Frames(), ElementsAre(SearchFrom("rooted"), SearchFrom("last")));
    EXPECT_EQ(Entry("dnet_level"), "none");
    EXPECT_FALSE(l_candidate->IsClosed());
}

TEST_F(ParentTest, ALostParentIsForgottenAndTheChildrenStay) {
    auto l_parent = ConnectParent("p6", 2, "root");
    const auto l_child = ConnectChild("p6 child");
    ASSERT_TRUE(WaitFor([&] { return l_child->Frames().size() == 2; }));
    l_parent.reset();
    EXPECT_TRUE(TakeFromServer<to_server::DNetNoParent>().hasNoParent);
    EXPECT_EQ(TakeFromServer<to_server::DNetGroupLeader>().user, "");
    EXPECT_EQ(TakeFromServer<to_server::DNetLevel>().level, -1);
    for (const char* lp_entry : {"dnet_parent_user", "dnet_parent_socket", "dnet_group_leader", "dnet_level"})
        EXPECT_EQ(Entry(lp_entry), "none") << lp_entry;
    EXPECT_TRUE(HasLine("1 Parent socket closed"));
    LetThingsSettle();
    EXPECT_EQ(l_child->Frames().size(), 2U);
    EXPECT_FALSE(l_child->IsClosed());

    // Another may follow, but the same user is never tried again.
    const auto l_next = ConnectParent("p6 next");
    EXPECT_EQ(Entry("dnet_parent_user"), "p6 next");
}

TEST_F(ParentTest, BrokenFramesCloseThatConnectionAlone) {
    const auto l_good = ConnectCandidate("p7 good");
    const std::string l_bad[] = {
        Int32(0),                                          // no code
        Int32(5) + "\x04" + "abc" + "\x00",                // sound: 4 bytes
        Int32(4) + "\x04" + "abc",                         // a level cut
        Int32(9) + "\x05" + Int32(0x20001) + "abcd",       // a lying text
        Int32(9) + "\x03" + Int32(49) + Int32(0xFFFFFFFF), // likewise
        Int32(static_cast<std::uint32_t>(limits::distributedFrame) + 1),
        Int32(0xFFFFFFFF),
        Int32(0x80000000),
    };
    int l_number = 0;
    for (const std::string& l_bytes : l_bad) {
        const auto l_peer = ConnectCandidate("p7 bad " + std::to_string(++l_number));
        l_peer->SendRaw(l_bytes);
        if (l_number == 2)
            continue;
        EXPECT_TRUE(WaitFor([&] { return l_peer->IsClosed(); })) << l_number;
        EXPECT_TRUE(HasLine("1 Parent candidate socket closed"));
        m_lines.clear();
    }
    // A frame of the longest length in pieces, and two frames in one.
    const std::string l_long = "\x03" + Int32(1) + std::string(limits::distributedFrame - 5, 'x');
    const std::string l_frame = Int32(static_cast<std::uint32_t>(l_long.size())) + l_long;
    for (std::size_t l_at = 0; l_at < l_frame.size(); l_at += 300'000) {
        l_good->SendRaw(l_frame.substr(l_at, 300'000));
        LetThingsSettle();
    }
    const std::string l_search = SearchFrom("joined");
    const std::string l_one = Int32(static_cast<std::uint32_t>(l_search.size())) + l_search;
    l_good->SendRaw(l_one + l_one.substr(0, 9));
    ASSERT_TRUE(HearsSearchOf("joined"));
    EXPECT_EQ(m_searches.size(), 1U);
    l_good->SendRaw(l_one.substr(9) + l_one);
    EXPECT_TRUE(WaitFor([&] { return m_searches.size() == 3; }));
}

TEST_F(ParentTest, WhoIsNeitherParentNorCandidateIsClosed) {
    const auto l_peer = ConnectCandidate("p8");
    g("dnet_parent_candidate").Remove();
    l_peer->SendFrame(SearchFrom("asker"));
    EXPECT_TRUE(WaitFor([&] { return l_peer->IsClosed(); }));
    EXPECT_THAT(m_searches, IsEmpty());
}

TEST_F(ParentTest, AChildIsNoParent) {
    const auto l_child = ConnectChild("p10");
    const auto l_candidate = ConnectCandidate("p10");
    l_candidate->SendFrame(SearchFrom("asker"));
    EXPECT_TRUE(WaitFor([&] { return l_candidate->IsClosed(); }));
    EXPECT_EQ(Entry("dnet_parent_user"), "none");
    EXPECT_THAT(m_searches, IsEmpty());
    EXPECT_FALSE(l_child->IsClosed());
}

TEST_F(ParentTest, FramesThatCameWithTheIntroductionAreRead) {
    // By the indirect leg the peer connects to us, and may go on speaking at once.
    peerMessenger->RequestDNetConnection("p9");
    const auto l_request = TakeFromServer<to_server::IndirectConnectionRequest>();
    const std::string l_search = SearchFrom("early");
    ScriptedPeer l_peer;
    const std::string l_answer = BytesOf(EncodeInitFrame(IndirectAnswer{l_request.token}));
    l_peer.SendRaw(Int32(5) + l_answer + Int32(static_cast<std::uint32_t>(l_search.size())) + l_search);
    EXPECT_TRUE(HearsSearchOf("early"));
    EXPECT_EQ(Entry("dnet_parent_user"), "p9");
}

} // namespace
