#include "store/type.h"

#include <limits>

#include "store/data.h"

Type::Type(Data* ip_data, std::string_view i_name, std::uint16_t i_number, bool i_isRoot, bool i_isNull,
           bool i_autoCreate)
    : m_data(ip_data), m_name(i_name), m_number(i_number), m_isRoot(i_isRoot), m_isNull(i_isNull),
      m_autoCreate(i_autoCreate) {}

Type::~Type() {
    m_items.ForEach([](Item* ip_item) {
        ip_item->FreeValue();
        for (unsigned l_slot = 0; l_slot < ip_item->m_slots; ++l_slot)
            ip_item->InlineSlots()[l_slot].Clear();
    });
}

void Type::RelateToType(Type* ip_other, OneOrMany i_from, OneOrMany i_to, bool i_owns) {
    STORE_CONTRACT(!IsRelated(ip_other), "false");
    SetRelation(ip_other, {i_from, i_to, i_owns, false});
    ip_other->SetRelation(this, {i_to, i_from, false, i_owns});
    FindRelation(ip_other)->farSlot = ip_other->FindRelation(this)->slot;
    ip_other->FindRelation(this)->farSlot = FindRelation(ip_other)->slot;
}

void Type::SetRelation(Type* ip_other, const RelationInfo& i_info) {
    if (Relation* lp_relation = FindRelation(ip_other)) { // a Type related to itself: the second direction stands
        lp_relation->info = i_info;
        return;
    }
    if (m_slotOf.size() <= ip_other->m_number)
        m_slotOf.resize(ip_other->m_number + std::size_t{1}, c_noSlot);
    const auto l_slot = static_cast<std::uint16_t>(m_relations.size());
    m_slotOf[ip_other->m_number] = l_slot;
    m_relations.push_back(std::make_unique<Relation>(i_info, ip_other, l_slot));
    const auto l_before = [](const Relation* ip_left, const Relation* ip_right) {
        return std::less<Type*>()(ip_left->other, ip_right->other);
    };
    Relation* lp_relation = m_relations.back().get();
    m_relationsByAddress.insert(
        std::upper_bound(m_relationsByAddress.begin(), m_relationsByAddress.end(), lp_relation, l_before), lp_relation);
}

Relation& Type::RelationTo(const Type* ip_other) const {
    Relation* lp_relation = FindRelation(ip_other);
    STORE_CONTRACT(lp_relation != nullptr, "false");
    return *lp_relation;
}

void Type::GetRelatedTypes(std::map<Type*, RelationInfo>& o_types) const {
    o_types.clear();
    for (const Relation* lp_relation : m_relationsByAddress)
        o_types.emplace(lp_relation->other, lp_relation->info);
}

Item* Type::GetItem(const Value& i_value) {
    STORE_CONTRACT(!m_isNull, "false");
    return m_autoCreate ? FindOrCreateItem(i_value.View()) : FindItem(i_value.View());
}

ItemPtr Type::HasItem(const Value& i_value) const {
    STORE_CONTRACT(!m_isNull, "false");
    return FindItem(i_value.View());
}

Item* Type::NewItem(const Value& i_value) {
    STORE_CONTRACT(!m_isNull, "false");
    return FindOrCreateItem(i_value.View());
}

Item* Type::NewItem() {
    STORE_CONTRACT(m_isNull, "false");
    return Announce(AllocateItem());
}

Item* Type::GetGlobalNullItem() {
    STORE_CONTRACT(m_isNull, "false");
    Item* lp_item = m_items.First();
    return lp_item != nullptr ? lp_item : NewItem();
}

ItemSet Type::GetItems() const {
    ItemSet l_items;
    m_items.ForEach([&l_items](Item* ip_item) { l_items.Append(ip_item); });
    return l_items;
}

void Type::GetItems(ItemSet& o_items) const {
    o_items = GetItems();
}

Item* Type::FindItem(std::string_view i_value) const {
    const auto l_place = m_values.find(i_value);
    return l_place != m_values.end() ? *l_place : nullptr;
}

Item* Type::FindOrCreateItem(std::string_view i_value) {
    bool l_isNew = false;
    const auto l_place = m_values.lazy_emplace(i_value, [&](const auto& i_construct) {
        Item* lp_item = AllocateItem();
        lp_item->SetValue(i_value);
        i_construct(lp_item);
        l_isNew = true;
    });
    return l_isNew ? Announce(*l_place) : *l_place;
}

Item* Type::AllocateItem() {
    const std::size_t l_slots =
        std::min<std::size_t>(m_relations.size(), std::numeric_limits<decltype(Item::m_slots)>::max());
    Item* lp_item = m_items.Allocate(this, static_cast<std::uint8_t>(l_slots));
    if (m_data->m_isSweeping) {
        lp_item->Set(Item::BornInSweep);
        m_data->m_bornInSweep.push_back(lp_item);
    }
    return lp_item;
}

Item* Type::Announce(Item* ip_item) {
    const Data::Operation l_operation(*m_data);
    m_data->Touch(ip_item);
    m_itemAdded.NotifyWhileThere(ip_item);
    if (!ip_item->Is(Item::Removed))
        m_data->m_itemAdded.NotifyWhileThere(ip_item);
    return ip_item->Is(Item::Removed) ? nullptr : ip_item;
}

void Type::TakeOutItem(Item* ip_item) {
    if (!m_isNull) {
        m_values.erase(ip_item->AsView());
        // A Type that was once large gives its index back.
        if (m_values.capacity() > 4096 && m_values.size() < m_values.capacity() / 16)
            m_values.rehash(m_values.size() * 2);
    }
    if (ip_item->Is(Item::LateSlots))
        m_lateSlots.erase(ip_item);
    m_items.Retire(ip_item);
}

void Type::ReleaseItem(Item* ip_item) {
    ip_item->FreeValue();
    m_items.Release(ip_item);
}

Neighbours& Type::LateSlot(Item& io_item, unsigned i_slot) {
    io_item.Set(Item::LateSlots);
    std::vector<Neighbours>& l_slots = m_lateSlots[&io_item];
    if (const std::size_t l_late = m_relations.size() - io_item.m_slots; l_slots.size() < l_late)
        l_slots.resize(l_late);
    return l_slots[i_slot - io_item.m_slots];
}

const Neighbours* Type::FindLateSlot(const Item& i_item, unsigned i_slot) const {
    if (!i_item.Is(Item::LateSlots))
        return nullptr;
    const auto l_place = m_lateSlots.find(&i_item);
    const std::size_t l_index = i_slot - i_item.m_slots;
    return l_place != m_lateSlots.end() && l_index < l_place->second.size() ? &l_place->second[l_index] : nullptr;
}
