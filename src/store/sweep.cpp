// The sweep: what no root item reaches, and what has lost an owner, goes.
//
// By definition it puts every item in a working set, lets each root item take out what chains of connections to
// items of non-root Types lead to (no Type twice on a chain, an item walked on from only when first reached), and
// removes what is left. Three shortcuts give the same answer without touching most items. Root items always take
// out themselves, so they are in no set. Most attribute Types are related to root Types alone; their items end every
// chain, so each of them is reached exactly if it has a neighbour. And a leaf Type, which is related to a single other
// Type, is come to from there alone, so that its items end every chain, too: each is reached exactly if a neighbour is.
// Only Types among which chains can run on are walked as defined, in the defined order: Types by name, items by
// address, connected Types by address.
#include "store/data.h"
#include "store/neighbours_walk.h"

#include <algorithm>

class CleanSweep {
public:
    explicit CleanSweep(Data& i_data) : m_data(i_data) {}

    int Run();

private:
    using Relations = std::vector<const Relation*>;

    void ForgetBorn();
    ItemList FindOwnerless() const;
    bool LacksOwner(const Item& i_item, const Relations& i_owners) const;
    bool IsLeaf(const Type& i_type) const;
    bool IsWalked(const Type& i_type) const;
    void MarkReachable();
    void MarkItemConnections(Item* ip_item);
    ItemList FindUnreached() const;
    void AddUnreached(const Type& i_type, ItemList& io_items) const;
    static bool IsReached(const Item& i_item);
    static bool IsReachedFrom(const Item& i_item, const Relation& i_stem);
    int RemoveAll(ItemList& io_items, bool i_stopAfterInnerSweep);

    Data& m_data;
    // A handler that sweeps in the midst of this sweep has done the rest of its work.
    unsigned m_sweepsEndedBefore = 0;
    // Whether chains may be cut short as above: not while a connection stands at one end only, or among items that
    // came during the sweep, whose connections reach nothing.
    bool m_isShort = true;
};

int Data::RemoveDisconnectedItems() {
    return CleanSweep(*this).Run();
}

int CleanSweep::Run() {
    const Data::Operation l_operation(m_data);
    ForgetBorn();
    const bool l_isInner = m_data.m_isSweeping;
    m_data.m_isSweeping = true;
    m_sweepsEndedBefore = m_data.m_sweepsEnded;

    ItemList l_ownerless = FindOwnerless();
    int l_removed = RemoveAll(l_ownerless, false);
    if (m_sweepsEndedBefore == m_data.m_sweepsEnded) {
        MarkReachable();
        ItemList l_unreached = FindUnreached();
        l_removed += RemoveAll(l_unreached, true);
    }

    m_data.m_isSweeping = l_isInner;
    ++m_data.m_sweepsEnded;
    ForgetBorn();
    return l_removed;
}

void CleanSweep::ForgetBorn() {
    for (Item* lp_item : m_data.m_bornInSweep)
        lp_item->Unset(Item::BornInSweep);
    m_data.m_bornInSweep.clear();
}

ItemList CleanSweep::FindOwnerless() const {
    ItemList l_items;
    for (const auto& [l_name, lp_type] : m_data.m_types) {
        Relations l_owners;
        for (const auto& l_relation : lp_type->m_relations) {
            if (l_relation->info.m_ownedBy)
                l_owners.push_back(l_relation.get());
        }
        if (l_owners.empty())
            continue;
        lp_type->m_items.ForEach([&](Item* ip_item) {
            if (LacksOwner(*ip_item, l_owners))
                l_items.push_back(ip_item);
        });
    }
    return l_items;
}

bool CleanSweep::LacksOwner(const Item& i_item, const Relations& i_owners) const {
    return std::any_of(i_owners.begin(), i_owners.end(), [&i_item](const Relation* ip_relation) {
        const Neighbours& l_owners = i_item.Slot(ip_relation->slot);
        STORE_CONTRACT(l_owners.IsEmpty() || l_owners.Size() > 0,
                       "lp_item->m_typeItemsMap[*l_typeIterator].size() > 0");
        return l_owners.IsEmpty();
    });
}

bool CleanSweep::IsLeaf(const Type& i_type) const {
    if (!m_isShort || i_type.m_isRoot || i_type.m_relations.size() != 1)
        return false;
    const Type& l_stem = *i_type.m_relations.front()->other;
    return !l_stem.m_isRoot && l_stem.m_relations.size() > 1;
}

bool CleanSweep::IsWalked(const Type& i_type) const {
    return !i_type.m_isRoot && !IsLeaf(i_type) &&
           (!m_isShort || std::any_of(i_type.m_relations.begin(), i_type.m_relations.end(),
                                      [](const auto& i_relation) { return !i_relation->other->m_isRoot; }));
}

void CleanSweep::MarkReachable() {
    m_isShort = m_data.m_bornInSweep.empty() && m_data.m_halfLinks.empty();
    for (const auto& [l_name, lp_type] : m_data.m_types) {
        lp_type->m_isWalked = IsWalked(*lp_type);
        if (lp_type->m_isWalked) {
            lp_type->m_items.ForEach([](Item* ip_item) {
                if (!ip_item->Is(Item::BornInSweep))
                    ip_item->Set(Item::Unmarked);
            });
        }
    }
    for (const auto& [l_name, lp_type] : m_data.m_types) {
        if (!lp_type->m_isRoot)
            continue;
        Relations l_ways;
        for (const Relation* lp_relation : lp_type->m_relationsByAddress) {
            if (lp_relation->other->m_isWalked && lp_relation->other->CountItems() > 0)
                l_ways.push_back(lp_relation);
        }
        if (l_ways.empty())
            continue;
        lp_type->m_items.ForEach([&](const Item* ip_item) {
            if (ip_item->Is(Item::BornInSweep))
                return;
            for (const Relation* lp_relation : l_ways)
                ip_item->Slot(lp_relation->slot).ForEach([this](Item* ip_other) { MarkItemConnections(ip_other); });
        });
    }
}

void CleanSweep::MarkItemConnections(Item* ip_item) {
    Type& l_type = *ip_item->mp_type;
    if (!ip_item->Is(Item::Unmarked) || l_type.m_isOnChain)
        return;
    l_type.m_isOnChain = true;
    ip_item->Unset(Item::Unmarked);
    for (const Relation* lp_relation : l_type.m_relationsByAddress) {
        if (lp_relation->other->m_isWalked) {
            std::as_const(*ip_item).Slot(lp_relation->slot).ForEach([this](Item* ip_other) {
                MarkItemConnections(ip_other);
            });
        }
    }
    l_type.m_isOnChain = false;
}

// The leaves first: to see which of the others are reached.
ItemList CleanSweep::FindUnreached() const {
    ItemList l_items;
    for (const bool l_areLeaves : {true, false}) {
        for (const auto& [l_name, lp_type] : m_data.m_types) {
            if (!lp_type->m_isRoot && IsLeaf(*lp_type) == l_areLeaves)
                AddUnreached(*lp_type, l_items);
        }
    }
    return l_items;
}

void CleanSweep::AddUnreached(const Type& i_type, ItemList& io_items) const {
    const Relation* const lp_stem = IsLeaf(i_type) ? i_type.m_relations.front().get() : nullptr;
    i_type.m_items.ForEach([&](Item* ip_item) {
        if (i_type.m_isWalked ? !ip_item->Is(Item::Unmarked)
            : lp_stem         ? IsReachedFrom(*ip_item, *lp_stem)
                              : IsReached(*ip_item))
            return;
        ip_item->Unset(Item::Unmarked);
        io_items.push_back(ip_item);
    });
}

bool CleanSweep::IsReached(const Item& i_item) {
    return !i_item.IsDisconnectedFromAll();
}

bool CleanSweep::IsReachedFrom(const Item& i_item, const Relation& i_stem) {
    return i_item.Slot(i_stem.slot).AnyOf([](const Item* ip_other) { return !ip_other->Is(Item::Unmarked); });
}

int CleanSweep::RemoveAll(ItemList& io_items, bool i_stopAfterInnerSweep) {
    std::sort(io_items.begin(), io_items.end(), std::less<Item*>());
    int l_removed = 0;
    for (Item* lp_item : io_items) {
        if (i_stopAfterInnerSweep && m_sweepsEndedBefore != m_data.m_sweepsEnded)
            break;
        // A handler may have removed it meanwhile, or be about to.
        if (lp_item->Is(Item::Removed) || lp_item->Is(Item::Removing))
            continue;
        lp_item->Remove();
        ++l_removed;
    }
    return l_removed;
}
