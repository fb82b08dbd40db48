// Searches through the server, and whom it offers as parents in the tree of clients.
#include "server/scripted_client.h"

#include "dnet/dnet_messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <deque>
#include <optional>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A message of the tree as the server relays it.
struct Relayed {
    static constexpr std::int32_t code = from_server::DNetMessage::code;
    DNetSearch search;
    [[nodiscard]] bool Read(InputStream& io_body) {
        const auto l_code = DecodeDNetCode(io_body);
        const DNetSearchFields l_fields = DecodeDNetSearch(io_body);
        search = l_fields.search.value_or(DNetSearch());
        return l_code == DNetCode::Search && l_fields.search.has_value();
    }
};

// "user token text" of every search that has come; they are taken out.
std::vector<std::string> TakeSearches(ScriptedClient& io_client) {
    io_client.Settle();
    std::vector<std::string> l_searches;
    for (int l_left = io_client.Count<Relayed>(); l_left > 0; --l_left) {
        const DNetSearch l_search = io_client.Await<Relayed>()->search;
        l_searches.push_back(l_search.user + " " + std::to_string(l_search.token) + " " + l_search.text);
    }
    return l_searches;
}

// Everyone in the lists of possible parents that have come; they are taken out.
std::vector<std::string> TakeOffered(ScriptedClient& io_client) {
    io_client.Settle();
    std::vector<std::string> l_users;
    for (int l_left = io_client.Count<from_server::DNetPossibleParents>(); l_left > 0; --l_left) {
        const auto l_list = io_client.Await<from_server::DNetPossibleParents>();
        for (const auto& [l_user, l_address] : l_list->parents)
            l_users.push_back(l_user);
    }
    return l_users;
}

class Member : public ScriptedClient {
public:
    Member(const ServerProcess& i_server, const std::string& i_user) : ScriptedClient(i_server.Port(), i_user) {}

    std::vector<std::string> LookForParent() {
        Send(to_server::DNetNoParent{true});
        return TakeOffered(*this);
    }
    void HaveParent() {
        Send(to_server::DNetNoParent{false});
        Settle();
    }
    // With an average speed of that many KiB/s.
    void BeParent(int i_speed) {
        Send(to_server::UploadSpeed{i_speed * 1024});
        Send(to_server::DNetCanParent{true});
        Settle();
    }
    void Search(std::uint32_t i_token, const std::string& i_text) {
        Send(to_server::FileSearch{i_token, i_text});
        Settle();
    }
};

// Each child takes 5 KiB/s.
const QStringList g_options = {QStringLiteral("--parent-ratio"),     QStringLiteral("50"),
                               QStringLiteral("--parent-min-speed"), QStringLiteral("7"),
                               QStringLiteral("--wish-interval"),    QStringLiteral("99")};

} // namespace

TEST(ServerSearch, ANewcomerIsToldTheTermsAndTheRooms) {
    const ServerProcess l_server(g_options);
    Member l_anna(l_server, "anna");
    EXPECT_EQ(l_anna.Await<from_server::DNetParentMinSpeed>()->speed, 7);
    EXPECT_EQ(l_anna.Await<from_server::DNetParentSpeedConnectionRatio>()->ratio, 50);
    EXPECT_EQ(l_anna.Await<from_server::WishListWait>()->period, 99U);
    l_anna.Enter("harbour");
    Member l_bert(l_server, "bert");
    EXPECT_THAT(l_bert.Await<from_server::RoomList>()->open.names, ElementsAre("harbour"));
}

TEST(ServerSearch, ReachesEveryRootButTheAskerUnlessOthersHangBelowIt) {
    const ServerProcess l_server(g_options);
    Member l_anna(l_server, "anna");
    Member l_bert(l_server, "bert");
    Member l_carl(l_server, "carl"); // never says a word about parents
    l_bert.BeParent(100);
    const std::string l_text = "caf\xC3\xA9 \xFF -\"";
    l_anna.Search(0xFFFFFFFF, l_text);
    l_anna.Send(to_server::WishListSearch{2, ""});
    l_anna.Settle();
    EXPECT_THAT(TakeSearches(l_bert), ElementsAre("anna 4294967295 " + l_text, "anna 2 "));
    EXPECT_THAT(TakeSearches(l_carl), ElementsAre("anna 4294967295 " + l_text, "anna 2 "));
    EXPECT_THAT(TakeSearches(l_anna), IsEmpty());

    ASSERT_THAT(l_carl.LookForParent(), ElementsAre("bert"));
    l_bert.Search(3, "x");
    EXPECT_THAT(TakeSearches(l_carl), ElementsAre("bert 3 x")) << "until it says that it has one";
    EXPECT_THAT(TakeSearches(l_bert), IsEmpty());
    l_carl.HaveParent();
    l_anna.TakeAll<Relayed>();
    l_bert.Search(4, "x");
    EXPECT_THAT(TakeSearches(l_bert), ElementsAre("bert 4 x")) << "the only road to carl";
    EXPECT_THAT(TakeSearches(l_carl), IsEmpty());
    l_carl.Search(5, "x");
    EXPECT_THAT(TakeSearches(l_bert), ElementsAre("carl 5 x"));
    l_carl.LookForParent();
    l_anna.Search(6, "x");
    EXPECT_THAT(TakeSearches(l_carl), ElementsAre("anna 6 x"));
}

TEST(ServerSearch, OffersTheNearestToTheRootWithRoomAndNobodyFromBelow) {
    const ServerProcess l_server(g_options);
    Member l_root(l_server, "root");
    EXPECT_THAT(l_root.LookForParent(), IsEmpty());
    l_root.Send(to_server::SetWaitPort{4321});
    l_root.BeParent(10); // two children
    EXPECT_THAT(l_root.LookForParent(), IsEmpty()) << "not itself";

    auto l_middle = std::make_unique<Member>(l_server, "middle");
    l_middle->Send(to_server::DNetNoParent{true});
    const auto l_list = l_middle->Await<from_server::DNetPossibleParents>();
    ASSERT_TRUE(l_list);
    EXPECT_THAT(l_list->parents, ElementsAre(std::pair(std::string("root"), TCPAddress(0x7F000001, 4321))));
    l_middle->HaveParent();
    l_middle->BeParent(20);
    EXPECT_THAT(l_root.LookForParent(), IsEmpty()) << "middle may hang below it";

    Member l_other(l_server, "other");
    EXPECT_THAT(l_other.LookForParent(), ElementsAre("root", "middle"));
    l_other.HaveParent();
    l_other.BeParent(20);
    Member l_leaf(l_server, "leaf");
    EXPECT_THAT(l_leaf.LookForParent(), ElementsAre("middle", "other")) << "root is full";
    l_leaf.HaveParent();

    // middle is gone: its child gets a list at once, without those that it has tried.
    l_root.BeParent(100);
    l_middle.reset();
    EXPECT_THAT(l_leaf.LookForParent(), ElementsAre("root"));
    Member l_again(l_server, "middle");
    EXPECT_THAT(l_again.LookForParent(), ElementsAre("root")) << "other may hang below it still";

    l_other.Send(to_server::DNetCanParent{false});
    l_other.Settle();
    EXPECT_THAT(Member(l_server, "last").LookForParent(), ElementsAre("root"));
}

TEST(ServerSearch, LevelsAndLeadersCountAsFarAsTheyCanBeTrue) {
    const ServerProcess l_server(g_options);
    Member l_far(l_server, "far");
    Member l_negative(l_server, "negative");
    Member l_third(l_server, "third");
    Member l_led(l_server, "led");
    for (Member* lp_member : {&l_far, &l_negative, &l_third, &l_led})
        lp_member->BeParent(100);
    l_far.Send(to_server::DNetLevel{0x7FFFFFFF});
    l_negative.Send(to_server::DNetLevel{std::numeric_limits<std::int32_t>::min()});
    l_third.Send(to_server::DNetLevel{3});
    l_led.Send(to_server::DNetLevel{1});
    l_led.Send(to_server::DNetGroupLeader{"leader"});
    for (Member* lp_member : {&l_far, &l_negative, &l_third, &l_led})
        lp_member->Settle();
    EXPECT_THAT(Member(l_server, "anna").LookForParent(), ElementsAre("negative", "led", "third", "far"));
    EXPECT_THAT(Member(l_server, "leader").LookForParent(), ElementsAre("negative", "third", "far"));

    // Who comes with a parent of whom the server knows nothing may hang below anyone, unless it names its leader.
    l_third.HaveParent();
    EXPECT_THAT(Member(l_server, "bert").LookForParent(), ElementsAre("negative", "led", "far"));
    l_third.Send(to_server::DNetGroupLeader{"someone unknown"});
    l_third.Settle();
    EXPECT_THAT(Member(l_server, "carl").LookForParent(), ElementsAre("negative", "led", "third", "far"));
    l_third.Send(to_server::DNetGroupLeader{std::string(100'000, 'x')});
    l_third.Settle();
    EXPECT_THAT(Member(l_server, "dora").LookForParent(), ElementsAre("negative", "led", "far"));
}

TEST(ServerSearch, TenAtATimeAndWhoWaitsHearsOfThoseWhoComeLater) {
    const ServerProcess l_server(g_options);
    std::optional<Member> l_early(std::in_place, l_server, "early");
    Member l_second(l_server, "second");
    EXPECT_THAT(l_early->LookForParent(), IsEmpty());
    EXPECT_THAT(l_second.LookForParent(), IsEmpty());
    Member l_narrow(l_server, "narrow");
    l_narrow.BeParent(5);
    EXPECT_THAT(TakeOffered(*l_early), ElementsAre("narrow"));
    EXPECT_THAT(TakeOffered(l_second), IsEmpty()) << "one child is all that it can take";
    l_early.reset();
    const auto l_list = l_second.Await<from_server::DNetPossibleParents>();
    ASSERT_TRUE(l_list) << "its place is free";
    EXPECT_EQ(l_list->parents.front().first, "narrow");
    Member l_third(l_server, "third");
    EXPECT_THAT(l_third.LookForParent(), IsEmpty());

    std::deque<Member> l_parents;
    for (int l_index = 0; l_index < 11; ++l_index) {
        l_parents.emplace_back(l_server, "p" + std::to_string(l_index + 10));
        l_parents.back().BeParent(100);
    }
    EXPECT_THAT(TakeOffered(l_third), ElementsAre("p10"));
    Member l_late(l_server, "late");
    EXPECT_EQ(l_late.LookForParent().size(), 10U);
    EXPECT_EQ(l_late.LookForParent().size(), 1U) << "those not yet tried";
    for (int l_round = 0; l_round < 50; ++l_round)
        EXPECT_THAT(l_late.LookForParent(), IsEmpty());
}

TEST(ServerSearch, AStormIsAnsweredBySilence) {
    const ServerProcess l_server;
    Member l_anna(l_server, "anna");
    Member l_bert(l_server, "bert");
    QElapsedTimer l_time;
    l_time.start();
    for (std::uint32_t l_token = 0; l_token < 1000; ++l_token)
        l_anna.Send(to_server::FileSearch{l_token, "storm"});
    l_anna.Settle();
    l_bert.Settle();
    const int l_heard = l_bert.TakeAll<Relayed>();
    EXPECT_GE(l_heard, 30);
    EXPECT_LE(l_heard, 30 + 1 + l_time.elapsed() / 100);
    // Others are not held up, and the sender is heard again as time passes.
    l_bert.Search(1, "calm");
    EXPECT_THAT(TakeSearches(l_anna), ElementsAre("bert 1 calm"));
    const auto l_isCalm = [](const Relayed& i_relayed) { return i_relayed.search.text == "calm"; };
    bool l_isHeard = false;
    while (!l_isHeard && l_time.elapsed() < g_patienceMs) {
        l_anna.Search(2000, "calm");
        l_bert.Settle();
        l_isHeard = l_bert.Count<Relayed>() > 0;
    }
    EXPECT_TRUE(l_bert.Await<Relayed>(l_isCalm));
}
