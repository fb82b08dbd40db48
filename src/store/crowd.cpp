#include "store/crowd.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

void* Allocate(std::size_t i_size) {
    void* lp_memory = std::malloc(i_size);
    if (lp_memory == nullptr)
        throw std::bad_alloc();
    return lp_memory;
}

std::uint64_t Bit(std::uint16_t i_index) {
    return std::uint64_t{1} << (i_index % 64);
}

} // namespace

Crowd::~Crowd() {
    for (const Part& l_part : m_parts)
        std::free(l_part.block);
}

Crowd::Block* Crowd::NewList(std::uint32_t i_capacity) {
    return new (Allocate(sizeof(Block) + i_capacity * sizeof(std::uint16_t))) Block{0, i_capacity};
}

Crowd::Block* Crowd::NewBits(const ItemSlab& i_slab) {
    const std::size_t l_size = i_slab.words * sizeof(std::uint64_t);
    Block* lp_block = new (Allocate(sizeof(Block) + l_size)) Block{0, 0};
    std::memset(lp_block->Bits(), 0, l_size);
    return lp_block;
}

bool Crowd::IsForBits(const ItemSlab& i_slab, std::uint32_t i_count) {
    // From half the size of the bits on a list no longer pays; nor does it for a slab of a few words.
    return i_slab.words <= 4 || i_count >= i_slab.capacity / 32;
}

const Crowd::Part* Crowd::Find(const ItemSlab* ip_slab) const {
    // A crowd that has members in all slabs of the Type, as large ones have, is not searched.
    if (ip_slab->rank < m_parts.size() && m_parts[ip_slab->rank].slab == ip_slab)
        return &m_parts[ip_slab->rank];
    const auto l_place =
        std::lower_bound(m_parts.begin(), m_parts.end(), ip_slab, [](const Part& i_part, const ItemSlab* ip_wanted) {
            return std::less<>()(i_part.slab, ip_wanted);
        });
    return m_parts.data() + (l_place - m_parts.begin());
}

Item* Crowd::First() const {
    Item* lp_first = nullptr;
    AnyOf([&lp_first](Item* ip_item) {
        lp_first = ip_item;
        return true;
    });
    return lp_first;
}

Crowd::Block* Crowd::BlockOf(const ItemSlab* ip_slab) const {
    const Part* lp_part = Find(ip_slab);
    return lp_part != m_parts.data() + m_parts.size() && lp_part->slab == ip_slab ? lp_part->block : nullptr;
}

bool Crowd::Holds(Block* ip_block, std::uint16_t i_index) {
    if (ip_block->IsList())
        return std::binary_search(ip_block->List(), ip_block->List() + ip_block->count, i_index);
    return (ip_block->Bits()[i_index / 64] & Bit(i_index)) != 0;
}

bool Crowd::Contains(const Item* ip_item) const {
    Block* lp_block = BlockOf(ItemSlab::Of(ip_item));
    return lp_block != nullptr && Holds(lp_block, static_cast<std::uint16_t>(ItemSlab::IndexOf(ip_item)));
}

bool Crowd::Insert(Item* ip_item) {
    ItemSlab* lp_slab = ItemSlab::Of(ip_item);
    const auto l_index = static_cast<std::uint16_t>(ItemSlab::IndexOf(ip_item));
    const auto l_place = m_parts.begin() + (Find(lp_slab) - m_parts.data());
    if (l_place == m_parts.end() || l_place->slab != lp_slab) {
        Part l_part{lp_slab, IsForBits(*lp_slab, 1) ? NewBits(*lp_slab) : NewList(4)};
        if (l_part.block->capacity == 0)
            l_part.block->Bits()[l_index / 64] |= Bit(l_index);
        else
            l_part.block->List()[0] = l_index;
        l_part.block->count = 1;
        m_parts.insert(l_place, l_part);
        ++m_size;
        return true;
    }
    bool l_isNew = false;
    if (l_place->block->capacity == 0) {
        std::uint64_t& l_word = l_place->block->Bits()[l_index / 64];
        l_isNew = (l_word & Bit(l_index)) == 0;
        l_word |= Bit(l_index);
        l_place->block->count += l_isNew ? 1 : 0;
    } else {
        l_isNew = InsertInList(*l_place, l_index);
    }
    m_size += l_isNew ? 1 : 0;
    return l_isNew;
}

bool Crowd::InsertInList(Part& io_part, std::uint16_t i_index) {
    Block* lp_block = io_part.block;
    std::uint16_t* lp_end = lp_block->List() + lp_block->count;
    std::uint16_t* lp_place = lp_end[-1] < i_index ? lp_end : std::lower_bound(lp_block->List(), lp_end, i_index);
    if (lp_place != lp_end && *lp_place == i_index)
        return false;
    if (IsForBits(*io_part.slab, lp_block->count + 1)) {
        TurnToBits(io_part);
        io_part.block->Bits()[i_index / 64] |= Bit(i_index);
        ++io_part.block->count;
        return true;
    }
    const auto l_before = static_cast<std::size_t>(lp_place - lp_block->List());
    const std::size_t l_after = lp_block->count - l_before;
    if (lp_block->count == lp_block->capacity) {
        Block* lp_larger = NewList(lp_block->capacity + std::max(8U, lp_block->capacity / 2));
        lp_larger->count = lp_block->count;
        std::memcpy(lp_larger->List(), lp_block->List(), l_before * sizeof(std::uint16_t));
        std::memcpy(lp_larger->List() + l_before + 1, lp_place, l_after * sizeof(std::uint16_t));
        std::free(lp_block);
        io_part.block = lp_block = lp_larger;
    } else {
        std::memmove(lp_place + 1, lp_place, l_after * sizeof(std::uint16_t));
    }
    lp_block->List()[l_before] = i_index;
    ++lp_block->count;
    return true;
}

void Crowd::TurnToBits(Part& io_part) {
    Block* lp_list = io_part.block;
    io_part.block = NewBits(*io_part.slab);
    io_part.block->count = lp_list->count;
    for (std::uint32_t l_place = 0; l_place < lp_list->count; ++l_place)
        io_part.block->Bits()[lp_list->List()[l_place] / 64] |= Bit(lp_list->List()[l_place]);
    std::free(lp_list);
}

void Crowd::TurnToList(Part& io_part) {
    Block* lp_bits = io_part.block;
    io_part.block = NewList(lp_bits->count + 8);
    for (std::uint32_t l_word = 0; l_word < io_part.slab->words; ++l_word) {
        for (std::uint64_t l_bits = lp_bits->Bits()[l_word]; l_bits != 0; l_bits &= l_bits - 1) {
            const auto l_index = l_word * 64 + static_cast<std::uint32_t>(std::countr_zero(l_bits));
            io_part.block->List()[io_part.block->count++] = static_cast<std::uint16_t>(l_index);
        }
    }
    std::free(lp_bits);
}

bool Crowd::Erase(const Item* ip_item) {
    const ItemSlab* lp_slab = ItemSlab::Of(ip_item);
    const auto l_place = m_parts.begin() + (Find(lp_slab) - m_parts.data());
    if (l_place == m_parts.end() || l_place->slab != lp_slab ||
        !EraseFrom(*l_place, static_cast<std::uint16_t>(ItemSlab::IndexOf(ip_item))))
        return false;
    --m_size;
    if (l_place->block->count == 0) {
        std::free(l_place->block);
        m_parts.erase(l_place);
    }
    return true;
}

bool Crowd::EraseFrom(Part& io_part, std::uint16_t i_index) {
    Block* lp_block = io_part.block;
    if (lp_block->capacity > 0) {
        std::uint16_t* lp_end = lp_block->List() + lp_block->count;
        std::uint16_t* lp_place = std::lower_bound(lp_block->List(), lp_end, i_index);
        if (lp_place == lp_end || *lp_place != i_index)
            return false;
        std::memmove(lp_place, lp_place + 1, static_cast<std::size_t>(lp_end - lp_place - 1) * sizeof(std::uint16_t));
        --lp_block->count;
        return true;
    }
    std::uint64_t& l_word = lp_block->Bits()[i_index / 64];
    if ((l_word & Bit(i_index)) == 0)
        return false;
    l_word &= ~Bit(i_index);
    --lp_block->count;
    // Well below the size at which a list becomes bits, so that none goes to and fro.
    if (lp_block->count > 0 && lp_block->count < io_part.slab->capacity / 128 &&
        !IsForBits(*io_part.slab, lp_block->count))
        TurnToList(io_part);
    return true;
}
