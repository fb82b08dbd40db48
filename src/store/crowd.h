// Many items of one Type: per slab a list of two-byte indices, or a bit for each record once they are many. So a
// value shared by half a million owners takes two bits to two bytes an owner, and joining, leaving and asking touch
// a line or two of memory. In address order.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <absl/functional/function_ref.h>

#include "store/item_slab.h"

class Crowd {
public:
    Crowd() = default;
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;
    ~Crowd();

    std::size_t Size() const { return m_size; } // never asked to hold none
    Item* First() const;
    bool Contains(const Item* ip_item) const;
    bool Insert(Item* ip_item);
    bool Erase(const Item* ip_item);

    // As in Neighbours.
    template <class Predicate>
    bool AnyOf(Predicate i_predicate) const;
    // The same for the members that all of several crowds, of one Type, have in common. The smallest is the first.
    // Slab by slab; touches none of the items, and allocates nothing for up to eight crowds.
    static bool AnyOfCommon(std::span<const Crowd* const> i_crowds, absl::FunctionRef<bool(Item*)> i_predicate);
    // Moves those items of an ascending array that are members to its front, in order; answers their end. Touches one
    // item of each slab.
    Item** KeepMembers(Item** ip_begin, Item** ip_end) const;

private:
    struct Block {
        std::uint32_t count;    // indices held, at least one
        std::uint32_t capacity; // indices there is room for in a list; 0: these are bits
        bool IsList() const { return capacity > 0; }
        std::uint16_t* List() { return reinterpret_cast<std::uint16_t*>(this + 1); }
        std::uint64_t* Bits() { return reinterpret_cast<std::uint64_t*>(this + 1); }
    };
    struct Part {
        ItemSlab* slab;
        Block* block; // owned
    };

    const Part* Find(const ItemSlab* ip_slab) const;
    Block* BlockOf(const ItemSlab* ip_slab) const; // null if there are no members in the slab
    static bool Holds(Block* ip_block, std::uint16_t i_index);
    static bool AnyOfCommon(ItemSlab& io_slab, std::span<Block*> io_blocks, absl::FunctionRef<bool(Item*)> i_predicate);
    static Block* NewList(std::uint32_t i_capacity);
    static Block* NewBits(const ItemSlab& i_slab);
    static bool IsForBits(const ItemSlab& i_slab, std::uint32_t i_count);
    static bool InsertInList(Part& io_part, std::uint16_t i_index);
    static void TurnToBits(Part& io_part);
    static void TurnToList(Part& io_part);
    static bool EraseFrom(Part& io_part, std::uint16_t i_index);

    std::vector<Part> m_parts; // ascending by address of the slab
    std::size_t m_size = 0;
};

template <class Predicate>
bool Crowd::AnyOf(Predicate i_predicate) const {
    for (const Part& l_part : m_parts) {
        if (l_part.block->capacity > 0) {
            for (std::uint32_t l_place = 0; l_place < l_part.block->count; ++l_place) {
                if (i_predicate(l_part.slab->At(l_part.block->List()[l_place])))
                    return true;
            }
            continue;
        }
        for (std::uint32_t l_word = 0; l_word < l_part.slab->words; ++l_word) {
            for (std::uint64_t l_bits = l_part.block->Bits()[l_word]; l_bits != 0; l_bits &= l_bits - 1) {
                const auto l_bit = static_cast<std::uint32_t>(std::countr_zero(l_bits));
                if (i_predicate(l_part.slab->At(l_word * 64 + l_bit)))
                    return true;
            }
        }
    }
    return false;
}
