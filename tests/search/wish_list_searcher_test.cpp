// The wish list's turn: which search goes out at each tick, and when ticks come.
#include "peer_network.h"

#include "app/text.h"
#include "search/wish_list_schema.h"
#include "search/wish_list_searcher.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WishListTest : public PeerNetworkTest, public LogSink {
protected:
    void SetUp() override {
        PeerNetworkTest::SetUp();
        static const bool s_typesStand = [] {
            CreateWishListTypes();
            return true;
        }();
        static_cast<void>(s_typesStand);
        SetLogSink(this);
        m_searcher = std::make_unique<WishListSearcher>(nullptr);
        QObject::connect(gp_server, &Server::SearchRequested, &m_context,
                         [this](unsigned int i_token, const std::string& i_text, bool i_wishList) {
                             EXPECT_TRUE(i_wishList);
                             EXPECT_TRUE(ItemPtr(i("search_request", i_token)).IsConnected("wishlist_search"));
                             m_searched.push_back(i_text);
                         });
    }
    void TearDown() override {
        SetLogSink(nullptr);
        g("wish_list_item").Remove();
        PeerNetworkTest::TearDown();
    }

    static void Enable(const char* ip_text) {
        const ItemPtr l_item = d.GetType("wish_list_item")->GetItem(ip_text);
        l_item.Connect(d.GetType("wish_list_item_enabled")->GetGlobalNullItem());
    }
    static void Disable(const char* ip_text) {
        d.GetType("wish_list_item")->GetItem(ip_text)->Disconnect("wish_list_item_enabled");
    }
    // What the next ticks search for.
    std::vector<std::string> Tick(int i_count = 1) {
        m_searched.clear();
        while (i_count-- > 0)
            m_searcher->OnSearchTimerTimeout();
        return m_searched;
    }
    static std::string RunValue(const char* ip_key) {
        return d.GetType("vglobal")->HasItem(ip_key)["global_value"].AsString();
    }

    std::unique_ptr<WishListSearcher> m_searcher;
    std::vector<std::string> m_searched;
    std::vector<std::string> m_lines;

private:
    void Log(QString i_area, int i_level, QString i_text, ItemPtr) override {
        if (i_area == QLatin1String("Wish List"))
            m_lines.push_back(std::to_string(i_level) + " " + ToUtf8(i_text));
    }
};

TEST_F(WishListTest, TheEnabledGoRoundInOrder) {
    EXPECT_THAT(Tick(2), IsEmpty());
    EXPECT_EQ(RunValue("wish_list_search_index"), "0");
    for (const char* lp_text : {"b", "c", "a", "never"})
        Enable(lp_text);
    Disable("never");
    EXPECT_THAT(Tick(6), ElementsAre("a", "b", "c", "a", "b", "c"));
    EXPECT_THAT(Tick(), ElementsAre("a"));
    EXPECT_EQ(m_lines.back(), "1 Sent wish list search: a");
    EXPECT_EQ(TheServer().Has<to_server::FileSearch>(), false);
    to_server::WishListSearch l_search;
    ASSERT_TRUE(TheServer().Take(l_search));
    EXPECT_EQ(l_search.text, "a");

    Disable("b"); // where the index stands: "c" moves up to it
    EXPECT_THAT(Tick(2), ElementsAre("c", "a"));
    Enable("b");
    Enable("d");
    EXPECT_THAT(Tick(2), ElementsAre("b", "c")); // a b c d, next is d at 3
    for (const char* lp_text : {"c", "d"})
        Disable(lp_text);
    EXPECT_THAT(Tick(2), ElementsAre("b", "a")); // 3 steps round a list of two, and then the front

    // A new run begins at the front.
    m_searcher.reset();
    m_searcher = std::make_unique<WishListSearcher>(nullptr);
    EXPECT_THAT(Tick(), ElementsAre("a"));
}

TEST_F(WishListTest, ThePeriodOfTheServerDrivesIt) {
    Enable("wish");
    LetThingsSettle();
    EXPECT_THAT(m_searched, IsEmpty());

    TheServer().Send(from_server::WishListWait{1});
    ASSERT_TRUE(WaitFor([&] { return m_lines.size() == 1; }));
    EXPECT_EQ(m_lines[0], "1 Wish list wait period set to 1000 milliseconds");
    EXPECT_EQ(RunValue("wish_list_wait"), "1");
    EXPECT_THAT(m_searched, IsEmpty());
    ASSERT_TRUE(WaitFor([&] { return m_searched.size() == 2; })); // it repeats

    TheServer().Send(from_server::WishListWait{0xFFFFFFFF});
    ASSERT_TRUE(WaitFor([&] { return RunValue("wish_list_wait") == "4294967295"; }));
    EXPECT_EQ(m_lines.back(), "1 Wish list wait period set to 4294967295000 milliseconds");
    TheServer().Send(from_server::WishListWait{0});
    ASSERT_TRUE(WaitFor([&] { return RunValue("wish_list_wait") == "0"; }));
    const std::size_t l_count = m_searched.size();
    QElapsedTimer l_time;
    l_time.start();
    ASSERT_TRUE(WaitFor([&] { return l_time.elapsed() > 1200; }));
    EXPECT_EQ(m_searched.size(), l_count);
}

} // namespace
