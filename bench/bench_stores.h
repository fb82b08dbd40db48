// The two stores of the benchmark under one face.
#pragma once

#include <cstdlib>
#include <string_view>

#include "literal_store.h"
#include "store/data_saver.h"

inline constexpr int c_attributes = 6;
inline constexpr const char* c_attributeNames[c_attributes] = {"size", "folder", "album", "length", "bitrate", "mode"};

struct LiteralStore {
    using Item = literal::Item;

    LiteralStore() {
        for (int l_index = 0; l_index < c_attributes; ++l_index) {
            attributes[l_index] = data.NewType(c_attributeNames[l_index], false);
            entity->RelateToType(attributes[l_index], true, false);
        }
    }
    static Item* Has(Item* ip_item, const char* ip_type) { return ip_item->HasItem(ip_type); }
    static std::string_view ValueOf(Item* ip_item, const char* ip_type) { return ip_item->HasItem(ip_type)->m_value; }
    static std::size_t CountOwners(Item* ip_item) {
        literal::ItemSet l_items;
        ip_item->GetItems("entity", l_items);
        return l_items.size();
    }
    std::size_t CountCommon(Item* ip_a, Item* ip_b) { return data.GetItemSubset({ip_a, ip_b}, "entity").size(); }
    std::size_t RemoveDisconnected() { return static_cast<std::size_t>(data.RemoveDisconnectedItems()); }
    void SaveTo(const char* ip_path) { data.Save(ip_path); }
    void LoadFrom(const char* ip_path) { data.Load(ip_path); }

    literal::Data data;
    literal::Type* entity = data.NewType("entity", true);
    literal::Type* attributes[c_attributes];
};

struct CompactStore {
    using Item = ::Item;

    CompactStore() {
        saver.AddSavedType("entity");
        for (int l_index = 0; l_index < c_attributes; ++l_index) {
            attributes[l_index] = data.NewType(c_attributeNames[l_index], false, false, true);
            entity->RelateToType(attributes[l_index], Many, One, false);
            saver.AddSavedByConnectionType(c_attributeNames[l_index], "entity");
        }
    }
    static Item* Has(Item* ip_item, const char* ip_type) { return ip_item->HasItem(ip_type).Get(); }
    static std::string_view ValueOf(Item* ip_item, const char* ip_type) { return (*ip_item)[ip_type].AsView(); }
    static std::size_t CountOwners(Item* ip_item) {
        ItemSet l_items;
        ip_item->GetItems("entity", l_items);
        return l_items.size();
    }
    std::size_t CountCommon(Item* ip_a, Item* ip_b) { return data.GetItemSubset(ItemSet{ip_a, ip_b}, "entity").size(); }
    std::size_t RemoveDisconnected() { return static_cast<std::size_t>(data.RemoveDisconnectedItems()); }
    void SaveTo(const char* ip_path) {
        if (!saver.Save(&data, ip_path))
            std::abort();
    }
    void LoadFrom(const char* ip_path) {
        if (saver.Load(&data, ip_path).state != LoadResult::Whole)
            std::abort();
    }

    Data data;
    DataSaver saver;
    Type* entity = data.NewType("entity", true, false, true);
    Type* attributes[c_attributes];
};
