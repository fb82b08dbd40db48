// What must hold of the graph between operations. Test builds check what each outermost operation has touched, and
// everything once as much was done as that costs, so that the checks never dominate.
#include "store/data.h"
#include "store/neighbours_walk.h"

#include <algorithm>

class InvariantCheck {
public:
    explicit InvariantCheck(const Data& i_data) : m_data(i_data) {}

    void Everything();
    // Sets larger than the limit are left to the check of the items in them.
    void One(const Item& i_item, std::size_t i_largestSet);

    std::size_t Work() const { return m_work; }

private:
    void Connections(const Item& i_item, const Relation& i_relation);

    const Data& m_data;
    std::size_t m_work = 0; // items and connections seen
};

void InvariantCheck::Everything() {
    for (const auto& [l_name, lp_type] : m_data.m_types) {
        std::size_t l_count = 0;
        lp_type->m_items.ForEach([&, l_owner = lp_type](const Item* ip_item) {
            STORE_CONTRACT(ip_item->mp_type == l_owner, "lp_item->mp_type == lp_type");
            One(*ip_item, SIZE_MAX);
            ++l_count;
        });
        STORE_CONTRACT(l_count == lp_type->m_items.Count(), "l_count == lp_type->m_items.size()");
        STORE_CONTRACT(lp_type->m_values.size() == (lp_type->m_isNull ? 0 : l_count),
                       "lp_type->m_valueItems.size() == l_count");
    }
}

void InvariantCheck::One(const Item& i_item, std::size_t i_largestSet) {
    ++m_work;
    STORE_CONTRACT(!i_item.Is(Item::Removing) && !i_item.Is(Item::Removed) && !i_item.Is(Item::Unmarked) &&
                       !i_item.Is(Item::BornInSweep),
                   "lp_item is at rest");
    const Type& l_type = *i_item.mp_type;
    STORE_CONTRACT(l_type.m_isNull ? i_item.AsView().empty() : l_type.FindItem(i_item.AsView()) == &i_item,
                   "l_key == lp_item->m_value");
    for (const auto& l_relation : l_type.m_relations) {
        if (i_item.Slot(l_relation->slot).Size() <= i_largestSet)
            Connections(i_item, *l_relation);
    }
}

void InvariantCheck::Connections(const Item& i_item, const Relation& i_relation) {
    const Neighbours& l_neighbours = i_item.Slot(i_relation.slot);
    STORE_CONTRACT(l_neighbours.IsWellFormed(), "l_items is well formed");
    // Of a Type related to itself one slot serves both ends, which need not allow the same.
    const bool l_isOne = i_relation.info.m_typeTo == ::One &&
                         (i_relation.other != i_item.mp_type || i_relation.info.m_typeFrom == ::One);
    STORE_CONTRACT(!l_isOne || l_neighbours.Size() <= 1, "l_relation.m_typeTo == Many || l_items.size() <= 1");
    l_neighbours.ForEach([&](const Item* ip_other) {
        ++m_work;
        STORE_CONTRACT(ip_other->mp_type == i_relation.other, "lp_other->mp_type == l_type");
        STORE_CONTRACT(ip_other->Slot(i_relation.farSlot).Contains(&i_item), "lp_other->IsConnected(lp_item)");
    });
}

void Data::CheckInvariants() const {
    InvariantCheck(*this).Everything();
}

void Data::CheckTouched() {
    constexpr std::size_t c_largestSet = 32;
    constexpr std::size_t c_leastWork = 64;
    std::sort(m_touched.begin(), m_touched.end(), std::less<Item*>());
    m_touched.erase(std::unique(m_touched.begin(), m_touched.end()), m_touched.end());
    InvariantCheck l_check(*this);
    for (const Item* lp_item : m_touched) {
        if (!lp_item->Is(Item::Removed))
            l_check.One(*lp_item, c_largestSet);
    }
    m_touched.clear();
    m_workSinceCheck += l_check.Work();
    if (m_workSinceCheck > std::max(c_leastWork, m_lastCheckWork)) {
        InvariantCheck l_fullCheck(*this);
        l_fullCheck.Everything();
        m_lastCheckWork = l_fullCheck.Work();
        m_workSinceCheck = 0;
    }
}
