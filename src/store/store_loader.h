// Brings the records of a store file into a store by its ordinary operations. The file may be anything: what its
// Types, relations or `One` ends do not allow is left out and counted, never a contract fault.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include <absl/container/flat_hash_map.h>

#include "store/data.h"
#include "store/store_image.h"

class StoreLoader {
public:
    // i_isWanted: whether records of the Type of this name are taken; others are read past.
    StoreLoader(Data& i_data, std::function<bool(std::string_view)> i_isWanted);

    // False if the bytes are damaged; what stood before the damage is in the store.
    [[nodiscard]] bool Load(std::string_view i_bytes);

    std::size_t ItemCount() const { return m_itemCount; }
    std::size_t LeftOutCount() const { return m_leftOutCount; }

private:
    // One item record. The item is null when it was read past, or a handler removed it at once.
    struct Entry {
        Item* item = nullptr;
        std::uint64_t filledEnds = 0; // by slot, the `One` ends that a record has filled
    };

    void TakeType(const StoreImageReader& i_reader);
    void TakeItem(const StoreImageReader& i_reader);
    void TakeConnections();
    void TakeConnection(std::int32_t i_lowId, std::int32_t i_highId);
    Entry* Find(std::int32_t i_id);
    static bool FillEnd(OneOrMany i_cardinality, unsigned i_slot, Entry& io_entry);

    Data& m_data;
    std::function<bool(std::string_view)> m_isWanted;
    Type* mp_type = nullptr; // of the item records being read; null: they are read past
    // Ids count from 1 in a file of ours; an id out of its turn is looked up instead.
    std::vector<Entry> m_entries;
    absl::flat_hash_map<std::int32_t, Entry> m_oddEntries;
    // Connections read and not yet made: their items lie all over the memory, so a few dozen are sent for at once.
    std::vector<std::pair<std::int32_t, std::int32_t>> m_connections;
    std::size_t m_itemCount = 0;
    std::size_t m_leftOutCount = 0;
};
