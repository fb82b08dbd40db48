// Random operations on the store and on a literal model of it, compared in results and in events after each step.
#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace {

// What the store must do, written down with a map of sets for each item.
class Model {
public:
    using Lines = std::vector<std::string>;

    void Connect(Item* ip_from, Item* ip_to) {
        if (m_neighbours[ip_from][ip_to->GetType()].contains(ip_to))
            return;
        const RelationInfo l_relation = ip_from->GetType()->GetRelation(ip_to->GetType());
        ConnectEnd(ip_from, ip_to, l_relation.m_typeTo);
        ConnectEnd(ip_to, ip_from, l_relation.m_typeFrom);
        Note("connected", ip_from, ip_to);
    }
    void Disconnect(Item* ip_from, Item* ip_to) {
        m_neighbours[ip_from][ip_to->GetType()].erase(ip_to);
        m_neighbours[ip_to][ip_from->GetType()].erase(ip_from);
        Note("disconnected", ip_from, ip_to);
    }
    void Disconnect(Item* ip_from, Type* ip_type) {
        const std::set<Item*> l_copy = m_neighbours[ip_from][ip_type];
        for (Item* lp_item : l_copy)
            Disconnect(ip_from, lp_item);
    }
    void Remove(Item* ip_item) {
        m_lines.push_back("any removed " + EventLog::Name(ip_item));
        const auto l_copy = m_neighbours[ip_item];
        for (const auto& [lp_type, l_items] : l_copy) {
            for (Item* lp_other : l_items)
                Disconnect(ip_item, lp_other);
        }
        m_neighbours.erase(ip_item);
    }
    const std::set<Item*>& Neighbours(Item* ip_item, Type* ip_type) { return m_neighbours[ip_item][ip_type]; }
    Lines Take() { return std::exchange(m_lines, {}); }

private:
    void ConnectEnd(Item* ip_near, Item* ip_far, OneOrMany i_cardinality) {
        std::set<Item*>& l_items = m_neighbours[ip_near][ip_far->GetType()];
        if (i_cardinality == One && !l_items.empty())
            Disconnect(ip_near, *l_items.begin());
        m_neighbours[ip_near][ip_far->GetType()].insert(ip_far);
    }
    void Note(const std::string& i_what, const Item* ip_from, const Item* ip_to) {
        m_lines.push_back("any " + i_what + ' ' + EventLog::Name(ip_from) + ' ' + EventLog::Name(ip_to));
    }

    std::map<Item*, std::map<Type*, std::set<Item*>>> m_neighbours;
    Lines m_lines;
};

class ModelTest : public testing::TestWithParam<unsigned> {
protected:
    ModelTest() : m_random(GetParam()) {
        const OneOrMany l_ends[][2] = {{One, One}, {One, Many}, {Many, One}, {Many, Many}};
        for (int l_index = 0; l_index < 6; ++l_index)
            m_types.push_back(m_data.NewType("t" + std::to_string(l_index), true, false, true));
        int l_kind = 0;
        for (std::size_t l_from = 0; l_from < m_types.size(); ++l_from) {
            for (std::size_t l_to = l_from + 1; l_to < m_types.size(); ++l_to, ++l_kind)
                m_types[l_from]->RelateToType(m_types[l_to], l_ends[l_kind % 4][0], l_ends[l_kind % 4][1], false);
        }
        m_log.ListenTo(m_data);
    }

    std::size_t Below(std::size_t i_limit) { return m_random() % i_limit; }
    void MakeItem() {
        // Most items go to one Type, so that the sets that others have of it pass through all their layouts.
        Type* lp_type = m_types[Below(3) == 0 ? Below(m_types.size()) : 0];
        m_items.push_back(lp_type->GetItem(m_nextValue++));
        m_log.Take();
    }
    void Step();
    void CompareAll();

    std::minstd_rand m_random;
    Data m_data;
    std::vector<Type*> m_types;
    std::vector<Item*> m_items;
    int m_nextValue = 0;
    EventLog m_log;
    Model m_model;
};

void ModelTest::Step() {
    const std::size_t l_place = Below(m_items.size());
    Item* lp_from = m_items[l_place];
    Item* lp_to = m_items[Below(8) == 0 ? Below(m_items.size()) : Below(std::min<std::size_t>(20, m_items.size()))];
    const std::size_t l_deed = Below(100);
    if (l_deed < 70 && lp_from->GetType() != lp_to->GetType()) {
        m_model.Connect(lp_from, lp_to);
        lp_from->Connect(lp_to);
    } else if (l_deed < 90 && lp_from->GetType() != lp_to->GetType()) {
        m_model.Disconnect(lp_from, lp_to);
        lp_from->Disconnect(lp_to);
    } else if (l_deed < 92) {
        Type* lp_type = m_types[Below(m_types.size())];
        m_model.Disconnect(lp_from, lp_type);
        lp_from->Disconnect(lp_type->GetName());
    } else if (l_deed < 94 && m_items.size() > 50) {
        m_model.Remove(lp_from);
        lp_from->Remove();
        m_items.erase(m_items.begin() + static_cast<long>(l_place));
    } else {
        MakeItem();
    }
}

void ModelTest::CompareAll() {
    for (Item* lp_item : m_items) {
        for (Type* lp_type : m_types) {
            const std::set<Item*>& l_expected = m_model.Neighbours(lp_item, lp_type);
            if (lp_type == lp_item->GetType())
                continue;
            const ItemSet l_items = lp_item->GetItems(lp_type->GetName());
            ASSERT_TRUE(std::equal(l_items.begin(), l_items.end(), l_expected.begin(), l_expected.end()));
            ASSERT_EQ(lp_item->CountItems(lp_type->GetName()), l_expected.size());
        }
    }
    for (int l_try = 0; l_try < 20; ++l_try) {
        Item* lp_first = m_items[Below(m_items.size())];
        Item* lp_second = m_items[Below(m_items.size())];
        Type* lp_type = m_types[Below(m_types.size())];
        std::set<Item*> l_expected;
        for (Item* lp_item : m_model.Neighbours(lp_first, lp_type)) {
            if (m_model.Neighbours(lp_second, lp_type).contains(lp_item))
                l_expected.insert(lp_item);
        }
        const ItemSet l_common = m_data.GetItems(lp_first, lp_second, lp_type->GetName());
        ASSERT_TRUE(std::equal(l_common.begin(), l_common.end(), l_expected.begin(), l_expected.end()));
    }
}

TEST_P(ModelTest, BehavesLikeTheModel) {
    for (int l_index = 0; l_index < 120; ++l_index)
        MakeItem();
    for (int l_step = 0; l_step < 6000; ++l_step) {
        Step();
        ASSERT_EQ(m_log.Take(), m_model.Take()) << "step " << l_step;
        if (l_step % 1000 == 999)
            CompareAll();
    }
    m_data.CheckInvariants();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ModelTest, testing::Values(1U, 2U, 3U, 4U));

TEST(NeighboursTest, HoldsManyAndFewInOrder) {
    // A hub that grows past every layout and shrinks again, in rising, falling and random order.
    for (const int l_order : {0, 1, 2}) {
        Data l_data;
        Type* lp_hubs = l_data.NewType("hub", true, false, true);
        Type* lp_spokes = l_data.NewType("spoke", true, false, true);
        lp_hubs->RelateToType(lp_spokes, Many, Many, false);
        Item* lp_hub = lp_hubs->GetItem("hub");
        std::vector<Item*> l_spokes;
        for (int l_index = 0; l_index < 3000; ++l_index)
            l_spokes.push_back(lp_spokes->GetItem(l_index));
        std::sort(l_spokes.begin(), l_spokes.end(), std::less<Item*>());
        if (l_order == 1)
            std::reverse(l_spokes.begin(), l_spokes.end());
        else if (l_order == 2)
            std::shuffle(l_spokes.begin(), l_spokes.end(), std::minstd_rand(7));
        for (Item* lp_spoke : l_spokes)
            lp_spoke->Connect(lp_hub);
        EXPECT_EQ(lp_hub->CountItems("spoke"), l_spokes.size());
        EXPECT_TRUE(lp_hub->GetItems("spoke") == lp_spokes->GetItems());
        l_data.CheckInvariants();
        std::size_t l_left = l_spokes.size();
        for (Item* lp_spoke : l_spokes) {
            lp_hub->Disconnect(lp_spoke);
            ASSERT_FALSE(lp_spoke->IsConnected(lp_hub));
            ASSERT_EQ(lp_hub->CountItems("spoke"), --l_left);
        }
        EXPECT_TRUE(lp_hub->IsDisconnectedFromAll());
    }
}

} // namespace
