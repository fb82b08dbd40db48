// What crowds have in common, with each other and with the items of an array.
#include "store/crowd.h"

#include <algorithm>
#include <array>
#include <tuple>

#include <absl/container/inlined_vector.h>

namespace {

// A slab has 65,536 records at most, and a block of a thirty-second of them is bits.
constexpr std::size_t c_mostWords = 1024;
constexpr std::size_t c_longestList = 2048;

// Indices in a slab, ascending, and room for one bit of each record.
struct Scratch {
    std::array<std::uint16_t, c_longestList> list;
    std::uint32_t count = 0;
    std::array<std::uint64_t, c_mostWords> bits;

    template <class Predicate>
    void Keep(Predicate i_isWanted) {
        std::uint32_t l_kept = 0;
        for (std::uint32_t l_place = 0; l_place < count; ++l_place) {
            const std::uint16_t l_index = list[l_place];
            list[l_kept] = l_index; // no branch: which of them stay cannot be foreseen
            l_kept += i_isWanted(l_index) ? 1 : 0;
        }
        count = l_kept;
    }
    void KeepThoseOf(const std::uint64_t* ip_bits) {
        Keep([ip_bits](std::uint16_t i_index) { return (ip_bits[i_index / 64] >> (i_index % 64) & 1) != 0; });
    }
    void KeepThoseOf(const std::uint16_t* ip_list, std::uint32_t i_length, std::uint32_t i_words) {
        if (count < i_length / 16) {
            Keep([=](std::uint16_t i_index) { return std::binary_search(ip_list, ip_list + i_length, i_index); });
            return;
        }
        std::fill_n(bits.begin(), i_words, 0);
        for (std::uint32_t l_place = 0; l_place < i_length; ++l_place)
            bits[ip_list[l_place] / 64] |= std::uint64_t{1} << (ip_list[l_place] % 64);
        KeepThoseOf(bits.data());
    }
};

} // namespace

bool Crowd::AnyOfCommon(std::span<const Crowd* const> i_crowds, absl::FunctionRef<bool(Item*)> i_predicate) {
    if (i_crowds.size() == 1)
        return i_crowds.front()->AnyOf(i_predicate);
    absl::InlinedVector<Block*, 8> l_blocks;
    const std::vector<Part>& l_parts = i_crowds.front()->m_parts;
    for (std::size_t l_place = 0; l_place < l_parts.size(); ++l_place) {
        const Part& l_part = l_parts[l_place];
        if (l_place + 1 < l_parts.size())
            __builtin_prefetch(l_parts[l_place + 1].block);
        l_blocks.clear();
        for (const Crowd* lp_crowd : i_crowds) {
            if (Block* lp_block = lp_crowd->BlockOf(l_part.slab))
                l_blocks.push_back(lp_block);
        }
        if (l_blocks.size() == i_crowds.size() && AnyOfCommon(*l_part.slab, l_blocks, i_predicate))
            return true;
    }
    return false;
}

bool Crowd::AnyOfCommon(ItemSlab& io_slab, std::span<Block*> io_blocks, absl::FunctionRef<bool(Item*)> i_predicate) {
    std::sort(io_blocks.begin(), io_blocks.end(), [](const Block* ip_left, const Block* ip_right) {
        return std::tuple(!ip_left->IsList(), ip_left->count) < std::tuple(!ip_right->IsList(), ip_right->count);
    });
    Block* const lp_first = io_blocks.front();
    if (!lp_first->IsList()) {
        for (std::uint32_t l_word = 0; l_word < io_slab.words; ++l_word) {
            std::uint64_t l_bits = lp_first->Bits()[l_word];
            for (Block* lp_block : io_blocks.subspan(1))
                l_bits &= lp_block->Bits()[l_word];
            for (; l_bits != 0; l_bits &= l_bits - 1) {
                if (i_predicate(io_slab.At(l_word * 64 + static_cast<std::uint32_t>(std::countr_zero(l_bits)))))
                    return true;
            }
        }
        return false;
    }
    Scratch l_common;
    l_common.count = lp_first->count;
    std::copy_n(lp_first->List(), lp_first->count, l_common.list.begin());
    for (Block* lp_block : io_blocks.subspan(1)) {
        if (lp_block->IsList())
            l_common.KeepThoseOf(lp_block->List(), lp_block->count, io_slab.words);
        else
            l_common.KeepThoseOf(lp_block->Bits());
    }
    return std::any_of(l_common.list.begin(), l_common.list.begin() + l_common.count,
                       [&](std::uint16_t i_index) { return i_predicate(io_slab.At(i_index)); });
}

Item** Crowd::KeepMembers(Item** ip_begin, Item** ip_end) const {
    Item** lp_kept = ip_begin;
    const ItemSlab* lp_slab = nullptr;
    Block* lp_block = nullptr;
    for (Item** lp_item = ip_begin; lp_item != ip_end; ++lp_item) {
        if (lp_slab == nullptr || !lp_slab->Holds(*lp_item)) {
            lp_slab = ItemSlab::Of(*lp_item);
            lp_block = BlockOf(lp_slab);
        }
        if (lp_block != nullptr && Holds(lp_block, static_cast<std::uint16_t>(lp_slab->PlaceOf(*lp_item))))
            *lp_kept++ = *lp_item;
    }
    return lp_kept;
}
