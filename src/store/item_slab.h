// A block of equal records of one Type, each an Item followed by its slots. From an item its slab and its place in
// it are found by arithmetic alone.
#pragma once

#include <cstddef>
#include <cstdint>

#include "store/item.h"

// The header; the records follow it. Aligned to cache lines, so that small records do not straddle two.
struct alignas(64) ItemSlab {
    std::uint32_t capacity;   // records
    std::uint32_t used;       // records that are live or retired
    std::uint32_t recordSize; // bytes
    std::uint32_t slots;      // inline ones of each record
    std::uint32_t words;      // of 64 bits in each of the two bit sets
    std::uint32_t firstFree;  // no word before this has a free record
    std::uint64_t* bits;      // owned: of the live records, then of the used ones
    std::size_t bytes;        // of this slab
    std::uint32_t rank;       // how many slabs of the Type lie before this one
    bool isOpen;              // among those that may have a free record
    bool isMapped;            // memory of its own from the system

    std::uint64_t* Live() const { return bits; }
    std::uint64_t* Used() const { return bits + words; }
    Item* At(std::uint32_t i_index) {
        return reinterpret_cast<Item*>(reinterpret_cast<char*>(this + 1) + std::size_t{i_index} * recordSize);
    }

    static ItemSlab* Of(const Item* ip_item) {
        const std::size_t l_recordSize = sizeof(Item) + ip_item->m_slots * sizeof(Neighbours);
        const auto l_first = reinterpret_cast<std::uintptr_t>(ip_item) - ip_item->m_index * l_recordSize;
        return reinterpret_cast<ItemSlab*>(l_first) - 1;
    }
    static std::uint32_t IndexOf(const Item* ip_item) { return ip_item->m_index; }

    // For items that may be out of the cache: told by their addresses alone.
    bool Holds(const Item* ip_item) const {
        const auto l_begin = reinterpret_cast<std::uintptr_t>(this);
        const auto l_address = reinterpret_cast<std::uintptr_t>(ip_item);
        return l_address > l_begin && l_address < l_begin + bytes;
    }
    std::uint32_t PlaceOf(const Item* ip_item) const {
        const auto l_offset = reinterpret_cast<std::uintptr_t>(ip_item) - reinterpret_cast<std::uintptr_t>(this + 1);
        return static_cast<std::uint32_t>(l_offset) / recordSize;
    }
};
