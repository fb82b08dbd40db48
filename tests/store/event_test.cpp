// Listeners that come, die and change the graph while they are being told.
#include <memory>

#include <gmock/gmock.h>

#include "store/store_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class EventTest : public testing::Test {
protected:
    EventTest() {
        m_user->RelateToType(m_status, Many, One, false);
        m_one->RelateToType(m_two, One, One, false);
    }

    Data m_data;
    Type* m_user = m_data.NewType("user", true, false, true);
    Type* m_status = m_data.NewType("status", true, false, true);
    Type* m_one = m_data.NewType("one", true, false, true);
    Type* m_two = m_data.NewType("two", true, false, true);
};

TEST_F(EventTest, DeadListenersAreSkippedAndTheLivingTold) {
    // Whichever of the handlers comes first kills all the others.
    std::vector<std::unique_ptr<Reaction>> l_listeners(20);
    int l_calls = 0;
    for (std::size_t l_index = 0; l_index < l_listeners.size(); ++l_index) {
        l_listeners[l_index] = std::make_unique<Reaction>([&, l_index](Item*) {
            ++l_calls;
            for (std::size_t l_other = 0; l_other < l_listeners.size(); ++l_other) {
                if (l_other != l_index)
                    l_listeners[l_other].reset();
            }
        });
        m_user->m_itemAdded.AddHandler(l_listeners[l_index]->ForItem());
    }
    m_user->GetItem("a");
    EXPECT_EQ(l_calls, 1);
    m_user->GetItem("b");
    EXPECT_EQ(l_calls, 2) << "the one alive is told, the dead are gone";
}

TEST_F(EventTest, ListenersMayDieInTheirOwnHandlerAndInNestedEvents) {
    std::unique_ptr<Reaction> lp_suicide;
    lp_suicide = std::make_unique<Reaction>([&](Item*) { lp_suicide.reset(); });
    m_user->m_itemAdded.AddHandler(lp_suicide->ForItem());
    int l_depth = 0;
    Reaction l_nesting([&](Item*) {
        if (++l_depth < 4)
            m_user->GetItem(l_depth);
    });
    m_user->m_itemAdded.AddHandler(l_nesting.ForItem());
    m_user->m_itemAdded.AddHandler(l_nesting.ForItem());
    m_user->GetItem("a");
    EXPECT_EQ(lp_suicide, nullptr);
    EXPECT_EQ(l_depth, 8) << "four items, two handlers";
}

TEST_F(EventTest, ListenersAddedWhileTellingHearTheNextEvent) {
    std::vector<std::unique_ptr<Reaction>> l_late;
    int l_heard = 0;
    Reaction l_first([&](Item*) {
        l_late.push_back(std::make_unique<Reaction>([&](Item*) { ++l_heard; }));
        m_user->m_itemAdded.AddHandler(l_late.back()->ForItem());
    });
    m_user->m_itemAdded.AddHandler(l_first.ForItem());
    m_user->GetItem("a");
    EXPECT_EQ(l_heard, 0);
    m_user->GetItem("b");
    EXPECT_EQ(l_heard, 1);
}

TEST_F(EventTest, ListenersMayOutliveTheStore) {
    EventLog l_log;
    {
        Data l_data;
        l_log.ListenTo(l_data);
        l_log.ListenTo(l_data.NewType("brief", true, false, true));
        l_data.GetType("brief")->GetItem("x");
    }
    EXPECT_THAT(l_log.Take(), ElementsAre("added x", "any added x"));
}

TEST_F(EventTest, AnItemRemovedByTheFirstListenerIsNotTold) {
    Reaction l_killer([](Item* ip_item) { ip_item->Remove(); });
    m_user->m_itemAdded.AddHandler(l_killer.ForItem());
    EventLog l_log;
    l_log.ListenTo(m_data);
    EXPECT_EQ(m_user->GetItem("a"), nullptr);
    EXPECT_THAT(l_log.Take(), ElementsAre("any removed a"));
    EXPECT_FALSE(m_user->HasItem("a"));
}

TEST_F(EventTest, EitherEndMayBeRemovedWhileAConnectionIsTold) {
    for (const bool l_killsFrom : {true, false}) {
        const auto lp_killer = std::make_unique<Reaction>(
            [l_killsFrom](ConnectionInfo i_info) { (l_killsFrom ? i_info.m_itemFrom : i_info.m_itemTo)->Remove(); });
        m_user->m_connected.AddHandler(lp_killer->ForConnection());
        EventLog l_log;
        l_log.ListenTo(m_data);
        l_log.ListenTo(m_user, m_status);
        Item* lp_user = m_user->NewItem("u");
        Item* lp_status = m_status->NewItem("s");
        lp_user->Connect(lp_status);
        const std::vector<std::string> l_lines = l_log.Take();
        EXPECT_THAT(l_lines, testing::Contains("pair disconnected u s"));
        EXPECT_THAT(l_lines, testing::Not(testing::Contains("pair connected u s"))) << "its end was told before";
        EXPECT_EQ(bool(m_user->HasItem("u")), !l_killsFrom);
        m_user->GetItems().Remove();
    }
}

TEST_F(EventTest, TheFarItemMayBeRemovedWhileItsOldNeighbourIsDisplaced) {
    // Connecting a1 to b2 first parts b2 from a2; a handler removes b2 just then, or connects it elsewhere, or
    // completes the very connection.
    for (int l_deed = 0; l_deed < 4; ++l_deed) {
        Item* lp_a1 = m_one->NewItem("a1");
        Item* lp_a2 = m_one->NewItem("a2");
        Item* lp_b2 = m_two->NewItem("b2");
        lp_a2->Connect(lp_b2);
        bool l_isDone = false;
        Reaction l_reaction([&](ConnectionInfo) {
            if (std::exchange(l_isDone, true))
                return;
            if (l_deed == 0)
                lp_b2->Remove();
            else if (l_deed == 1)
                lp_a1->Remove();
            else if (l_deed == 2)
                lp_b2->Connect(lp_a1);
            else
                lp_a1->Disconnect(lp_b2);
        });
        m_two->m_disconnected.AddHandler(l_reaction.ForConnection());
        lp_a1->Connect(lp_b2);
        l_reaction.RemoveDataHandlers();
        if (const ItemPtr l_a1 = m_one->HasItem("a1")) {
            EXPECT_EQ(l_a1["two"].AsString(), l_deed == 2 ? "b2" : "");
        }
        m_data.CheckInvariants();
        m_one->GetItems().Remove();
        m_two->GetItems().Remove();
    }
}

TEST_F(EventTest, AHandlerThatAlwaysReconnectsCannotHoldAnItem) {
    Reaction l_stubborn([&](ConnectionInfo i_info) {
        if (i_info.m_itemFrom->GetType() == m_user)
            i_info.m_itemFrom->Connect(m_status->GetItem("default"));
    });
    m_user->m_disconnected.AddHandler(l_stubborn.ForConnection());
    Item* lp_user = m_user->GetItem("u");
    lp_user->Connect(m_status->GetItem("away"));
    lp_user->Connect(m_status->GetItem("here"));
    EXPECT_EQ((*lp_user)["status"].AsString(), "here") << "what was asked for stands in the end";
    lp_user->Remove();
    EXPECT_FALSE(m_user->HasItem("u"));
    EXPECT_TRUE(m_status->HasItem("default")->IsDisconnectedFromAll());
}

TEST_F(EventTest, RemovalMayBeAskedForAgainAndTakeNeighboursAlong) {
    std::vector<Item*> l_users;
    for (int l_index = 0; l_index < 50; ++l_index) {
        l_users.push_back(m_user->GetItem(l_index));
        l_users.back()->Connect(m_status->GetItem("away"));
    }
    Reaction l_again([](Item* ip_item) { ip_item->Remove(); });
    m_status->m_itemRemoved.AddHandler(l_again.ForItem());
    Reaction l_others([&](ConnectionInfo) { m_user->GetItems().Remove(); });
    m_data.AddDisconnectionEventHandler(m_user, m_status, l_others.ForPair());
    m_status->HasItem("away").Remove();
    EXPECT_EQ(m_user->CountItems(), 0U);
    EXPECT_EQ(m_status->CountItems(), 0U);
}

// The path events.
class PathTest : public testing::Test {
protected:
    PathTest() {
        m_user->RelateToType(m_online, Many, One, false);
        m_user->RelateToType(m_inList, One, One, false);
        m_entry->RelateToType(m_user, Many, One, false);
        m_entry->RelateToType(m_name, Many, One, false);
        m_entry->RelateToType(m_size, Many, One, false);
        m_inList->RelateToType(m_group, Many, Many, false);
    }

    PathNode* Root(std::string_view i_type) { return new PathNode(m_data, i_type); }
    PathNode* OnlineInList(PathNodeRelation i_relation) {
        PathNode* lp_root = Root("user");
        new PathNode(lp_root, "is_online", i_relation);
        new PathNode(lp_root, "in_list", ConnectedCondition);
        return lp_root;
    }

    Data m_data;
    Type* m_user = m_data.NewType("user", true, false, true);
    Type* m_online = m_data.NewType("is_online", false, true, true);
    Type* m_inList = m_data.NewType("in_list", false, true, true);
    Type* m_entry = m_data.NewType("entry", true, true, false);
    Type* m_name = m_data.NewType("name", false, false, true);
    Type* m_size = m_data.NewType("size", false, false, true);
    Type* m_group = m_data.NewType("group", true, false, true);
    EventLog m_log;
};

TEST_F(PathTest, FiresOnceTheLastAttributeIsThere) {
    PathNode* lp_root = Root("entry");
    for (const char* lp_type : {"user", "name", "size"})
        new PathNode(lp_root, lp_type, Connected);
    m_log.ListenTo(lp_root, m_data);
    Item* lp_entry = m_entry->NewItem();
    lp_entry->Connect(m_user->GetItem("bob"));
    m_size->GetItem(5)->Connect(lp_entry);
    EXPECT_THAT(m_log.Take(), IsEmpty());
    m_name->GetItem("song")->Connect(lp_entry);
    EXPECT_THAT(m_log.Take(), ElementsAre("path <entry>"));
    lp_entry->Connect(m_size->GetItem(6));
    EXPECT_THAT(m_log.Take(), ElementsAre("path <entry>")) << "each change of one, while the others are there";
    lp_entry->Disconnect("size");
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(PathTest, NewlyEdgesFireOnTheirOwnChangeOnly) {
    m_log.ListenTo(OnlineInList(NewlyConnected), m_data);
    EventLog l_offline;
    l_offline.ListenTo(OnlineInList(NewlyDisconnected), m_data);
    const ItemPtr l_bob = m_user->GetItem("bob");
    const ItemPtr l_eve = m_user->GetItem("eve");
    l_bob.NewItem("is_online");
    l_bob.NewItem("in_list");
    EXPECT_THAT(m_log.Take(), IsEmpty()) << "an online user is listed";
    l_bob.Disconnect("is_online");
    EXPECT_THAT(l_offline.Take(), ElementsAre("path bob"));
    l_bob.NewItem("is_online");
    l_eve.NewItem("is_online");
    EXPECT_THAT(m_log.Take(), ElementsAre("path bob")) << "eve is not listed";
    m_online->GetGlobalNullItem()->Disconnect(l_bob);
    EXPECT_THAT(l_offline.Take(), ElementsAre("path bob")) << "from either end";
    l_bob.Disconnect("in_list");
    EXPECT_THAT(l_offline.Take(), IsEmpty());
}

TEST_F(PathTest, ARemovedRootIsTold) {
    m_log.ListenTo(OnlineInList(NewlyDisconnected), m_data);
    const ItemPtr l_bob = m_user->GetItem("bob");
    l_bob.NewItem("is_online");
    l_bob.NewItem("in_list");
    l_bob.Remove();
    // Connections go by the address of the Type; a condition that has gone before no longer holds.
    if (std::less<Type*>()(m_online, m_inList))
        EXPECT_THAT(m_log.Take(), ElementsAre("path bob"));
    else
        EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(PathTest, PinnedNodesMatchTheirItemAndNoSuccessorOfIt) {
    PathNode* lp_root = new PathNode(ItemPtr(m_user->GetItem("bob")));
    new PathNode(lp_root, "is_online", NewlyConnected);
    m_log.ListenTo(lp_root, m_data);
    lp_root = Root("in_list");
    new PathNode(lp_root, ItemPtr(m_group->GetItem("friends")), NewlyConnected);
    m_log.ListenTo(lp_root, m_data);

    m_user->GetItem("eve")->NewItem("is_online");
    EXPECT_THAT(m_log.Take(), IsEmpty());
    m_user->GetItem("bob")->NewItem("is_online");
    EXPECT_THAT(m_log.Take(), ElementsAre("path bob"));
    const ItemPtr l_listed = m_user->GetItem("bob")->NewItem("in_list");
    l_listed += m_group->GetItem("foes");
    EXPECT_THAT(m_log.Take(), IsEmpty());
    l_listed += m_group->GetItem("friends");
    EXPECT_THAT(m_log.Take(), ElementsAre("path <in_list>"));

    m_user->GetItem("bob")->Remove();
    for (const char* lp_name : {"x", "bob", "y"})
        m_user->GetItem(lp_name)->NewItem("is_online");
    EXPECT_THAT(m_log.Take(), IsEmpty()) << "another item at the old place is not the pinned one";
}

TEST_F(PathTest, DeepPathsFindTheirRoot) {
    // entry - user - in_list - group: a change at the leaf is told with the entry.
    PathNode* lp_root = Root("entry");
    PathNode* lp_user = new PathNode(lp_root, "user", ConnectedCondition);
    PathNode* lp_listed = new PathNode(lp_user, "in_list", ConnectedCondition);
    new PathNode(lp_listed, "group", NewlyConnected);
    new PathNode(lp_root, "name", ConnectedCondition);
    m_log.ListenTo(lp_root, m_data);
    const ItemPtr l_bob = m_user->GetItem("bob");
    const ItemPtr l_first = m_entry->NewItem();
    const ItemPtr l_second = m_entry->NewItem();
    l_first += l_bob;
    l_second += l_bob;
    l_bob.NewItem("in_list") += m_group->GetItem("a");
    EXPECT_THAT(m_log.Take(), IsEmpty()) << "no entry has a name";
    l_second += m_name->GetItem("song");
    l_bob.NewItem("in_list") += m_group->GetItem("b");
    EXPECT_THAT(m_log.Take(), ElementsAre("path <entry>"));
    l_first += m_name->GetItem("song");
    l_bob.NewItem("in_list") += m_group->GetItem("c");
    EXPECT_EQ(m_log.Take().size(), 1U) << "one root for one change, however many would do";
}

TEST_F(PathTest, PathsOfThePairOutliveOneAnother) {
    auto lp_first = std::make_unique<EventLog>();
    auto lp_second = std::make_unique<EventLog>();
    lp_first->ListenTo(OnlineInList(NewlyConnected), m_data);
    lp_second->ListenTo(OnlineInList(NewlyConnected), m_data);
    const ItemPtr l_bob = m_user->GetItem("bob");
    l_bob.NewItem("in_list");
    l_bob.NewItem("is_online");
    EXPECT_EQ(lp_first->Take().size() + lp_second->Take().size(), 2U);
    lp_first.reset();
    for (int l_round = 0; l_round < 2; ++l_round) {
        l_bob.Disconnect("is_online");
        l_bob.NewItem("is_online");
        EXPECT_EQ(lp_second->Take().size(), 1U);
    }
    lp_second.reset();
    l_bob.Disconnect("is_online");
    l_bob.NewItem("is_online");
    m_log.ListenTo(OnlineInList(NewlyConnected), m_data);
    l_bob.Disconnect("is_online");
    l_bob.NewItem("is_online");
    EXPECT_EQ(m_log.Take().size(), 1U) << "the pair can be watched anew";
    m_log.ListenTo(Root("user"), m_data); // watches nothing and is freed with the store
}

TEST_F(PathTest, PathListenersMayDieInOneAnother) {
    std::vector<std::unique_ptr<Reaction>> l_listeners;
    int l_calls = 0;
    for (int l_index = 0; l_index < 10; ++l_index) {
        l_listeners.push_back(std::make_unique<Reaction>([&](Item* ip_user) {
            ++l_calls;
            l_listeners.clear();
            // The same edge again, inside: all of these paths are found dead and taken down while one is called.
            ip_user->Disconnect("is_online");
            ip_user->NewItem("is_online");
        }));
        PathNode* lp_root = Root("user");
        new PathNode(lp_root, "is_online", NewlyConnected);
        m_data.AddPathEventHandler(lp_root, l_listeners.back()->ForItem());
    }
    m_user->GetItem("bob")->NewItem("is_online");
    EXPECT_EQ(l_calls, 1);
}

} // namespace
