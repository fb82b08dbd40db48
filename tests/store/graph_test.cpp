// The graph itself: creation, connections, cardinalities, queries, and the events of each operation in order.
#include <gmock/gmock.h>

#include "store/store_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class GraphTest : public testing::Test {
protected:
    GraphTest() {
        m_user->RelateToType(m_status, Many, One, false);
        m_user->RelateToType(m_room, Many, Many, false);
        m_user->RelateToType(m_online, Many, One, false);
        m_user->RelateToType(m_entry, One, One, false);
        m_user->RelateToType(m_note, One, Many, true);
        m_one->RelateToType(m_two, One, One, false);
    }

    Data m_data;
    Type* m_user = m_data.NewType("user", true, false, true);
    Type* m_room = m_data.NewType("room", true, false, false);
    Type* m_status = m_data.NewType("status", false, false, true);
    Type* m_online = m_data.NewType("is_online", false, true, true);
    Type* m_entry = m_data.NewType("in_list", false, true, true);
    Type* m_note = m_data.NewType("note", true, true, true);
    Type* m_one = m_data.NewType("one", true, false, true);
    Type* m_two = m_data.NewType("two", true, false, true);
};

TEST_F(GraphTest, FindsAndMakesItemsByValue) {
    EXPECT_FALSE(m_user->HasItem("bob"));
    Item* lp_bob = m_user->GetItem("bob");
    EXPECT_EQ(m_user->HasItem("bob"), lp_bob);
    EXPECT_EQ(m_user->NewItem(std::string("bob")), lp_bob);
    EXPECT_EQ(m_room->GetItem("den"), nullptr) << "not made on being asked for";
    EXPECT_NE(m_room->NewItem("den"), nullptr);
    Item* lp_empty = m_user->GetItem("");
    EXPECT_NE(lp_empty, nullptr);
    EXPECT_EQ(m_user->HasItem(""), lp_empty);
    EXPECT_EQ(m_user->CountItems(), 2U);
    EXPECT_EQ(m_note->NewItem()->AsString(), "");
    EXPECT_NE(m_note->NewItem(), m_note->NewItem());
    EXPECT_EQ(m_note->GetGlobalNullItem(), *m_note->GetItems().begin());
}

TEST_F(GraphTest, EverythingIsText) {
    EXPECT_EQ(m_user->GetItem(-7)->AsInt(), -7);
    EXPECT_EQ(m_user->GetItem(9223372036854775807LL)->AsInt64(), 9223372036854775807LL);
    EXPECT_EQ(m_user->GetItem(18446744073709551615ULL)->AsString(), "18446744073709551615");
    EXPECT_EQ(m_user->GetItem(4294967295U)->AsString(), "4294967295");
    EXPECT_EQ(m_user->GetItem(&m_data)->AsPointer<Data>(), &m_data);
    EXPECT_EQ(m_user->GetItem(std::string_view("a\0b", 3)), m_user->GetItem("a"));
    EXPECT_EQ(m_user->GetItem("12x")->ToInt64(), std::nullopt);
    EXPECT_EQ(m_user->GetItem("9223372036854775808")->ToInt64(), std::nullopt);
    EXPECT_EQ(m_note->NewItem()->ToInt64(), std::nullopt);
    const std::string l_long(100000, 'x');
    EXPECT_EQ(m_user->GetItem(l_long)->AsString(), l_long);
    EXPECT_EQ(m_user->GetItem(l_long)->AsCStr()[l_long.size()], '\0');
}

TEST_F(GraphTest, NullHandlesAnswerReads) {
    const ItemPtr l_null;
    EXPECT_FALSE(l_null);
    EXPECT_EQ(l_null.AsString(), "");
    EXPECT_STREQ(l_null.AsCStr(), "");
    EXPECT_EQ(l_null.AsInt(), 0);
    EXPECT_EQ(l_null.AsUInt(), 0U);
    EXPECT_EQ(l_null.AsInt64(), 0);
    EXPECT_EQ(l_null.ToInt64(), std::nullopt);
    EXPECT_EQ(l_null.AsPointer<Data>(), nullptr);
    EXPECT_FALSE(l_null["status"]["room"].HasItem("user"));
    EXPECT_TRUE(l_null.GetItems("user").empty());
    ItemSet l_set{m_user->GetItem("bob")};
    l_null.GetItems("user", l_set);
    EXPECT_TRUE(l_set.empty());
}

TEST_F(GraphTest, ConnectionsAreSeenFromBothEnds) {
    const ItemPtr l_bob = m_user->GetItem("bob");
    const ItemPtr l_den = m_room->NewItem("den");
    EXPECT_EQ(l_bob.Connect(l_den), l_den);
    EXPECT_TRUE(l_den.IsConnected(l_bob) && l_bob.IsConnected("room") && l_den.IsConnected("user"));
    EXPECT_FALSE(l_den.IsConnected("status")) << "unrelated Types are just not connected";
    EXPECT_THAT(l_den.GetItems("user"), ElementsAre(l_bob.Get()));
    ItemSet l_untouched{l_bob.Get()};
    m_room->NewItem("hall")->GetItems("user", l_untouched);
    EXPECT_THAT(l_untouched, ElementsAre(l_bob.Get()));
    l_den.Disconnect("user");
    EXPECT_TRUE(l_bob.IsDisconnectedFromAll() && l_den.IsDisconnectedFromAll());
}

TEST_F(GraphTest, EventsComeInOrder) {
    EventLog l_log;
    l_log.ListenTo(m_user);
    l_log.ListenTo(m_status);
    l_log.ListenTo(m_data);
    l_log.ListenTo(m_user, m_status);
    l_log.ListenTo(m_status, m_user);
    Item* lp_bob = m_user->GetItem("bob");
    Item* lp_away = m_status->GetItem("away");
    EXPECT_THAT(l_log.Take(), ElementsAre("added bob", "any added bob", "added away", "any added away"));
    lp_bob->Connect(lp_away);
    EXPECT_THAT(l_log.Take(), ElementsAre("connected bob away", "any connected bob away", "connected away bob",
                                          "pair connected bob away", "pair connected away bob"));
    lp_bob->Connect(lp_away);
    lp_away->Connect(lp_bob);
    EXPECT_THAT(l_log.Take(), IsEmpty()) << "they are connected";
    m_status->GetItem("here");
    l_log.Take();
    lp_bob->Connect(m_status->GetItem("here"));
    EXPECT_THAT(l_log.Take(), ElementsAre("disconnected bob away", "any disconnected bob away", "disconnected away bob",
                                          "pair disconnected bob away", "pair disconnected away bob",
                                          "connected bob here", "any connected bob here", "connected here bob",
                                          "pair connected bob here", "pair connected here bob"));
    lp_away->Disconnect(lp_bob);
    EXPECT_THAT(l_log.Take(), ElementsAre("disconnected away bob", "any disconnected away bob", "disconnected bob away",
                                          "pair disconnected away bob", "pair disconnected bob away"))
        << "also when nothing was connected";
    EXPECT_EQ((*lp_bob)["status"].AsString(), "here");
    lp_bob->Remove();
    EXPECT_THAT(l_log.Take(),
                ElementsAre("removed bob", "any removed bob", "disconnected bob here", "any disconnected bob here",
                            "disconnected here bob", "pair disconnected bob here", "pair disconnected here bob"));
    EXPECT_TRUE(m_status->HasItem("here")) << "neighbours stay";
}

TEST_F(GraphTest, OneEndsDisplaceOnBothSides) {
    EventLog l_log;
    Item* lp_a1 = m_one->GetItem("a1");
    Item* lp_a2 = m_one->GetItem("a2");
    Item* lp_b1 = m_two->GetItem("b1");
    Item* lp_b2 = m_two->GetItem("b2");
    lp_a1->Connect(lp_b1);
    lp_a2->Connect(lp_b2);
    l_log.ListenTo(m_one);
    lp_a1->Connect(lp_b2);
    EXPECT_THAT(l_log.Take(), ElementsAre("disconnected a1 b1", "disconnected a2 b2", "connected a1 b2"));
    EXPECT_TRUE(lp_b1->IsDisconnectedFromAll() && lp_a2->IsDisconnectedFromAll());
}

TEST_F(GraphTest, NewItemFollowsTheRelation) {
    const ItemPtr l_bob = m_user->GetItem("bob");
    const ItemPtr l_eve = m_user->GetItem("eve");
    EXPECT_EQ(l_bob.NewItem("is_online"), l_eve.NewItem("is_online")) << "shared by all";
    const ItemPtr l_entry = l_bob.NewItem("in_list");
    EXPECT_EQ(l_bob.NewItem("in_list"), l_entry);
    EXPECT_NE(l_eve.NewItem("in_list"), l_entry) << "one for each";
    EXPECT_NE(l_bob.NewItem("note"), l_bob.NewItem("note"));
    EXPECT_EQ(l_bob.CountItems("note"), 2U);
}

TEST_F(GraphTest, RelationsMadeAfterTheItemsWork) {
    std::vector<Item*> l_users;
    for (int l_index = 0; l_index < 100; ++l_index)
        l_users.push_back(m_user->GetItem(l_index));
    std::vector<Type*> l_types;
    for (int l_index = 0; l_index < 3; ++l_index) {
        l_types.push_back(m_data.NewType("late" + std::to_string(l_index), false, false, true));
        m_user->RelateToType(l_types.back(), Many, One, false);
        for (Item* lp_user : l_users)
            lp_user->Connect(l_types.back()->GetItem(lp_user->AsInt() % 7));
        m_data.CheckInvariants();
    }
    EXPECT_EQ((*l_users[10])["late2"].AsInt(), 3);
    for (std::size_t l_index = 0; l_index < 50; ++l_index)
        l_users[l_index]->Remove();
    EXPECT_EQ(m_user->GetItem(1)->HasItem("late0"), nullptr) << "a new item at an old place starts empty";
    EXPECT_EQ((*l_users[60])["late1"].AsInt(), 4);
    m_data.CheckInvariants();
}

TEST_F(GraphTest, QueriesAcrossSets) {
    const auto l_user = [this](const char* ip_name) { return m_user->GetItem(ip_name); };
    Item* lp_den = m_room->NewItem("den");
    Item* lp_hall = m_room->NewItem("hall");
    for (const char* lp_name : {"a", "b", "c"})
        lp_den->Connect(l_user(lp_name));
    for (const char* lp_name : {"b", "c", "e"})
        lp_hall->Connect(l_user(lp_name));
    l_user("b")->Connect(m_status->GetItem("away"));
    l_user("f");
    const ItemSet l_users = m_user->GetItems();
    EXPECT_THAT(m_data.GetItemSubset(m_room->GetItems(), "user"), UnorderedElementsAre(l_user("b"), l_user("c")));
    EXPECT_THAT(m_data.GetItems(lp_den, m_status->HasItem("away"), "user"), ElementsAre(l_user("b")));
    EXPECT_EQ(m_data.GetItem(lp_den, m_status->HasItem("away"), "user"), l_user("b"));
    EXPECT_FALSE(m_data.GetItem(ItemSet{lp_den, m_room->NewItem("empty")}, "user"));
    EXPECT_TRUE(m_data.GetItemSubset({}, "user").empty());
    EXPECT_EQ(m_data.GetItems(m_room->GetItems(), "user").size(), 4U);
    EXPECT_EQ(m_room->GetItems().GetItems("user").size(), 4U);
    EXPECT_EQ(l_users.Connected("room").size(), 4U);
    EXPECT_THAT(l_users.NotConnected("room"), ElementsAre(l_user("f")));
    EXPECT_EQ(l_users.Connected("room", "den").size(), 3U);
    EXPECT_EQ(l_users.NotConnected("room", "den").size(), 2U);
    EXPECT_TRUE(l_users.Connected("room", "gone").empty() && l_users.NotConnected("room", "gone").empty());
    EXPECT_TRUE(l_users.Connected(ItemPtr()).empty() && l_users.NotConnected(ItemPtr()).empty());
    EXPECT_THAT(l_users.Connected(m_status->GetItems()), ElementsAre(l_user("b")));
    EXPECT_EQ(m_room->GetItems().Connected(l_users).size(), 2U);
    EXPECT_EQ(l_users.Connected("room", "den").Common(l_users.Connected("room", "hall")).size(), 2U);
    EXPECT_EQ(l_users.Connected("room", "den") + l_users.Connected("room", "hall"), l_users.Connected("room"));
    EXPECT_EQ(ItemPtr(l_users.Connected("status")), l_user("b"));
    EXPECT_FALSE(ItemPtr(ItemSet()));
    EXPECT_TRUE(ItemSet().Connected("anything", "at all").empty());
    l_users.Disconnect("room");
    EXPECT_TRUE(lp_den->IsDisconnectedFromAll());
    l_users.Remove();
    EXPECT_EQ(m_user->CountItems(), 0U);
}

TEST_F(GraphTest, SubsetsOfSetsOfEverySizeAreTheCommonMembersInOrder) {
    Type* const lp_group = m_data.NewType("group", true, false, true);
    Type* const lp_member = m_data.NewType("member", false, true, true);
    lp_group->RelateToType(lp_member, Many, Many, false);
    // Single neighbours, arrays, and crowds whose slabs hold lists and bits.
    constexpr int c_members = 20'000;
    const std::vector<int> l_steps = {2, 3, 7, 40, 97, 150, 2000, c_members - 1};
    for (int l_number = 0; l_number < c_members; ++l_number) {
        Item* const lp_item = lp_member->NewItem();
        for (const int l_step : l_steps) {
            if (l_number % l_step == 1)
                lp_item->Connect(lp_group->GetItem(l_step));
        }
    }
    std::map<int, ItemSet> l_members;
    for (const int l_step : l_steps)
        l_members[l_step] = lp_group->GetItem(l_step)->GetItems("member");
    for (const int l_first : l_steps) {
        for (const int l_second : l_steps) {
            const ItemSet l_both{lp_group->GetItem(l_first), lp_group->GetItem(l_second)};
            const ItemSet l_common = l_members[l_first].Common(l_members[l_second]);
            EXPECT_EQ(m_data.GetItemSubset(l_both, "member"), l_common) << l_first << " " << l_second;
            Item* const l_items[] = {lp_group->GetItem(l_first), lp_group->GetItem(l_second)};
            std::size_t l_met = 0;
            EXPECT_EQ(m_data.AnyOfSubset(l_items, "member", [&](Item*) { return ++l_met == 2; }), l_common.size() >= 2);
            EXPECT_EQ(l_met, std::min<std::size_t>(l_common.size(), 2));
            for (const int l_third : {3, 97}) {
                const ItemSet l_all = l_both + ItemSet{lp_group->GetItem(l_third)};
                EXPECT_EQ(m_data.GetItemSubset(l_all, "member"), l_common.Common(l_members[l_third]))
                    << l_first << " " << l_second << " " << l_third;
            }
        }
    }
}

TEST_F(GraphTest, SortsByValueAndReversesWhole) {
    const auto l_values = [](const ItemList& i_list) {
        std::vector<std::string> l_result;
        for (const Item* lp_item : i_list)
            l_result.push_back(lp_item->AsString());
        return l_result;
    };
    const ItemSet l_set{m_user->GetItem("9"), m_user->GetItem("10"), m_user->GetItem("x"), m_user->GetItem("-1")};
    EXPECT_THAT(l_values(l_set.SortAlphabetic(true)), ElementsAre("-1", "10", "9", "x"));
    EXPECT_THAT(l_values(l_set.SortNumeric(true)), ElementsAre("-1", "x", "9", "10"));
    EXPECT_THAT(l_values(l_set.SortNumeric(false)), ElementsAre("10", "9", "x", "-1"));
    m_user->GetItem("9")->Connect(m_status->GetItem("5"));
    m_user->GetItem("10")->Connect(m_status->GetItem("5"));
    m_user->GetItem("x")->Connect(m_status->GetItem("40"));
    ItemList l_up = l_set.SortNumericBy("status", true);
    ASSERT_EQ(l_up.size(), 3U) << "without a key: left out";
    EXPECT_LT(l_up[0], l_up[1]) << "equal keys in address order";
    EXPECT_EQ(l_up[2]->AsString(), "x");
    std::reverse(l_up.begin(), l_up.end());
    EXPECT_EQ(l_set.SortNumericBy("status", false), l_up);
    EXPECT_EQ(l_set.SortAlphabeticBy("status", true).front()->AsString(), "x");
}

TEST(GlobalStoreTest, AnswersQueriesByName) {
    d.NewType("colour", true, false, true)->GetItem("red");
    EXPECT_EQ(g("colour").size(), 1U);
    EXPECT_EQ(ItemPtr(i("colour", "red")).AsString(), "red");
    EXPECT_TRUE(i("colour", "blue").empty());
    EXPECT_EQ(g("colour").size(), 1U) << "asking makes nothing";
}

} // namespace
