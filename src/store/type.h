// A named kind of node: its flags, its relations, its items and their events. Made by Data::NewType and living as
// long as the store.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>

#include "store/item_set.h"
#include "store/item_slabs.h"
#include "store/relation.h"

class Data;

class Type {
public:
    Type(const Type&) = delete;
    Type& operator=(const Type&) = delete;

    Event<Item*> m_itemAdded;   // fired once the item is in place
    Event<Item*> m_itemRemoved; // fired while the item and its connections still stand
    // Fired on both Types of a pair once both ends are changed, the own item first in the pair.
    Event<ConnectionInfo> m_connected;
    Event<ConnectionInfo> m_disconnected;

    Data* GetData() const { return m_data; }
    const std::string& GetName() const { return m_name; }
    bool IsRoot() const { return m_isRoot; }
    bool IsNull() const { return m_isNull; }
    bool IsAutoCreate() const { return m_autoCreate; }

    // One item of this Type connects to i_to items of the other, one of those to i_from items of this; i_owns: this
    // Type owns the other. A second relation of the two is a contract fault.
    void RelateToType(Type* ip_other, OneOrMany i_from, OneOrMany i_to, bool i_owns);
    bool IsRelated(const Type* ip_other) const { return FindRelation(ip_other) != nullptr; }
    // Of an unrelated Type: a contract fault.
    const RelationInfo& GetRelation(const Type* ip_other) const { return RelationTo(ip_other).info; }
    void GetRelatedTypes(std::map<Type*, RelationInfo>& o_types) const;

    // The item of the value. GetItem makes a missing one if the Type is auto-created and else answers null, HasItem
    // never makes one, NewItem always does. Only for Types with values (contract fault).
    Item* GetItem(const Value& i_value);
    ItemPtr operator[](const Value& i_value) { return GetItem(i_value); }
    ItemPtr HasItem(const Value& i_value) const;
    Item* NewItem(const Value& i_value);

    // A new item; the item of lowest address, made if there is none. Only for null Types (contract fault).
    Item* NewItem();
    Item* GetGlobalNullItem();

    ItemSet GetItems() const;
    void GetItems(ItemSet& o_items) const; // replaces the set
    std::size_t CountItems() const { return m_items.Count(); }

private:
    friend class CleanSweep;
    friend class Data;
    friend class InvariantCheck;
    friend class Item;
    friend class ItemSet;
    friend class StoreLoader;
    friend class StoreWriter;

    struct ValueHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view i_value) const { return absl::Hash<std::string_view>()(i_value); }
        std::size_t operator()(const Item* ip_item) const { return (*this)(ip_item->AsView()); }
    };
    struct ValueEqual {
        using is_transparent = void;
        static std::string_view View(std::string_view i_value) { return i_value; }
        static std::string_view View(const Item* ip_item) { return ip_item->AsView(); }
        template <class Left, class Right>
        bool operator()(const Left& i_left, const Right& i_right) const {
            return View(i_left) == View(i_right);
        }
    };
    static constexpr std::uint16_t c_noSlot = 0xFFFF;

    Type(Data* ip_data, std::string_view i_name, std::uint16_t i_number, bool i_isRoot, bool i_isNull,
         bool i_autoCreate);
    ~Type();

    Relation* FindRelation(const Type* ip_other) const {
        const std::uint16_t l_slot = ip_other->m_number < m_slotOf.size() ? m_slotOf[ip_other->m_number] : c_noSlot;
        return l_slot != c_noSlot ? m_relations[l_slot].get() : nullptr;
    }
    Relation& RelationTo(const Type* ip_other) const;
    void SetRelation(Type* ip_other, const RelationInfo& i_info);

    Item* FindItem(std::string_view i_value) const;
    Item* FindOrCreateItem(std::string_view i_value);
    Item* AllocateItem();
    // Fires the events of a new item; null when a handler has removed it.
    Item* Announce(Item* ip_item);
    // Out of the index and of all walks; the record stays until ReleaseItem.
    void TakeOutItem(Item* ip_item);
    void ReleaseItem(Item* ip_item);

    Neighbours& LateSlot(Item& io_item, unsigned i_slot);
    const Neighbours* FindLateSlot(const Item& i_item, unsigned i_slot) const;

    Data* m_data;
    std::string m_name;
    std::uint16_t m_number; // in order of creation
    bool m_isRoot;
    bool m_isNull;
    bool m_autoCreate;
    // Scratch of the sweep.
    bool m_isOnChain = false;
    bool m_isWalked = false;

    std::vector<std::unique_ptr<Relation>> m_relations; // by slot
    std::vector<std::uint16_t> m_slotOf;                // by the other Type's number
    std::vector<Relation*> m_relationsByAddress;        // of the other Type: the order of walks over all neighbours

    ItemSlabs m_items;
    absl::flat_hash_set<Item*, ValueHash, ValueEqual> m_values; // empty for a null Type
    // Slots beyond the inline ones, for items that are older than a relation of their Type.
    absl::flat_hash_map<const Item*, std::vector<Neighbours>> m_lateSlots;
};
