// A set of items with the query operations of the graph. Ordered by address, so that the order means nothing.
// It copies pointers only and owns nothing. Changing a set while walking it is up to the caller to avoid; the
// operations here that change the graph walk safely, also when handlers remove members.
#pragma once

#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

#include <absl/container/btree_set.h>

#include "store/item.h"

using ItemList = std::vector<Item*>;

class ItemSet {
public:
    using Items = absl::btree_set<Item*, std::less<Item*>>;
    using value_type = Item*;
    using const_iterator = Items::const_iterator;
    using iterator = const_iterator;

    ItemSet() = default;
    ItemSet(std::initializer_list<Item*> i_items) : m_items(i_items) {}

    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }
    std::size_t size() const { return m_items.size(); }
    bool empty() const { return m_items.empty(); }
    bool contains(Item* ip_item) const { return m_items.contains(ip_item); }
    bool contains(ItemPtr i_item) const { return m_items.contains(i_item.Get()); }
    // False when it was there already.
    bool insert(Item* ip_item);
    bool insert(ItemPtr i_item) { return insert(i_item.Get()); }
    // The number of items taken out, 0 or 1.
    std::size_t erase(Item* ip_item) { return m_items.erase(ip_item); }
    std::size_t erase(ItemPtr i_item) { return m_items.erase(i_item.Get()); }
    const_iterator erase(const_iterator i_place) { return m_items.erase(i_place); }
    void clear() { m_items.clear(); }
    friend bool operator==(const ItemSet& i_left, const ItemSet& i_right) { return i_left.m_items == i_right.m_items; }

    void Add(const ItemSet& i_items);
    ItemSet operator+(const ItemSet& i_items) const;
    ItemSet Common(const ItemSet& i_items) const;

    // The members connected to at least one of, or to none of: the items; the items of the Type; the item of the
    // Type with the value; the one item. Both answer the empty set when the one item does not exist or is null.
    ItemSet Connected(const ItemSet& i_items) const;
    ItemSet NotConnected(const ItemSet& i_items) const;
    ItemSet Connected(std::string_view i_type) const;
    ItemSet NotConnected(std::string_view i_type) const;
    ItemSet Connected(std::string_view i_type, const Value& i_value) const;
    ItemSet NotConnected(std::string_view i_type, const Value& i_value) const;
    ItemSet Connected(ItemPtr i_item) const;
    ItemSet NotConnected(ItemPtr i_item) const;

    // The items of the Type that are connected to any member.
    ItemSet GetItems(std::string_view i_type) const;
    void Disconnect(std::string_view i_type) const;
    void Remove() const;

    // Null for the empty set, the member of a set of one; more members are a contract fault.
    operator ItemPtr() const;

    // Members in the order of their value, or of the value of their neighbour of the Type (members without one are
    // left out). Equal keys stay in address order when ascending; descending is the exact reverse of ascending.
    // Text that is no number counts as 0.
    ItemList SortAlphabetic(bool i_ascending) const;
    ItemList SortNumeric(bool i_ascending) const;
    ItemList SortAlphabeticBy(std::string_view i_type, bool i_ascending) const;
    ItemList SortNumericBy(std::string_view i_type, bool i_ascending) const;

private:
    friend class Data;
    friend class Item;
    friend class Type;

    ItemSet Minus(const ItemSet& i_items) const;
    void CollectConnected(const Item& i_item, const Relation& i_relation, const ItemSet& i_others, bool i_takeItem,
                          ItemSet& o_result) const;
    void Append(Item* ip_item) { m_items.insert(m_items.end(), ip_item); }
    void Assign(const Neighbours& i_neighbours);
    // The store the members live in; null for the empty set.
    Data* Store() const;

    Items m_items;
};
