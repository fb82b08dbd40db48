// The yardstick of the store benchmark: the item store written down the obvious way, with a map from Type to a set of
// neighbours in every item, a map from value to item in every Type, a second set for the marks of the sweep, and a
// set of pairs for the save. It does what the store does as far as the benchmark goes, and is used nowhere else.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

namespace literal {

class Data;
struct Item;
using ItemSet = std::set<Item*>;

struct Relation {
    bool m_toMany;
    bool m_fromMany;
};

struct Type {
    Data* m_data;
    std::string m_name;
    bool m_isRoot;
    std::map<Type*, Relation> m_relations;
    std::map<std::string, Item*> m_valueItems;
    std::set<void*> m_connected; // handlers: there are none, but the events look
    std::set<void*> m_disconnected;

    void RelateToType(Type* ip_other, bool i_fromMany, bool i_toMany);
    Item* GetItem(const std::string& i_value);
};

struct Item {
    Type* mp_type;
    std::string m_value;
    std::map<Type*, ItemSet> m_typeItemsMap;

    Relation GetRelation(Type* ip_type) const { return mp_type->m_relations.find(ip_type)->second; }
    void Connect(Item* ip_other);
    void ConnectThisEnd(Item* ip_other, bool i_many);
    void Disconnect(Item* ip_other);
    void DisconnectThisEnd(Item* ip_other);
    Item* HasItem(const char* ip_type) const;
    void GetItems(const char* ip_type, ItemSet& o_items) const;
    void Remove();
};

class Data {
public:
    ~Data();

    Type* NewType(const std::string& i_name, bool i_isRoot);
    Type* GetType(const std::string& i_name) const { return m_types.find(i_name)->second; }
    ItemSet GetItemSubset(const ItemSet& i_items, const char* ip_type) const;
    int RemoveDisconnectedItems();
    void Save(const char* ip_path);
    void Load(const char* ip_path);

    void Notify(const std::map<std::pair<Type*, Type*>, std::set<void*>>& i_handlers, Item* ip_a, Item* ip_b);

    std::map<std::string, Type*> m_types;
    std::set<void*> m_connected;
    std::set<void*> m_disconnected;
    std::map<std::pair<Type*, Type*>, std::set<void*>> m_connectionHandlers;
    std::map<std::pair<Type*, Type*>, std::set<void*>> m_disconnectionHandlers;
    std::set<Item*> m_unmarkedItems;

private:
    void MarkItemConnections(Item* ip_item, std::set<Type*>& io_visited);
};

} // namespace literal
