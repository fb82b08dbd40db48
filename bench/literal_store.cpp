#include "literal_store.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace literal {

namespace {

void Fire(const std::set<void*>& i_handlers) {
    if (!i_handlers.empty())
        std::abort(); // nobody listens here
}

void WriteInt(std::FILE* ip_file, std::int32_t i_number) {
    std::fwrite(&i_number, sizeof i_number, 1, ip_file);
}

void WriteString(std::FILE* ip_file, const std::string& i_text) {
    WriteInt(ip_file, static_cast<std::int32_t>(i_text.size()));
    std::fwrite(i_text.data(), 1, i_text.size(), ip_file);
}

std::int32_t ReadInt(std::FILE* ip_file) {
    std::int32_t l_number = 0;
    if (std::fread(&l_number, sizeof l_number, 1, ip_file) != 1)
        std::abort();
    return l_number;
}

std::string ReadString(std::FILE* ip_file) {
    std::vector<char> l_bytes(static_cast<std::size_t>(ReadInt(ip_file)) + 1);
    if (std::fread(l_bytes.data(), 1, l_bytes.size() - 1, ip_file) != l_bytes.size() - 1)
        std::abort();
    return l_bytes.data();
}

} // namespace

void Type::RelateToType(Type* ip_other, bool i_fromMany, bool i_toMany) {
    m_relations[ip_other] = {i_toMany, i_fromMany};
    ip_other->m_relations[this] = {i_fromMany, i_toMany};
}

Item* Type::GetItem(const std::string& i_value) {
    const auto l_place = m_valueItems.find(i_value);
    if (l_place != m_valueItems.end())
        return l_place->second;
    return m_valueItems[i_value] = new Item{this, i_value, {}};
}

void Item::Connect(Item* ip_other) {
    const Relation l_relation = GetRelation(ip_other->mp_type);
    const auto l_place = m_typeItemsMap.find(ip_other->mp_type);
    if (l_place != m_typeItemsMap.end() && l_place->second.contains(ip_other))
        return;
    ConnectThisEnd(ip_other, l_relation.m_toMany);
    ip_other->ConnectThisEnd(this, l_relation.m_fromMany);
    Fire(mp_type->m_connected);
    Fire(mp_type->m_data->m_connected);
    Fire(ip_other->mp_type->m_connected);
    mp_type->m_data->Notify(mp_type->m_data->m_connectionHandlers, this, ip_other);
}

void Item::ConnectThisEnd(Item* ip_other, bool i_many) {
    const auto l_place = m_typeItemsMap.find(ip_other->mp_type);
    if (!i_many && l_place != m_typeItemsMap.end())
        Disconnect(*l_place->second.begin());
    m_typeItemsMap[ip_other->mp_type].insert(ip_other);
}

void Item::Disconnect(Item* ip_other) {
    DisconnectThisEnd(ip_other);
    ip_other->DisconnectThisEnd(this);
    Fire(mp_type->m_disconnected);
    Fire(mp_type->m_data->m_disconnected);
    Fire(ip_other->mp_type->m_disconnected);
    mp_type->m_data->Notify(mp_type->m_data->m_disconnectionHandlers, this, ip_other);
}

void Item::DisconnectThisEnd(Item* ip_other) {
    const auto l_place = m_typeItemsMap.find(ip_other->mp_type);
    if (l_place == m_typeItemsMap.end())
        return;
    l_place->second.erase(ip_other);
    if (l_place->second.empty())
        m_typeItemsMap.erase(l_place);
}

Item* Item::HasItem(const char* ip_type) const {
    Type* lp_type = mp_type->m_data->GetType(ip_type);
    if (GetRelation(lp_type).m_toMany)
        std::abort();
    const auto l_place = m_typeItemsMap.find(lp_type);
    return l_place != m_typeItemsMap.end() ? *l_place->second.begin() : nullptr;
}

void Item::GetItems(const char* ip_type, ItemSet& o_items) const {
    const auto l_place = m_typeItemsMap.find(mp_type->m_data->GetType(ip_type));
    if (l_place != m_typeItemsMap.end())
        o_items = l_place->second;
}

void Item::Remove() {
    const std::map<Type*, ItemSet> l_copy = m_typeItemsMap;
    for (const auto& [lp_type, l_items] : l_copy) {
        for (Item* lp_item : l_items)
            Disconnect(lp_item);
    }
    mp_type->m_valueItems.erase(m_value);
    delete this;
}

Data::~Data() {
    for (const auto& [l_name, lp_type] : m_types) {
        for (const auto& [l_value, lp_item] : lp_type->m_valueItems)
            delete lp_item;
        delete lp_type;
    }
}

Type* Data::NewType(const std::string& i_name, bool i_isRoot) {
    return m_types[i_name] = new Type{this, i_name, i_isRoot, {}, {}, {}, {}};
}

void Data::Notify(const std::map<std::pair<Type*, Type*>, std::set<void*>>& i_handlers, Item* ip_a, Item* ip_b) {
    for (const auto& l_pair : {std::pair(ip_a->mp_type, ip_b->mp_type), std::pair(ip_b->mp_type, ip_a->mp_type)}) {
        if (const auto l_place = i_handlers.find(l_pair); l_place != i_handlers.end())
            Fire(l_place->second);
    }
}

ItemSet Data::GetItemSubset(const ItemSet& i_items, const char* ip_type) const {
    Type* lp_type = GetType(ip_type);
    std::multimap<std::size_t, Item*> l_bySize;
    for (Item* lp_item : i_items) {
        const auto l_place = lp_item->m_typeItemsMap.find(lp_type);
        if (l_place == lp_item->m_typeItemsMap.end())
            return {};
        l_bySize.emplace(l_place->second.size(), lp_item);
    }
    if (l_bySize.empty())
        return {};
    ItemSet l_result = l_bySize.begin()->second->m_typeItemsMap.find(lp_type)->second;
    for (auto l_next = std::next(l_bySize.begin()); l_next != l_bySize.end(); ++l_next) {
        const ItemSet& l_other = l_next->second->m_typeItemsMap.find(lp_type)->second;
        for (auto l_place = l_result.begin(); l_place != l_result.end();)
            l_place = l_other.contains(*l_place) ? std::next(l_place) : l_result.erase(l_place);
        if (l_result.empty())
            return {};
    }
    return l_result;
}

int Data::RemoveDisconnectedItems() {
    for (const auto& [l_name, lp_type] : m_types) {
        for (const auto& [l_value, lp_item] : lp_type->m_valueItems)
            m_unmarkedItems.insert(lp_item);
    }
    for (const auto& [l_name, lp_type] : m_types) {
        if (!lp_type->m_isRoot)
            continue;
        for (const auto& [l_value, lp_item] : lp_type->m_valueItems) {
            std::set<Type*> l_visited;
            MarkItemConnections(lp_item, l_visited);
        }
    }
    const int l_count = static_cast<int>(m_unmarkedItems.size());
    for (Item* lp_item : m_unmarkedItems)
        lp_item->Remove();
    m_unmarkedItems.clear();
    return l_count;
}

void Data::MarkItemConnections(Item* ip_item, std::set<Type*>& io_visited) {
    if (!m_unmarkedItems.contains(ip_item) || io_visited.contains(ip_item->mp_type))
        return;
    io_visited.insert(ip_item->mp_type);
    m_unmarkedItems.erase(ip_item);
    for (const auto& [lp_type, l_items] : ip_item->m_typeItemsMap) {
        if (!lp_type->m_isRoot) {
            for (Item* lp_item : l_items)
                MarkItemConnections(lp_item, io_visited);
        }
    }
    io_visited.erase(ip_item->mp_type);
}

void Data::Save(const char* ip_path) {
    std::FILE* lp_file = std::fopen(ip_path, "wb");
    WriteInt(lp_file, static_cast<std::int32_t>(m_types.size()));
    std::map<Item*, int> l_ids;
    for (const auto& [l_name, lp_type] : m_types) {
        ItemSet l_items;
        for (const auto& [l_value, lp_item] : lp_type->m_valueItems)
            l_items.insert(lp_item);
        WriteString(lp_file, l_name);
        std::fputc(0, lp_file);
        WriteInt(lp_file, static_cast<std::int32_t>(l_items.size()));
        for (Item* lp_item : l_items) {
            const int l_id = static_cast<int>(l_ids.size()) + 1;
            l_ids[lp_item] = l_id;
            WriteInt(lp_file, l_id);
            WriteString(lp_file, lp_item->m_value);
        }
    }
    std::set<std::pair<int, int>> l_pairs;
    for (const auto& [lp_item, l_id] : l_ids) {
        for (const auto& [lp_type, l_items] : lp_item->m_typeItemsMap) {
            for (Item* lp_other : l_items)
                l_pairs.insert(std::minmax(l_id, l_ids.find(lp_other)->second));
        }
    }
    WriteInt(lp_file, static_cast<std::int32_t>(l_pairs.size()));
    for (const auto& [l_low, l_high] : l_pairs) {
        WriteInt(lp_file, l_low);
        WriteInt(lp_file, l_high);
    }
    std::fclose(lp_file);
}

void Data::Load(const char* ip_path) {
    std::FILE* lp_file = std::fopen(ip_path, "rb");
    std::map<int, Item*> l_items;
    for (int l_types = ReadInt(lp_file); l_types > 0; --l_types) {
        Type* lp_type = GetType(ReadString(lp_file));
        std::fgetc(lp_file);
        for (int l_count = ReadInt(lp_file); l_count > 0; --l_count) {
            const int l_id = ReadInt(lp_file);
            l_items[l_id] = lp_type->GetItem(ReadString(lp_file));
        }
    }
    for (int l_count = ReadInt(lp_file); l_count > 0; --l_count) {
        const int l_low = ReadInt(lp_file);
        const int l_high = ReadInt(lp_file);
        l_items.find(l_low)->second->Connect(l_items.find(l_high)->second);
    }
    std::fclose(lp_file);
}

} // namespace literal
