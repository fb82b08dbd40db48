// Children: their place in the tree, what reaches them, their depths, and whether we take part as a parent.
#include "dnet_network.h"

#include "app/settings.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ChildrenTest : public DNetTest {
protected:
    // Whether the server was told, and what.
    static std::optional<bool> TakeAnswer() {
        LetThingsSettle();
        if (!TheServer().Has<to_server::DNetCanParent>())
            return std::nullopt;
        return TakeFromServer<to_server::DNetCanParent>().canParent;
    }
    // The answer to the capacities given, from the state of a fresh login.
    static std::optional<bool> Ask(long long i_speed, int i_minSpeed, int i_ratio) {
        dnetManager->OnDNetParentMinSpeed(-1);
        SetSetting("upload_speed", i_speed);
        dnetManager->OnConnected();
        dnetManager->OnDNetParentSpeedConnectionRatio(i_ratio);
        dnetManager->OnDNetParentMinSpeed(i_minSpeed);
        return TakeAnswer();
    }
    static void ReportDepth(ScriptedPeer& io_child, std::int32_t i_depth) {
        io_child.SendFrame(BytesOf(EncodeDNetChildDepth(i_depth)));
        LetThingsSettle();
    }
};

TEST_F(ChildrenTest, TheServerHearsWhetherWeCanBeAParent) {
    TheServer().Send(from_server::DNetParentMinSpeed{10});
    SetSetting("upload_speed", 10240);
    EXPECT_EQ(TakeAnswer(), std::nullopt); // the ratio is not known yet
    TheServer().Send(from_server::DNetParentSpeedConnectionRatio{50});
    EXPECT_EQ(TakeAnswer(), true); // at exactly the minimum, room for 2
    SetSetting("upload_speed", 10239);
    EXPECT_EQ(TakeAnswer(), false);
    EXPECT_TRUE(HasLine("2 Below minimum parent speed, so no."));
    SetSetting("upload_speed", 10238);
    EXPECT_EQ(TakeAnswer(), std::nullopt);
    EXPECT_TRUE(HasLine("2 No status change, not notifying."));

    const auto l_one = ConnectChild("c1 one");
    EXPECT_EQ(Ask(10240, 10, 100), std::nullopt);
    EXPECT_TRUE(HasLine("2 Currently have 1 child connections, max capacity 1"));
    EXPECT_EQ(Ask(10240, 10, 50), true);
    // All that lies gives no children and no fault.
    for (const int l_ratio : {0, -7, std::numeric_limits<int>::min()})
        EXPECT_EQ(Ask(1 << 30, 0, l_ratio), std::nullopt) << l_ratio;
    EXPECT_EQ(Ask(1 << 30, std::numeric_limits<int>::max(), 1), std::nullopt);
    EXPECT_EQ(Ask(1 << 30, std::numeric_limits<int>::min(), 1), true);
    SetSetting("upload_speed", "fast");
    dnetManager->DetermineCanParent();
    EXPECT_EQ(TakeAnswer(), std::nullopt);
}

TEST_F(ChildrenTest, OneUserIsOneChildAndAStrangerToTheTreeGetsNoFrames) {
    const auto l_first = ConnectChild("c2");
    const auto l_second = ConnectChild("c2");
    EXPECT_TRUE(WaitFor([&] { return l_first->IsClosed(); }));
    EXPECT_TRUE(HasLine("2 Child connection already found, closing old connection."));
    EXPECT_EQ(CountChildren(), 1U);
    RelayFromServer(SearchFrom("asker"));
    ASSERT_TRUE(WaitFor([&] { return l_second->Frames().size() == 1; }));
    EXPECT_EQ(l_second->Frames()[0], SearchFrom("asker"));
    EXPECT_THAT(l_first->Frames(), IsEmpty());
}

TEST_F(ChildrenTest, OurOwnNameIsNoChild) {
    const auto l_self = ScriptedPeer::Introduced("me", "D");
    EXPECT_TRUE(WaitFor([&] { return l_self->IsClosed(); }));
    EXPECT_EQ(CountChildren(), 0U);
}

TEST_F(ChildrenTest, TheDeepestChildMakesTheDepth) {
    const auto l_one = ConnectChild("c3 one");
    auto l_two = ConnectChild("c3 two");
    ReportDepth(*l_one, 2);
    EXPECT_EQ(Entry("dnet_child_depth"), "3");
    EXPECT_TRUE(TakeFromServer<to_server::ChildDepth>().depth);
    EXPECT_TRUE(HasLine("1 Received child depth 2 from c3 one"));
    ReportDepth(*l_two, 5);
    EXPECT_EQ(Entry("dnet_child_depth"), "6");
    l_two.reset();
    LetThingsSettle();
    EXPECT_EQ(Entry("dnet_child_depth"), "6"); // until somebody reports again
    TheServer().Forget();
    ReportDepth(*l_one, 2);
    EXPECT_EQ(Entry("dnet_child_depth"), "3");
    ReportDepth(*l_one, 0x7FFFFFFF);
    EXPECT_EQ(Entry("dnet_child_depth"), "2147483647");
    TheServer().Forget();
    ReportDepth(*l_one, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Entry("dnet_child_depth"), "none");
    EXPECT_FALSE(TakeFromServer<to_server::ChildDepth>().depth);
    // What the parent would say means nothing from a child.
    l_one->SendFrame(BytesOf(EncodeDNetLevel(4)));
    l_one->SendFrame(SearchFrom("below"));
    LetThingsSettle();
    EXPECT_THAT(m_searches, IsEmpty());
    EXPECT_EQ(Entry("dnet_level"), "none");
    EXPECT_TRUE(HasLine("1 Received message from child, code 3"));
    EXPECT_FALSE(l_one->IsClosed());
}

TEST_F(ChildrenTest, BrokenFramesCloseThatChildAlone) {
    const auto l_good = ConnectChild("c4 good");
    for (const std::string& l_bytes : {Int32(0), Int32(4) + "\x07" + "abc", Int32(0x100001), Int32(0xFFFFFFFF)}) {
        const auto l_bad = ConnectChild("c4 bad");
        l_bad->SendRaw(l_bytes);
        EXPECT_TRUE(WaitFor([&] { return l_bad->IsClosed(); }));
        EXPECT_EQ(CountChildren(), 1U);
    }
    // The depth that came together with the introduction counts.
    ScriptedPeer l_early;
    const std::string l_init = BytesOf(EncodeInitFrame(DirectInit{"c4 early", "D"}));
    l_early.SendRaw(Int32(static_cast<std::uint32_t>(l_init.size())) + l_init + Int32(5) + "\x07" + Int32(1));
    EXPECT_TRUE(WaitFor([] { return Entry("dnet_child_depth") == "2"; }));
    EXPECT_FALSE(l_good->IsClosed());
}

TEST_F(ChildrenTest, AChildThatDoesNotReadIsLetGoOf) {
    const auto l_deaf = ConnectChild("c5 deaf");
    const auto l_good = ConnectChild("c5 good");
    l_deaf->StopReading();
    const std::string l_text = "\x03" + Int32(1) + std::string(200'000, 'x');
    std::size_t l_sent = 0;
    for (; CountChildren() == 2 && l_sent < 200; ++l_sent) {
        dnetManager->SendMessageToChildren(l_text);
        ASSERT_TRUE(WaitFor([&] { return l_good->Frames().size() == l_sent + 1; }));
    }
    EXPECT_EQ(CountChildren(), 1U);
    EXPECT_FALSE(User("c5 deaf").IsConnected("dnet_child"));
    EXPECT_TRUE(HasLine("1 Too much is waiting for a child that does not read, closing connection"));
    EXPECT_FALSE(l_good->IsClosed());
}

} // namespace
