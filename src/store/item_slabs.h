// The memory of the items of one Type, in slabs. Records never move. Slabs are kept by address and each knows its live
// records as bits, so a walk in address order is a walk over bits.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "store/item_slab.h"

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
    ItemSlab* OpenSlab(std::uint8_t i_slots);
    ItemSlab* NewSlab(std::uint8_t i_slots);
    void Rank();
    void FreeSlab(ItemSlab* ip_slab);
    static std::uint32_t TakeFreeIndex(ItemSlab* ip_slab);

    std::vector<ItemSlab*> m_slabs; // ascending by address, owned
    std::vector<ItemSlab*> m_open;  // those that may have a free record, in no order
    std::size_t m_count = 0;        // live records
    std::size_t m_bytes = 0;
};

template <class Visitor>
void ItemSlabs::ForEach(Visitor i_visit) const {
    for (ItemSlab* lp_slab : m_slabs) {
        for (std::uint32_t l_word = 0; l_word < lp_slab->words; ++l_word) {
            for (std::uint64_t l_bits = lp_slab->Live()[l_word]; l_bits != 0; l_bits &= l_bits - 1)
                i_visit(lp_slab->At(l_word * 64 + static_cast<std::uint32_t>(std::countr_zero(l_bits))));
        }
    }
}
