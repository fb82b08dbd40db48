// The memory of the items of one Type: slabs of equal records, each record an Item followed by its slots. Records
// never move. Slabs are kept by address and each knows its live records as bits, so a walk in address order is a
// walk over bits.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "store/item.h"

class ItemSlabs {
public:
    ItemSlabs() = default;
    ItemSlabs(const ItemSlabs&) = delete;
    ItemSlabs& operator=(const ItemSlabs&) = delete;
    // Frees the memory only; the owner has cleared the items.
    ~ItemSlabs();

    // A live item of the Type with so many slots, all empty.
    Item* Allocate(Type* ip_type, std::uint8_t i_slots);
    // No walk meets the item any more; its record stays.
    void Retire(Item* ip_item);
    // The record may be used again. The item has been retired, its value and slots are freed.
    void Release(Item* ip_item);

    std::size_t Count() const { return m_count; }
    std::size_t Bytes() const { return m_bytes; }
    Item* First() const;

    // In address order. The callback may retire items but not allocate or release any.
    template <class Visitor>
    void ForEach(Visitor i_visit) const;

private:
    struct alignas(std::uint64_t) Slab { // what follows it is aligned by its size
        std::uint32_t capacity;
        std::uint32_t used;       // records that are live or retired
        std::uint32_t recordSize; // bytes
        std::uint32_t words;      // of 64 bits in each of the two bit sets
        std::uint32_t firstFree;  // no word before this has a free record
        std::uint32_t slots;
        bool isOpen; // in m_open

        // After the header: the bits of the live records, the bits of the used ones, the records.
        std::uint64_t* Live() { return reinterpret_cast<std::uint64_t*>(this + 1); }
        std::uint64_t* Used() { return Live() + words; }
        char* Records() { return reinterpret_cast<char*>(Used() + words); }
        Item* At(std::uint32_t i_index) {
            return reinterpret_cast<Item*>(Records() + std::size_t{i_index} * recordSize);
        }
    };

    Slab* OpenSlab(std::uint8_t i_slots);
    Slab* NewSlab(std::uint8_t i_slots);
    Slab* SlabOf(const Item* ip_item) const;
    void FreeSlab(Slab* ip_slab);
    static std::uint32_t TakeFreeIndex(Slab* ip_slab);

    std::vector<Slab*> m_slabs; // ascending by address, owned
    std::vector<Slab*> m_open;  // those that may have a free record, in no order
    std::size_t m_count = 0;    // live records
    std::size_t m_bytes = 0;
};

template <class Visitor>
void ItemSlabs::ForEach(Visitor i_visit) const {
    for (Slab* lp_slab : m_slabs) {
        for (std::uint32_t l_word = 0; l_word < lp_slab->words; ++l_word) {
            for (std::uint64_t l_bits = lp_slab->Live()[l_word]; l_bits != 0; l_bits &= l_bits - 1)
                i_visit(lp_slab->At(l_word * 64 + static_cast<std::uint32_t>(std::countr_zero(l_bits))));
        }
    }
}
