#include "store/item_set.h"

#include <algorithm>
#include <utility>

#include "store/data.h"
#include "store/neighbours_walk.h"

namespace {

constexpr auto c_before = std::less<Item*>();

template <class Key>
ItemList Sorted(std::vector<std::pair<Key, Item*>>& io_keyed, bool i_ascending) {
    std::stable_sort(io_keyed.begin(), io_keyed.end(),
                     [](const auto& i_left, const auto& i_right) { return i_left.first < i_right.first; });
    ItemList l_list;
    l_list.reserve(io_keyed.size());
    for (const auto& l_entry : io_keyed)
        l_list.push_back(l_entry.second);
    if (!i_ascending)
        std::reverse(l_list.begin(), l_list.end());
    return l_list;
}

} // namespace

bool ItemSet::insert(Item* ip_item) {
    return m_items.insert(ip_item).second;
}

void ItemSet::Assign(const Neighbours& i_neighbours) {
    m_items.clear();
    i_neighbours.ForEach([this](Item* ip_item) { Append(ip_item); });
}

Data* ItemSet::Store() const {
    return m_items.empty() ? nullptr : (*m_items.begin())->GetType()->GetData();
}

void ItemSet::Add(const ItemSet& i_items) {
    if (i_items.size() > size()) {
        *this = i_items + *this;
        return;
    }
    for (Item* lp_item : i_items)
        insert(lp_item);
}

ItemSet ItemSet::operator+(const ItemSet& i_items) const {
    ItemSet l_result(size() >= i_items.size() ? *this : i_items);
    l_result.Add(size() >= i_items.size() ? i_items : *this);
    return l_result;
}

ItemSet ItemSet::Common(const ItemSet& i_items) const {
    ItemSet l_result;
    auto l_left = begin();
    auto l_right = i_items.begin();
    while (l_left != end() && l_right != i_items.end()) {
        if (c_before(*l_left, *l_right)) {
            ++l_left;
        } else if (c_before(*l_right, *l_left)) {
            ++l_right;
        } else {
            l_result.Append(*l_left);
            ++l_left;
            ++l_right;
        }
    }
    return l_result;
}

ItemSet ItemSet::Minus(const ItemSet& i_items) const {
    ItemSet l_result;
    for (Item* lp_item : m_items) {
        if (!i_items.contains(lp_item))
            l_result.Append(lp_item);
    }
    return l_result;
}

ItemSet ItemSet::Connected(const ItemSet& i_items) const {
    // The connections of the smaller set's items are walked and looked up in the larger.
    ItemSet l_result;
    const bool l_isSmaller = size() <= i_items.size();
    for (const Item* lp_item : l_isSmaller ? *this : i_items) {
        for (const auto& l_relation : lp_item->GetType()->m_relations)
            CollectConnected(*lp_item, *l_relation, l_isSmaller ? i_items : *this, l_isSmaller, l_result);
    }
    return l_result;
}

void ItemSet::CollectConnected(const Item& i_item, const Relation& i_relation, const ItemSet& i_others, bool i_takeItem,
                               ItemSet& o_result) const {
    const Neighbours& l_neighbours = i_item.Slot(i_relation.slot);
    if (l_neighbours.IsEmpty())
        return;
    const auto l_take = [&](Item* ip_other) {
        o_result.insert(i_takeItem ? const_cast<Item*>(&i_item) : ip_other);
        return i_takeItem; // one is enough
    };
    if (l_neighbours.Size() <= i_others.size()) {
        l_neighbours.AnyOf([&](Item* ip_other) { return i_others.contains(ip_other) && l_take(ip_other); });
        return;
    }
    for (Item* lp_other : i_others) {
        if (l_neighbours.Contains(lp_other) && l_take(lp_other))
            return;
    }
}

ItemSet ItemSet::NotConnected(const ItemSet& i_items) const {
    return Minus(Connected(i_items));
}

ItemSet ItemSet::Connected(std::string_view i_type) const {
    // An item of the Type is a neighbour of that Type.
    ItemSet l_result;
    if (const Data* lp_data = Store()) {
        const Type* lp_type = lp_data->GetType(i_type);
        for (Item* lp_item : m_items) {
            if (!lp_item->SlotOf(lp_type).IsEmpty())
                l_result.Append(lp_item);
        }
    }
    return l_result;
}

ItemSet ItemSet::NotConnected(std::string_view i_type) const {
    return Minus(Connected(i_type));
}

ItemSet ItemSet::Connected(std::string_view i_type, const Value& i_value) const {
    const Data* lp_data = Store();
    return lp_data != nullptr ? Connected(lp_data->GetType(i_type)->HasItem(i_value)) : ItemSet();
}

ItemSet ItemSet::NotConnected(std::string_view i_type, const Value& i_value) const {
    const Data* lp_data = Store();
    return lp_data != nullptr ? NotConnected(lp_data->GetType(i_type)->HasItem(i_value)) : ItemSet();
}

ItemSet ItemSet::Connected(ItemPtr i_item) const {
    return i_item ? Connected(ItemSet{i_item.Get()}) : ItemSet();
}

ItemSet ItemSet::NotConnected(ItemPtr i_item) const {
    return i_item ? Minus(Connected(i_item)) : ItemSet();
}

ItemSet ItemSet::GetItems(std::string_view i_type) const {
    const Data* lp_data = Store();
    return lp_data != nullptr ? lp_data->GetItems(*this, i_type) : ItemSet();
}

void ItemSet::Disconnect(std::string_view i_type) const {
    if (m_items.empty())
        return;
    const Data::Operation l_operation(*Store());
    const ItemList l_copy(begin(), end());
    for (Item* lp_item : l_copy)
        lp_item->Disconnect(i_type);
}

void ItemSet::Remove() const {
    if (m_items.empty())
        return;
    const Data::Operation l_operation(*Store());
    const ItemList l_copy(begin(), end());
    for (Item* lp_item : l_copy)
        lp_item->Remove();
}

ItemSet::operator ItemPtr() const {
    if (empty())
        return nullptr;
    STORE_CONTRACT(size() == 1, "size() == 1");
    return *begin();
}

ItemList ItemSet::SortAlphabetic(bool i_ascending) const {
    std::vector<std::pair<std::string_view, Item*>> l_keyed;
    for (Item* lp_item : m_items)
        l_keyed.emplace_back(lp_item->AsView(), lp_item);
    return Sorted(l_keyed, i_ascending);
}

ItemList ItemSet::SortNumeric(bool i_ascending) const {
    std::vector<std::pair<long long, Item*>> l_keyed;
    for (Item* lp_item : m_items)
        l_keyed.emplace_back(lp_item->ToInt64().value_or(0), lp_item);
    return Sorted(l_keyed, i_ascending);
}

ItemList ItemSet::SortAlphabeticBy(std::string_view i_type, bool i_ascending) const {
    std::vector<std::pair<std::string_view, Item*>> l_keyed;
    for (Item* lp_item : m_items) {
        if (const ItemPtr l_key = lp_item->HasItem(i_type))
            l_keyed.emplace_back(l_key.AsView(), lp_item);
    }
    return Sorted(l_keyed, i_ascending);
}

ItemList ItemSet::SortNumericBy(std::string_view i_type, bool i_ascending) const {
    std::vector<std::pair<long long, Item*>> l_keyed;
    for (Item* lp_item : m_items) {
        if (const ItemPtr l_key = lp_item->HasItem(i_type))
            l_keyed.emplace_back(l_key.ToInt64().value_or(0), lp_item);
    }
    return Sorted(l_keyed, i_ascending);
}
