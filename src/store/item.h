// One node of the graph, and the handle by which code carries it around.
//
// An item is a Type, a text value (none when the Type is null) and its connections. Every operation that changes
// the graph tells the handlers before it returns, so anything may have changed by then; an item that a handler
// removes stays readable, connected to nothing, until the outermost operation ends, and operations on it do nothing.
// A wrong Type name, an unrelated Type, a wrong cardinality or a number that does not parse is a contract fault.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "store/neighbours.h"
#include "store/relation.h"
#include "store/value.h"

class Data;
class ItemPtr;
class ItemSet;

class Item {
public:
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;

    Type* GetType() const { return mp_type; }

    // The value; empty for an item of a null Type. The view and the C string live as long as the item.
    std::string_view AsView() const {
        return Is(LongValue) ? LongView()
                             : std::string_view(m_text, c_shortest - static_cast<unsigned char>(m_text[c_shortest]));
    }
    std::string AsString() const { return std::string(AsView()); }
    const char* AsCStr() const { return Is(LongValue) ? mp_text : m_text; }
    // The value as a decimal number; a contract fault where it is none.
    int AsInt() const;
    std::uintptr_t AsUInt() const;
    long long AsInt64() const;
    // The same for values that were saved and may be damaged: nothing where it is no number.
    std::optional<long long> ToInt64() const;
    // The object whose address this run has stored here.
    template <class T>
    T* AsPointer() const {
        return reinterpret_cast<T*>(AsUInt());
    }

    // Connects both ends, first undoing, with all events, a connection that stands in the way at a `One` end.
    // Nothing happens when they are connected. Fires, once both ends are changed: m_connected of this Type, of Data
    // and of the other's Type, then the handlers of the pair of Types. Answers the argument.
    ItemPtr Connect(ItemPtr i_other);
    // Fires, once both ends are changed: m_disconnected of this Type, of Data, and of the other's Type, then the
    // handlers of the pair; also when the two were not connected.
    void Disconnect(ItemPtr i_other);
    // From every item of the Type, in address order.
    void Disconnect(std::string_view i_type);
    bool IsConnected(ItemPtr i_other) const;
    // Whether there is a connection to any item of the Type; the Types need not be related.
    bool IsConnected(std::string_view i_type) const;
    bool IsDisconnectedFromAll() const;

    // The item connected over a relation that allows one at most; null if there is none.
    ItemPtr GetItem(std::string_view i_type) const;
    ItemPtr HasItem(std::string_view i_type) const;
    ItemPtr operator[](std::string_view i_type) const;
    // Replaces the set by the connected items of the Type; leaves it as it was when there are none.
    void GetItems(std::string_view i_type, ItemSet& o_items) const;
    ItemSet GetItems(std::string_view i_type) const;
    std::size_t CountItems(std::string_view i_type) const;
    void GetConnectedItems(std::map<Type*, ItemSet>& o_items) const;

    // A connected item of a null Type: a new one over a relation to many; else the connected one, or if there is
    // none the Type's global null item when others may share it and a new item when not.
    ItemPtr NewItem(std::string_view i_type);

    // Fires m_itemRemoved of the Type and of Data while all connections stand, disconnects from everything by Type
    // address, and destroys the item. Its neighbours stay.
    void Remove();

private:
    friend class CleanSweep;
    friend class Data;
    friend class InvariantCheck;
    friend class ItemSet;
    friend class ItemSlabs;
    friend struct ItemSlab;
    friend class PathNode;
    friend class StoreLoader;
    friend class StoreWriter;
    friend class Type;
    friend bool IsEventOver(const Item* ip_item);

    enum Flag : std::uint8_t {
        Removing = 1, // inside Remove
        Removed = 2,  // out of the graph, waiting for the outermost operation to end
        Unmarked = 4, // the sweep under way has not reached it
        BornInSweep = 8,
        Pinned = 16,    // some path names this very item
        LateSlots = 32, // it has neighbours over relations that are younger than its slab
        LongValue = 64  // its value lies apart
    };

    // Text up to this length lies in the item itself.
    static constexpr std::size_t c_shortest = 7;

    Item(Type* ip_type, std::uint16_t i_index, std::uint8_t i_slots)
        : mp_type(ip_type), m_text{0, 0, 0, 0, 0, 0, 0, c_shortest}, m_index(i_index), m_slots(i_slots) {}
    ~Item() = default;

    void SetValue(std::string_view i_value); // once, on a new item
    void FreeValue();
    std::string_view LongView() const;

    bool Is(Flag i_flag) const { return (m_flags & i_flag) != 0; }
    void Set(Flag i_flag) { m_flags = static_cast<std::uint8_t>(m_flags | i_flag); }
    void Unset(Flag i_flag) { m_flags = static_cast<std::uint8_t>(m_flags & ~i_flag); }

    Neighbours* InlineSlots() { return reinterpret_cast<Neighbours*>(this + 1); }
    const Neighbours* InlineSlots() const { return reinterpret_cast<const Neighbours*>(this + 1); }
    Neighbours& Slot(unsigned i_slot) { return i_slot < m_slots ? InlineSlots()[i_slot] : LateSlot(i_slot); }
    const Neighbours& Slot(unsigned i_slot) const {
        return i_slot < m_slots ? InlineSlots()[i_slot] : LateSlot(i_slot);
    }
    Neighbours& LateSlot(unsigned i_slot);
    const Neighbours& LateSlot(unsigned i_slot) const;
    // The neighbours of the Type, which may be unrelated: an empty set then.
    const Neighbours& SlotOf(const Type* ip_type) const;
    ItemPtr OneOf(const Relation& i_relation) const;

    // Clears a `One` end for a newcomer; false when the newcomer got there meanwhile or either of the two has gone.
    bool Displace(const Relation& i_relation, const Item* ip_newcomer);
    bool ConnectFarEnd(Item* ip_other, const Relation& i_relation);
    void Unlink(Item* ip_other, const Relation* ip_relation);
    void DisconnectFromAll();
    void UnlinkFromAll();

    // The header is 24 bytes, the slots of eight bytes follow it.
    Type* mp_type; // null once the record is free
    // The value: short text with a zero byte behind it, and in the last byte what it lacks of the full length (which
    // is that zero byte for the longest); or owned, a block of a 32-bit length, the text, to which this points, and
    // a zero byte.
    union {
        char m_text[c_shortest + 1];
        char* mp_text;
    };
    std::uint16_t m_index; // in its slab
    std::uint8_t m_slots;  // inline ones
    std::uint8_t m_flags = 0;
    std::uint32_t m_number = 0; // scratch of the save: the item's number in the file, 0 for none
};

// May be null and owns nothing. The read operations answer for a null handle as the comments say; all others need
// an item (contract fault).
class ItemPtr {
public:
    constexpr ItemPtr() = default;
    constexpr ItemPtr(std::nullptr_t) {}
    constexpr ItemPtr(Item* ip_item) : mp_item(ip_item) {}

    Item* Get() const { return mp_item; }
    explicit operator bool() const { return mp_item != nullptr; }
    Item* operator->() const { return Checked(); }
    Item& operator*() const { return *Checked(); }
    friend bool operator==(ItemPtr i_left, ItemPtr i_right) { return i_left.mp_item == i_right.mp_item; }
    friend bool operator<(ItemPtr i_left, ItemPtr i_right) {
        return std::less<Item*>()(i_left.mp_item, i_right.mp_item);
    }
    template <class H>
    friend H AbslHashValue(H i_state, ItemPtr i_item) {
        return H::combine(std::move(i_state), i_item.mp_item);
    }

    // Null: empty text, 0, nothing, a null pointer.
    std::string_view AsView() const { return mp_item != nullptr ? mp_item->AsView() : std::string_view(); }
    std::string AsString() const { return std::string(AsView()); }
    const char* AsCStr() const { return mp_item != nullptr ? mp_item->AsCStr() : ""; }
    int AsInt() const { return mp_item != nullptr ? mp_item->AsInt() : 0; }
    std::uintptr_t AsUInt() const { return mp_item != nullptr ? mp_item->AsUInt() : 0; }
    long long AsInt64() const { return mp_item != nullptr ? mp_item->AsInt64() : 0; }
    std::optional<long long> ToInt64() const { return mp_item != nullptr ? mp_item->ToInt64() : std::nullopt; }
    template <class T>
    T* AsPointer() const {
        return reinterpret_cast<T*>(AsUInt());
    }

    // Null: a null handle.
    ItemPtr HasItem(std::string_view i_type) const { return mp_item != nullptr ? mp_item->HasItem(i_type) : nullptr; }
    ItemPtr operator[](std::string_view i_type) const { return HasItem(i_type); }
    // Null: an empty set; the second clears its argument.
    ItemSet GetItems(std::string_view i_type) const;
    void GetItems(std::string_view i_type, ItemSet& o_items) const;

    Type* GetType() const { return Checked()->GetType(); }
    ItemPtr GetItem(std::string_view i_type) const { return Checked()->GetItem(i_type); }
    ItemPtr NewItem(std::string_view i_type) const { return Checked()->NewItem(i_type); }
    ItemPtr Connect(ItemPtr i_other) const { return Checked()->Connect(i_other); }
    ItemPtr operator+=(ItemPtr i_other) const { return Checked()->Connect(i_other); }
    void Disconnect(ItemPtr i_other) const { Checked()->Disconnect(i_other); }
    void Disconnect(std::string_view i_type) const { Checked()->Disconnect(i_type); }
    ItemPtr operator-=(ItemPtr i_other) const {
        Checked()->Disconnect(i_other);
        return i_other;
    }
    bool IsConnected(ItemPtr i_other) const { return Checked()->IsConnected(i_other); }
    bool IsConnected(std::string_view i_type) const { return Checked()->IsConnected(i_type); }
    bool IsDisconnectedFromAll() const { return Checked()->IsDisconnectedFromAll(); }
    std::size_t CountItems(std::string_view i_type) const { return Checked()->CountItems(i_type); }
    void GetConnectedItems(std::map<Type*, ItemSet>& o_items) const { Checked()->GetConnectedItems(o_items); }
    void Remove() const { Checked()->Remove(); }

private:
    Item* Checked() const;

    Item* mp_item = nullptr;
};

template <>
struct std::hash<ItemPtr> {
    std::size_t operator()(ItemPtr i_item) const noexcept { return std::hash<Item*>()(i_item.Get()); }
};

inline ItemPtr Item::operator[](std::string_view i_type) const {
    return HasItem(i_type);
}
