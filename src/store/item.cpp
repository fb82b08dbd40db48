#include "store/item.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <new>

#include "store/data.h"
#include "store/neighbours_walk.h"

namespace {

static_assert(sizeof(Item) == 24 && sizeof(Neighbours) == 8);

// A handler that answers the clearing of a `One` end, or the end of an item, with a new connection is obeyed so
// often; after that its connection goes without a word, so that nothing runs for ever and no rule is broken.
constexpr int c_patience = 8;

template <class Number>
bool Parse(std::string_view i_text, Number& o_number) {
    const char* lp_end = i_text.data() + i_text.size();
    const std::from_chars_result l_result = std::from_chars(i_text.data(), lp_end, o_number);
    return l_result.ec == std::errc() && l_result.ptr == lp_end;
}

} // namespace

void Item::SetValue(std::string_view i_value) {
    const auto l_length = static_cast<std::uint32_t>(i_value.size());
    if (l_length <= c_shortest) {
        i_value.copy(m_text, l_length);
        m_text[l_length] = '\0';
        m_text[c_shortest] = static_cast<char>(c_shortest - l_length);
        return;
    }
    char* lp_block = static_cast<char*>(std::malloc(sizeof l_length + l_length + 1));
    if (lp_block == nullptr)
        throw std::bad_alloc();
    std::memcpy(lp_block, &l_length, sizeof l_length);
    mp_text = lp_block + sizeof l_length;
    i_value.copy(mp_text, l_length);
    mp_text[l_length] = '\0';
    Set(LongValue);
}

void Item::FreeValue() {
    if (Is(LongValue))
        std::free(mp_text - sizeof(std::uint32_t));
}

std::string_view Item::LongView() const {
    std::uint32_t l_length = 0;
    std::memcpy(&l_length, mp_text - sizeof l_length, sizeof l_length);
    return {mp_text, l_length};
}

int Item::AsInt() const {
    STORE_CONTRACT(!mp_type->IsNull(), "! mp_type->IsNull()");
    int l_number = 0;
    const bool l_result = Parse(AsView(), l_number);
    STORE_CONTRACT(l_result, "l_result");
    return l_number;
}

std::uintptr_t Item::AsUInt() const {
    STORE_CONTRACT(!mp_type->IsNull(), "! mp_type->IsNull()");
    std::uintptr_t l_number = 0;
    const bool l_result = Parse(AsView(), l_number);
    STORE_CONTRACT(l_result, "l_result");
    return l_number;
}

long long Item::AsInt64() const {
    STORE_CONTRACT(!mp_type->IsNull(), "! mp_type->IsNull()");
    long long l_number = 0;
    const bool l_result = Parse(AsView(), l_number);
    STORE_CONTRACT(l_result, "l_result");
    return l_number;
}

std::optional<long long> Item::ToInt64() const {
    long long l_number = 0;
    return Parse(AsView(), l_number) ? std::optional(l_number) : std::nullopt;
}

Neighbours& Item::LateSlot(unsigned i_slot) {
    return mp_type->LateSlot(*this, i_slot);
}

const Neighbours& Item::LateSlot(unsigned i_slot) const {
    static const Neighbours s_none;
    const Neighbours* lp_slot = mp_type->FindLateSlot(*this, i_slot);
    return lp_slot != nullptr ? *lp_slot : s_none;
}

const Neighbours& Item::SlotOf(const Type* ip_type) const {
    static const Neighbours s_none;
    const Relation* lp_relation = mp_type->FindRelation(ip_type);
    return lp_relation != nullptr ? Slot(lp_relation->slot) : s_none;
}

ItemPtr Item::Connect(ItemPtr i_other) {
    Item* lp_other = i_other.operator->();
    Relation& l_relation = mp_type->RelationTo(lp_other->mp_type);
    if (Is(Removed) || lp_other->Is(Removed))
        return i_other;
    if (l_relation.info.m_typeTo == One) {
        if (std::as_const(*this).Slot(l_relation.slot).Contains(lp_other))
            return i_other;
        const Data::Operation l_operation(*mp_type->m_data);
        if (!Displace(l_relation, lp_other))
            return i_other;
        Slot(l_relation.slot).Insert(lp_other);
        if (ConnectFarEnd(lp_other, l_relation))
            mp_type->m_data->NotifyConnected(this, lp_other, l_relation);
    } else if (Slot(l_relation.slot).Insert(lp_other)) {
        const Data::Operation l_operation(*mp_type->m_data);
        if (ConnectFarEnd(lp_other, l_relation))
            mp_type->m_data->NotifyConnected(this, lp_other, l_relation);
    }
    return i_other;
}

bool Item::ConnectFarEnd(Item* ip_other, const Relation& i_relation) {
    Data* lp_data = mp_type->m_data;
    lp_data->Touch(this);
    lp_data->Touch(ip_other);
    if (i_relation.info.m_typeFrom == One && ip_other != this &&
        !std::as_const(*ip_other).Slot(i_relation.farSlot).IsEmpty()) {
        // While handlers hear of what is displaced, this end already stands; if they remove the other item its
        // removal finds this end here.
        lp_data->m_halfLinks.push_back({this, ip_other, &i_relation});
        const bool l_isFree = ip_other->Displace(*ip_other->mp_type->m_relations[i_relation.farSlot], this);
        lp_data->m_halfLinks.pop_back();
        if (!l_isFree || Is(Removed) || !std::as_const(*this).Slot(i_relation.slot).Contains(ip_other))
            return false;
    }
    return ip_other->Slot(i_relation.farSlot).Insert(this) || ip_other == this;
}

bool Item::Displace(const Relation& i_relation, const Item* ip_newcomer) {
    const auto l_neighbours = [this, &i_relation]() -> const Neighbours& {
        return std::as_const(*this).Slot(i_relation.slot);
    };
    for (int l_try = 0; !l_neighbours().IsEmpty(); ++l_try) {
        Item* lp_old = l_neighbours().First();
        if (lp_old == ip_newcomer)
            return false;
        if (l_try < c_patience)
            Disconnect(lp_old);
        else
            Unlink(lp_old, &i_relation);
        if (Is(Removed) || ip_newcomer->Is(Removed))
            return false;
    }
    return true;
}

void Item::Disconnect(ItemPtr i_other) {
    Item* lp_other = i_other.operator->();
    if (Is(Removed) || lp_other->Is(Removed))
        return;
    const Data::Operation l_operation(*mp_type->m_data);
    Relation* lp_relation = mp_type->FindRelation(lp_other->mp_type);
    Unlink(lp_other, lp_relation);
    mp_type->m_data->NotifyDisconnected(this, lp_other, lp_relation);
}

void Item::Unlink(Item* ip_other, const Relation* ip_relation) {
    if (ip_relation == nullptr)
        return;
    mp_type->m_data->Touch(this);
    mp_type->m_data->Touch(ip_other);
    Slot(ip_relation->slot).Erase(ip_other);
    ip_other->Slot(ip_relation->farSlot).Erase(this);
}

void Item::Disconnect(std::string_view i_type) {
    const Data::Operation l_operation(*mp_type->m_data);
    const Relation* lp_relation = mp_type->FindRelation(mp_type->m_data->GetType(i_type));
    if (lp_relation == nullptr)
        return;
    const Item& l_this = *this;
    absl::InlinedVector<Item*, 16> l_copy;
    l_this.Slot(lp_relation->slot).ForEach([&l_copy](Item* ip_item) { l_copy.push_back(ip_item); });
    for (Item* lp_item : l_copy) {
        if (l_this.Slot(lp_relation->slot).Contains(lp_item))
            Disconnect(lp_item);
    }
}

bool Item::IsConnected(ItemPtr i_other) const {
    const Item* lp_other = i_other.operator->();
    return SlotOf(lp_other->mp_type).Contains(lp_other);
}

bool Item::IsConnected(std::string_view i_type) const {
    return !SlotOf(mp_type->m_data->GetType(i_type)).IsEmpty();
}

bool Item::IsDisconnectedFromAll() const {
    for (const auto& l_relation : mp_type->m_relations) {
        if (!Slot(l_relation->slot).IsEmpty())
            return false;
    }
    return true;
}

ItemPtr Item::OneOf(const Relation& i_relation) const {
    const Neighbours& l_neighbours = Slot(i_relation.slot);
    return l_neighbours.First();
}

ItemPtr Item::GetItem(std::string_view i_type) const {
    const Relation& l_relation = mp_type->RelationTo(mp_type->m_data->GetType(i_type));
    STORE_CONTRACT(l_relation.info.m_typeTo == One, "false");
    return OneOf(l_relation);
}

ItemPtr Item::HasItem(std::string_view i_type) const {
    const Relation& l_relation = mp_type->RelationTo(mp_type->m_data->GetType(i_type));
    STORE_CONTRACT(l_relation.info.m_typeTo == One, "l_relation.m_typeTo == One");
    return OneOf(l_relation);
}

void Item::GetItems(std::string_view i_type, ItemSet& o_items) const {
    const Relation& l_relation = mp_type->RelationTo(mp_type->m_data->GetType(i_type));
    const Neighbours& l_neighbours = Slot(l_relation.slot);
    if (!l_neighbours.IsEmpty())
        o_items.Assign(l_neighbours);
}

ItemSet Item::GetItems(std::string_view i_type) const {
    ItemSet l_items;
    GetItems(i_type, l_items);
    return l_items;
}

std::size_t Item::CountItems(std::string_view i_type) const {
    return Slot(mp_type->RelationTo(mp_type->m_data->GetType(i_type)).slot).Size();
}

void Item::GetConnectedItems(std::map<Type*, ItemSet>& o_items) const {
    o_items.clear();
    for (const Relation* lp_relation : mp_type->m_relationsByAddress) {
        if (const Neighbours& l_neighbours = Slot(lp_relation->slot); !l_neighbours.IsEmpty())
            o_items[lp_relation->other].Assign(l_neighbours);
    }
}

ItemPtr Item::NewItem(std::string_view i_type) {
    Type* lp_type = mp_type->m_data->GetType(i_type);
    STORE_CONTRACT(lp_type->IsNull(), "false");
    const Relation& l_relation = mp_type->RelationTo(lp_type);
    if (l_relation.info.m_typeTo == One) {
        if (const ItemPtr l_item = OneOf(l_relation))
            return l_item;
    }
    const Data::Operation l_operation(*mp_type->m_data);
    const bool l_isShared = l_relation.info.m_typeTo == One && l_relation.info.m_typeFrom == Many;
    Item* lp_item = l_isShared ? lp_type->GetGlobalNullItem() : lp_type->NewItem();
    if (lp_item == nullptr)
        return nullptr;
    Connect(lp_item);
    return lp_item->Is(Removed) ? nullptr : lp_item;
}

void Item::Remove() {
    if (Is(Removing) || Is(Removed))
        return;
    Set(Removing);
    // A removal meets a dozen places in memory that nothing has touched for long; they are sent for ahead.
    if (Is(LongValue))
        __builtin_prefetch(mp_text - sizeof(std::uint32_t));
    Data* lp_data = mp_type->m_data;
    const Data::Operation l_operation(*lp_data);
    Item* lp_this = this;
    mp_type->m_itemRemoved.Notify(lp_this);
    lp_data->m_itemRemoved.Notify(lp_this);
    for (int l_try = 0; l_try < c_patience && !IsDisconnectedFromAll(); ++l_try)
        DisconnectFromAll();
    UnlinkFromAll();
    if (Is(Pinned))
        lp_data->ForgetPins(this);
    mp_type->TakeOutItem(this);
    Set(Removed);
    lp_data->m_removedItems.push_back(this);
}

void Item::DisconnectFromAll() {
    struct Connection {
        const Relation* relation;
        Item* other;
    };
    absl::InlinedVector<Connection, 32> l_copy;
    const Item& l_this = *this;
    for (const Relation* lp_relation : mp_type->m_relationsByAddress) {
        l_this.Slot(lp_relation->slot).ForEach([&](Item* ip_item) {
            __builtin_prefetch(ip_item->InlineSlots());
            l_copy.push_back({lp_relation, ip_item});
        });
    }
    if (!mp_type->m_isNull)
        mp_type->m_values.prefetch(AsView());
    for (const Connection& l_connection : l_copy) {
        // Handlers may have undone it meanwhile, and removed the other item.
        if (l_this.Slot(l_connection.relation->slot).Contains(l_connection.other))
            Disconnect(l_connection.other);
    }
}

void Item::UnlinkFromAll() {
    const Item& l_this = *this;
    for (const auto& l_relation : mp_type->m_relations) {
        while (!l_this.Slot(l_relation->slot).IsEmpty())
            Unlink(l_this.Slot(l_relation->slot).First(), l_relation.get());
    }
    for (const Data::HalfLink& l_link : mp_type->m_data->m_halfLinks) {
        if (l_link.far == this)
            l_link.near->Slot(l_link.relation->slot).Erase(this);
    }
}

bool IsEventOver(const Item* ip_item) {
    return ip_item->Is(Item::Removed);
}

Item* ItemPtr::Checked() const {
    STORE_CONTRACT(mp_item != nullptr, "mp_item != 0");
    return mp_item;
}

ItemSet ItemPtr::GetItems(std::string_view i_type) const {
    return mp_item != nullptr ? mp_item->GetItems(i_type) : ItemSet();
}

void ItemPtr::GetItems(std::string_view i_type, ItemSet& o_items) const {
    if (mp_item != nullptr)
        mp_item->GetItems(i_type, o_items);
    else
        o_items.clear();
}
