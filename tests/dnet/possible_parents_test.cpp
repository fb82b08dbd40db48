// The lists of possible parents that the server sends.
#include "dnet_network.h"

#include "support/thread_time.h"

#include <QHostAddress>

namespace {

class PossibleParentsTest : public DNetTest {
protected:
    int CountLines(std::string_view i_line) const { return static_cast<int>(std::ranges::count(m_lines, i_line)); }
};

TEST_F(PossibleParentsTest, NobodyIsTriedTwiceAndNobodyOnceThereIsAParent) {
    ScriptedListener l_listener;
    NameParents({{"l1 a", l_listener.Port()}, {"l1 b", l_listener.Port()}, {"l1 a", l_listener.Port()}});
    const auto l_first = l_listener.Next();
    const auto l_second = l_listener.Next();
    ASSERT_TRUE(l_first && l_second);
    EXPECT_TRUE(HasLine("1 Received possible parents list, 3 entries"));
    EXPECT_EQ(CountLines("2 Already attempted parent connection to l1 a, skipping"), 1);
    NameParents({{"l1 b", l_listener.Port()}, {"l1 c", 0}});
    ASSERT_TRUE(WaitFor([&] { return HasLine("2 Attempting parent connection to l1 c"); }));
    EXPECT_TRUE(HasLine("2 Already attempted parent connection to l1 b, skipping"));

    ASSERT_TRUE(WaitFor([&] { return d.GetType("dnet_parent_candidate")->CountItems() == 2; }));
    l_first->SendFrame(SearchFrom("asker"));
    ASSERT_TRUE(HearsSearchOf("asker"));
    NameParents({{"l1 d", l_listener.Port()}});
    EXPECT_TRUE(WaitFor(
        [&] { return HasLine("1 Received possible parents list, but already have a parent. Not processing."); }));
    EXPECT_FALSE(d.GetType("user")->HasItem("l1 d"));

    // One that opens too late is turned away.
    peerMessenger->RequestDNetConnection("l1 late");
    to_server::IndirectConnectionRequest l_request;
    do
        l_request = TakeFromServer<to_server::IndirectConnectionRequest>();
    while (l_request.user != "l1 late");
    ScriptedPeer l_late;
    l_late.SendFrame(BytesOf(EncodeInitFrame(IndirectAnswer{l_request.token})));
    EXPECT_TRUE(WaitFor([&] { return l_late.IsClosed(); }));
    EXPECT_TRUE(HasLine("2 Rejecting, already have parent"));
}

TEST_F(PossibleParentsTest, TheLongestListIsWorkedOffAtAPace) {
    from_server::DNetPossibleParents l_list;
    const unsigned int l_address = QHostAddress(QHostAddress::LocalHost).toIPv4Address();
    for (std::uint32_t l_index = 0; l_index < limits::textLengthOrCount; ++l_index)
        l_list.parents.emplace_back(l_index < 100'000 ? "l2 same" : "l2 " + std::to_string(l_index % 50),
                                    TCPAddress{l_address, 0});
    QElapsedTimer l_time;
    l_time.start();
    const ThreadTime l_work;
    dnetManager->OnDNetPossibleParents(l_list.parents);
    EXPECT_LT(l_work.Milliseconds(), 1000);
    const auto l_countTried = [] { return static_cast<int>(g("user").Connected("attempted_dnet_connection").size()); };
    const int l_before = l_countTried();
    ASSERT_TRUE(WaitFor([&] { return l_countTried() - l_before >= 50; }));
    EXPECT_GE(l_time.elapsed(), 900); // 51 in all, 30 a second
    EXPECT_EQ(l_countTried() - l_before, 50);
}

} // namespace
