#include "store/item_slabs.h"

#include <algorithm>
#include <functional>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define TIDEWELL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TIDEWELL_ASAN 1
#endif
#endif
#ifdef TIDEWELL_ASAN
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(i_address, i_size) (static_cast<void>(i_address), static_cast<void>(i_size))
#define ASAN_UNPOISON_MEMORY_REGION(i_address, i_size) (static_cast<void>(i_address), static_cast<void>(i_size))
#endif

namespace {

// The first slab of a Type is small, for most Types have a handful of items; each next one is twice as large up to
// a size at which the slabs' own cost no longer counts.
constexpr std::uint32_t c_smallestSlab = 8;      // records
constexpr std::size_t c_largestSlab = 64 * 1024; // bytes, about

} // namespace

ItemSlabs::~ItemSlabs() {
    for (Slab* lp_slab : m_slabs)
        FreeSlab(lp_slab);
}

Item* ItemSlabs::Allocate(Type* ip_type, std::uint8_t i_slots) {
    Slab* lp_slab = OpenSlab(i_slots);
    const std::uint32_t l_index = TakeFreeIndex(lp_slab);
    Item* lp_item = lp_slab->At(l_index);
    ASAN_UNPOISON_MEMORY_REGION(lp_item, lp_slab->recordSize);
    new (lp_item) Item(ip_type, static_cast<std::uint16_t>(l_index), i_slots);
    std::uninitialized_value_construct_n(lp_item->InlineSlots(), i_slots);
    lp_slab->Live()[l_index / 64] |= std::uint64_t{1} << (l_index % 64);
    ++m_count;
    return lp_item;
}

void ItemSlabs::Retire(Item* ip_item) {
    SlabOf(ip_item)->Live()[ip_item->m_index / 64] &= ~(std::uint64_t{1} << (ip_item->m_index % 64));
    --m_count;
}

void ItemSlabs::Release(Item* ip_item) {
    Slab* lp_slab = SlabOf(ip_item);
    const std::uint32_t l_word = ip_item->m_index / 64U;
    lp_slab->Used()[l_word] &= ~(std::uint64_t{1} << (ip_item->m_index % 64));
    lp_slab->firstFree = std::min(lp_slab->firstFree, l_word);
    ip_item->mp_type = nullptr; // whoever still uses it stops at once
    ASAN_POISON_MEMORY_REGION(ip_item, lp_slab->recordSize);
    --lp_slab->used;
    if (!lp_slab->isOpen) {
        lp_slab->isOpen = true;
        m_open.push_back(lp_slab);
    }
    // An empty slab goes back, but for the last: a Type whose only item comes and goes keeps its place.
    if (lp_slab->used == 0 && m_slabs.size() > 1) {
        m_open.erase(std::find(m_open.begin(), m_open.end(), lp_slab));
        m_slabs.erase(std::lower_bound(m_slabs.begin(), m_slabs.end(), lp_slab, std::less<Slab*>()));
        FreeSlab(lp_slab);
    }
}

Item* ItemSlabs::First() const {
    for (Slab* lp_slab : m_slabs) {
        for (std::uint32_t l_word = 0; l_word < lp_slab->words; ++l_word) {
            if (const std::uint64_t l_bits = lp_slab->Live()[l_word]; l_bits != 0)
                return lp_slab->At(l_word * 64 + static_cast<std::uint32_t>(std::countr_zero(l_bits)));
        }
    }
    return nullptr;
}

ItemSlabs::Slab* ItemSlabs::OpenSlab(std::uint8_t i_slots) {
    while (!m_open.empty()) {
        Slab* lp_slab = m_open.back();
        if (lp_slab->used < lp_slab->capacity && lp_slab->slots == i_slots)
            return lp_slab;
        // Full, or of the time before the Type's latest relation: its free records stay unused.
        lp_slab->isOpen = false;
        m_open.pop_back();
    }
    return NewSlab(i_slots);
}

ItemSlabs::Slab* ItemSlabs::NewSlab(std::uint8_t i_slots) {
    const std::size_t l_recordSize = sizeof(Item) + i_slots * sizeof(Neighbours);
    const std::size_t l_largest = std::max<std::size_t>(c_largestSlab / l_recordSize, c_smallestSlab);
    const std::size_t l_wanted = std::max<std::size_t>(c_smallestSlab, m_count);
    const auto l_capacity = static_cast<std::uint32_t>(std::min(l_wanted, l_largest));
    const std::uint32_t l_words = (l_capacity + 63) / 64;
    const std::size_t l_head = sizeof(Slab) + 2 * l_words * sizeof(std::uint64_t);
    const std::size_t l_size = l_head + l_capacity * l_recordSize;
    Slab* lp_slab = new (::operator new(l_size))
        Slab{l_capacity, 0, static_cast<std::uint32_t>(l_recordSize), l_words, 0, i_slots, true};
    std::fill_n(lp_slab->Live(), 2 * l_words, 0);
    ASAN_POISON_MEMORY_REGION(lp_slab->Records(), l_capacity * l_recordSize);
    m_slabs.insert(std::lower_bound(m_slabs.begin(), m_slabs.end(), lp_slab, std::less<Slab*>()), lp_slab);
    m_open.push_back(lp_slab);
    m_bytes += l_size;
    return lp_slab;
}

ItemSlabs::Slab* ItemSlabs::SlabOf(const Item* ip_item) const {
    // The slab that begins last before the item: found from the item alone would cost it eight bytes.
    auto l_after = std::upper_bound(m_slabs.begin(), m_slabs.end(), reinterpret_cast<std::uintptr_t>(ip_item),
                                    [](std::uintptr_t i_address, const Slab* ip_slab) {
                                        return i_address < reinterpret_cast<std::uintptr_t>(ip_slab);
                                    });
    return *--l_after;
}

void ItemSlabs::FreeSlab(Slab* ip_slab) {
    const std::size_t l_size = sizeof(Slab) + 2 * ip_slab->words * sizeof(std::uint64_t) +
                               std::size_t{ip_slab->capacity} * ip_slab->recordSize;
    ASAN_UNPOISON_MEMORY_REGION(ip_slab, l_size);
    m_bytes -= l_size;
    ::operator delete(ip_slab);
}

std::uint32_t ItemSlabs::TakeFreeIndex(Slab* ip_slab) {
    std::uint32_t l_word = ip_slab->firstFree;
    while (ip_slab->Used()[l_word] == ~std::uint64_t{0})
        ++l_word;
    ip_slab->firstFree = l_word;
    const auto l_bit = static_cast<std::uint32_t>(std::countr_one(ip_slab->Used()[l_word]));
    ip_slab->Used()[l_word] |= std::uint64_t{1} << l_bit;
    ++ip_slab->used;
    return l_word * 64 + l_bit;
}
