#include "store/data.h"
#include "store/neighbours_walk.h"

#include <algorithm>

Data d;

ItemSet g(std::string_view i_type) {
    return d.GetType(i_type)->GetItems();
}

ItemSet i(std::string_view i_type, const Value& i_value) {
    ItemSet l_items;
    if (const ItemPtr l_item = d.GetType(i_type)->HasItem(i_value))
        l_items.insert(l_item);
    return l_items;
}

Data::Data() = default;

Data::~Data() {
    BuryPaths();
    for (PathNodeHandlerInfo* lp_info : m_paths) {
        delete lp_info->handler;
        delete lp_info->root;
        delete lp_info;
    }
    for (const auto& [l_name, lp_type] : m_types)
        delete lp_type;
}

Type* Data::NewType(std::string_view i_name, bool i_isRoot, bool i_isNull, bool i_autoCreate) {
    STORE_CONTRACT(!m_types.contains(i_name), "false");
    auto* lp_type =
        new Type(this, i_name, static_cast<std::uint16_t>(m_types.size()), i_isRoot, i_isNull, i_autoCreate);
    m_types.emplace(i_name, lp_type);
    m_typesByName.emplace(lp_type->m_name, lp_type);
    m_typeAdded.Notify(lp_type);
    return lp_type;
}

Type* Data::FindType(std::string_view i_name) const {
    // Names are nearly always literals, so the place of the text finds the Type; the text itself decides.
    const auto l_address = reinterpret_cast<std::uintptr_t>(i_name.data());
    TypeCacheEntry& l_entry = m_typeCache[(l_address ^ (l_address >> 9)) % m_typeCache.size()];
    if (l_entry.text == i_name.data() && l_entry.type->m_name == i_name)
        return l_entry.type;
    const auto l_place = m_typesByName.find(i_name);
    if (l_place == m_typesByName.end())
        return nullptr;
    if (!i_name.empty())
        l_entry = {i_name.data(), l_place->second};
    return l_place->second;
}

Type* Data::GetType(std::string_view i_name) const {
    Type* lp_type = FindType(i_name);
    STORE_CONTRACT(lp_type != nullptr, "false");
    return lp_type;
}

void Data::GetTypes(std::map<std::string, Type*>& o_types) const {
    o_types = {m_types.begin(), m_types.end()};
}

ItemSet Data::GetItemSubset(const ItemSet& i_items, std::string_view i_type) const {
    const absl::InlinedVector<Item*, 8> l_items(i_items.begin(), i_items.end());
    ItemSet l_result;
    AnyOfSubset(l_items, i_type, [&l_result](Item* ip_item) {
        l_result.Append(ip_item);
        return false;
    });
    return l_result;
}

bool Data::AnyOfSubset(std::span<Item* const> i_items, std::string_view i_type,
                       absl::FunctionRef<bool(Item*)> i_predicate) const {
    const Type* lp_type = GetType(i_type);
    absl::InlinedVector<const Neighbours*, 8> l_sets;
    for (const Item* lp_item : i_items) {
        l_sets.push_back(&lp_item->SlotOf(lp_type));
        if (l_sets.back()->IsEmpty())
            return false;
    }
    if (l_sets.empty())
        return false;
    return Neighbours::AnyOfCommon(l_sets, i_predicate);
}

ItemSet Data::GetItems(ItemPtr i_first, ItemPtr i_second, std::string_view i_type) const {
    return GetItemSubset(ItemSet{i_first.operator->(), i_second.operator->()}, i_type);
}

ItemPtr Data::GetItem(const ItemSet& i_items, std::string_view i_type) const {
    const ItemSet l_items = GetItemSubset(i_items, i_type);
    STORE_CONTRACT(l_items.size() <= 1, "l_items.size() <= 1");
    return l_items;
}

ItemPtr Data::GetItem(ItemPtr i_first, ItemPtr i_second, std::string_view i_type) const {
    const Type* lp_type = GetType(i_type);
    const Neighbours* lp_smaller = &i_first->SlotOf(lp_type);
    const Neighbours* lp_larger = &i_second->SlotOf(lp_type);
    if (lp_smaller->Size() > lp_larger->Size())
        std::swap(lp_smaller, lp_larger);
    Item* lp_found = nullptr;
    lp_smaller->ForEach([&](Item* ip_item) {
        if (lp_larger->Contains(ip_item)) {
            STORE_CONTRACT(lp_found == nullptr, "l_items.size() <= 1");
            lp_found = ip_item;
        }
    });
    return lp_found;
}

ItemSet Data::GetItems(const ItemSet& i_items, std::string_view i_type) const {
    const Type* lp_type = GetType(i_type);
    ItemSet l_result;
    for (const Item* lp_item : i_items) {
        lp_item->Slot(lp_item->GetType()->RelationTo(lp_type).slot).ForEach([&](Item* ip_item) {
            l_result.insert(ip_item);
        });
    }
    return l_result;
}

void Data::FinishOutermost() {
    if (c_isChecked)
        CheckTouched();
    for (Item* lp_item : m_removedItems)
        lp_item->mp_type->ReleaseItem(lp_item);
    if (m_removedItems.capacity() > 4096)
        m_removedItems = {};
    else
        m_removedItems.clear();
}
