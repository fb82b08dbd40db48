// The sweep, against its definition taken literally, and with handlers that interfere.
#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace {

// The definition, over sets of addresses, without removing anything.
class ReferenceSweep {
public:
    explicit ReferenceSweep(const Data& i_data) { i_data.GetTypes(m_types); }

    // What is to go.
    std::set<Item*> Run() {
        std::set<Item*> l_removed;
        for (const auto& [l_name, lp_type] : m_types) {
            std::map<Type*, RelationInfo> l_relations;
            lp_type->GetRelatedTypes(l_relations);
            for (Item* lp_item : lp_type->GetItems()) {
                bool l_isOwned = true;
                for (const auto& [lp_other, l_relation] : l_relations)
                    l_isOwned = l_isOwned && (!l_relation.m_ownedBy || lp_item->IsConnected(lp_other->GetName()));
                (l_isOwned ? m_unmarked : l_removed).insert(lp_item);
            }
        }
        for (Item* lp_item : l_removed)
            m_gone.insert(lp_item);
        for (const auto& [l_name, lp_type] : m_types) {
            if (lp_type->IsRoot()) {
                std::set<Type*> l_visited;
                for (Item* lp_item : lp_type->GetItems()) {
                    if (!m_gone.contains(lp_item))
                        Mark(lp_item, l_visited);
                }
            }
        }
        l_removed.insert(m_unmarked.begin(), m_unmarked.end());
        return l_removed;
    }

private:
    void Mark(Item* ip_item, std::set<Type*>& io_visited) {
        if (!m_unmarked.contains(ip_item) || io_visited.contains(ip_item->GetType()))
            return;
        io_visited.insert(ip_item->GetType());
        m_unmarked.erase(ip_item);
        std::map<Type*, ItemSet> l_connected;
        ip_item->GetConnectedItems(l_connected);
        for (const auto& [lp_type, l_items] : l_connected) {
            if (!lp_type->IsRoot()) {
                for (Item* lp_item : l_items) {
                    if (!m_gone.contains(lp_item))
                        Mark(lp_item, io_visited);
                }
            }
        }
        io_visited.erase(ip_item->GetType());
    }

    std::map<std::string, Type*> m_types;
    std::set<Item*> m_unmarked;
    std::set<Item*> m_gone;
};

class Random {
public:
    explicit Random(unsigned i_seed) : m_engine(i_seed) {}
    std::size_t Below(std::size_t i_limit) { return m_engine() % i_limit; }
    bool Chance(int i_percent) { return Below(100) < static_cast<std::size_t>(i_percent); }

private:
    std::minstd_rand m_engine;
};

void FillAtRandom(Data& o_data, Random& i_random) {
    std::vector<Type*> l_types;
    for (int l_index = 0; l_index < 7; ++l_index) {
        const std::string l_name = "t" + std::to_string(i_random.Below(1000)) + '_' + std::to_string(l_index);
        l_types.push_back(o_data.NewType(l_name, i_random.Chance(40), false, true));
    }
    for (Type* lp_from : l_types) {
        for (Type* lp_to : l_types) {
            if (i_random.Chance(30) && !lp_from->IsRelated(lp_to))
                lp_from->RelateToType(lp_to, OneOrMany(i_random.Below(2)), OneOrMany(i_random.Below(2)),
                                      lp_from != lp_to && i_random.Chance(15));
        }
    }
    std::vector<Item*> l_items;
    for (int l_index = 0; l_index < 60; ++l_index)
        l_items.push_back(l_types[i_random.Below(l_types.size())]->GetItem(l_index));
    for (int l_try = 0; l_try < 400; ++l_try) {
        Item* lp_from = l_items[i_random.Below(l_items.size())];
        Item* lp_to = l_items[i_random.Below(l_items.size())];
        if (lp_from != lp_to && lp_from->GetType()->IsRelated(lp_to->GetType()) && i_random.Chance(50))
            lp_from->Connect(lp_to);
    }
}

TEST(SweepTest, AgreesWithItsDefinitionOnRandomGraphs) {
    std::size_t l_swept = 0;
    std::size_t l_kept = 0;
    for (unsigned l_seed = 1; l_seed <= 400; ++l_seed) {
        Random l_random(l_seed);
        Data l_data;
        FillAtRandom(l_data, l_random);
        const std::set<Item*> l_expected = ReferenceSweep(l_data).Run();
        std::set<Item*> l_removed;
        Reaction l_recorder([&l_removed](Item* ip_item) { l_removed.insert(ip_item); });
        l_data.m_itemRemoved.AddHandler(l_recorder.ForItem());
        ASSERT_EQ(l_data.RemoveDisconnectedItems(), static_cast<int>(l_expected.size())) << "seed " << l_seed;
        ASSERT_EQ(l_removed, l_expected) << "seed " << l_seed;
        std::map<std::string, Type*> l_types;
        l_data.GetTypes(l_types);
        for (const auto& [l_name, lp_type] : l_types)
            l_kept += lp_type->CountItems();
        l_swept += l_expected.size();
    }
    EXPECT_GT(l_swept, 1000U);
    EXPECT_GT(l_kept, 1000U);
}

class SmallSweepTest : public testing::Test {
protected:
    SmallSweepTest() {
        m_user->RelateToType(m_status, Many, One, false);
        m_user->RelateToType(m_entry, One, Many, true);
        m_user->RelateToType(m_tag, Many, Many, false);
        m_tag->RelateToType(m_colour, Many, Many, false);
        m_colour->RelateToType(m_shade, Many, Many, false);
    }

    Data m_data;
    Type* m_user = m_data.NewType("user", true, false, true);
    Type* m_entry = m_data.NewType("entry", true, true, false);
    Type* m_status = m_data.NewType("status", false, false, true);
    Type* m_tag = m_data.NewType("tag", false, false, true);
    Type* m_colour = m_data.NewType("colour", false, false, true);
    Type* m_shade = m_data.NewType("shade", false, false, true);
};

TEST_F(SmallSweepTest, KeepsWhatARootReachesAndOwnersHold) {
    const ItemPtr l_bob = m_user->GetItem("bob");
    l_bob += m_status->GetItem("away");
    l_bob += m_status->GetItem("here"); // "away" has lost its last owner
    const ItemPtr l_owned = l_bob.NewItem("entry");
    m_entry->NewItem(); // a root, but owned by nobody
    l_bob += m_tag->GetItem("t1");
    m_tag->GetItem("t1")->Connect(m_colour->GetItem("red"));
    m_tag->GetItem("t2")->Connect(m_colour->GetItem("red")); // reached only by a chain tag, colour, tag
    m_colour->GetItem("red")->Connect(m_shade->GetItem("dark"));
    m_user->GetItem("lonely"); // a root
    EXPECT_EQ(m_data.RemoveDisconnectedItems(), 3);
    EXPECT_FALSE(m_status->HasItem("away") || m_tag->HasItem("t2"));
    EXPECT_TRUE(m_user->HasItem("lonely") && m_shade->HasItem("dark"));
    EXPECT_EQ(ItemPtr(m_entry->GetItems()), l_owned);
    EXPECT_EQ(m_data.RemoveDisconnectedItems(), 0);
    l_bob.Disconnect(l_owned);
    EXPECT_EQ(m_data.RemoveDisconnectedItems(), 1);
}

TEST_F(SmallSweepTest, HandlersMayRemoveWhatTheSweepHolds) {
    for (Type* lp_type : {m_status, m_tag, m_shade}) {
        for (int l_index = 0; l_index < 200; ++l_index)
            lp_type->GetItem(l_index);
    }
    // The first removal takes all others of its Type along, and one of another Type each.
    Reaction l_greedy([&](Item* ip_item) {
        ip_item->GetType()->GetItems().Remove();
        if (const ItemSet l_others = m_tag->GetItems(); !l_others.empty())
            (*l_others.begin())->Remove();
    });
    m_status->m_itemRemoved.AddHandler(l_greedy.ForItem());
    m_data.RemoveDisconnectedItems();
    EXPECT_EQ(m_status->CountItems() + m_tag->CountItems() + m_shade->CountItems(), 0U);
}

TEST_F(SmallSweepTest, ItemsBornInTheSweepStay) {
    m_entry->NewItem(); // ownerless: goes first
    m_status->GetItem("kept by a newcomer only");
    m_user->GetItem("old")->Connect(m_status->GetItem("kept"));
    Reaction l_mother([&](Item*) {
        m_user->GetItem("new")->Connect(m_status->HasItem("kept by a newcomer only"));
        m_status->GetItem("newborn");
    });
    m_entry->m_itemRemoved.AddHandler(l_mother.ForItem());
    EXPECT_EQ(m_data.RemoveDisconnectedItems(), 2) << "a newcomer is no root of the sweep that it came in";
    EXPECT_TRUE(m_status->HasItem("newborn") && m_status->HasItem("kept"));
    EXPECT_EQ(m_data.RemoveDisconnectedItems(), 1) << "but an ordinary item afterwards";
}

TEST_F(SmallSweepTest, ASweepWithinTheSweepDoesTheRest) {
    for (Type* lp_type : {m_status, m_tag}) {
        for (int l_index = 0; l_index < 50; ++l_index)
            lp_type->GetItem(l_index);
    }
    m_entry->NewItem();
    m_entry->NewItem();
    m_user->GetItem("bob")->Connect(m_tag->GetItem(7));
    int l_inner = 0;
    Reaction l_sweeper([&](Item*) { l_inner += m_data.RemoveDisconnectedItems(); });
    m_data.m_itemRemoved.AddHandler(l_sweeper.ForItem());
    const int l_outer = m_data.RemoveDisconnectedItems();
    EXPECT_EQ(m_status->CountItems(), 0U);
    EXPECT_EQ(m_tag->CountItems(), 1U);
    EXPECT_EQ(m_entry->CountItems(), 0U);
    EXPECT_LE(l_outer + l_inner, 101);
    EXPECT_EQ(m_data.RemoveDisconnectedItems(), 0);
}

// Handlers that do something at random, several levels deep, on every event. What is shown is that nothing is
// touched after its end (with the sanitizers) and that the graph agrees with itself at rest.
TEST(ChaosTest, NothingThatHandlersDoBreaksTheGraph) {
    for (unsigned l_seed = 1; l_seed <= 60; ++l_seed) {
        Random l_random(l_seed);
        Data l_data;
        FillAtRandom(l_data, l_random);
        std::map<std::string, Type*> l_typeMap;
        l_data.GetTypes(l_typeMap);
        std::vector<Type*> l_types;
        for (const auto& [l_name, lp_type] : l_typeMap)
            l_types.push_back(lp_type);
        const auto l_any = [&]() -> Item* {
            const ItemSet l_items = l_types[l_random.Below(l_types.size())]->GetItems();
            return l_items.empty() ? nullptr
                                   : *std::next(l_items.begin(), static_cast<long>(l_random.Below(l_items.size())));
        };
        int l_depth = 0;
        const auto l_act = [&](Item* ip_given) {
            Item* lp_item = l_random.Chance(50) && ip_given != nullptr ? ip_given : l_any();
            if (lp_item == nullptr || l_depth > 3)
                return;
            ++l_depth;
            const std::size_t l_deed = l_random.Below(100);
            Item* lp_other = l_any();
            if (l_deed < 10) {
                lp_item->Remove();
            } else if (l_deed < 12) {
                l_data.RemoveDisconnectedItems();
            } else if (l_deed < 30) {
                l_types[l_random.Below(l_types.size())]->GetItem(static_cast<int>(l_random.Below(100)));
            } else if (l_deed < 45) {
                lp_item->Disconnect(l_types[l_random.Below(l_types.size())]->GetName());
            } else if (lp_other != nullptr && l_deed < 55) {
                lp_item->Disconnect(lp_other);
            } else if (lp_other != nullptr && lp_item->GetType()->IsRelated(lp_other->GetType())) {
                lp_item->Connect(lp_other);
            }
            --l_depth;
        };
        Reaction l_items([&](Item* ip_item) {
            if (l_random.Chance(20))
                l_act(ip_item);
        });
        Reaction l_connections([&](ConnectionInfo i_info) {
            if (l_random.Chance(20))
                l_act(l_random.Chance(50) ? i_info.m_itemFrom : i_info.m_itemTo);
        });
        for (Type* lp_type : l_types) {
            lp_type->m_itemAdded.AddHandler(l_items.ForItem());
            lp_type->m_itemRemoved.AddHandler(l_items.ForItem());
            lp_type->m_connected.AddHandler(l_connections.ForConnection());
            lp_type->m_disconnected.AddHandler(l_connections.ForConnection());
            for (Type* lp_other : l_types) {
                if (!lp_type->IsRelated(lp_other))
                    continue;
                l_data.AddConnectionEventHandler(lp_type, lp_other, l_connections.ForPair());
                l_data.AddDisconnectionEventHandler(lp_type, lp_other, l_connections.ForPair());
                auto* lp_root = new PathNode(l_data, lp_type->GetName());
                new PathNode(lp_root, lp_other->GetName(), l_random.Chance(50) ? NewlyDisconnected : Connected);
                l_data.AddPathEventHandler(lp_root, l_items.ForItem());
            }
        }
        for (int l_step = 0; l_step < 200; ++l_step)
            l_act(nullptr);
        l_data.CheckInvariants();
    }
}

} // namespace
