#include "store/item_slabs.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>

#include <sys/mman.h>

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

// The first slab of a Type is small, for most Types have a handful of items; each next one is as large as all before
// together, up to the size of a huge page, so that a million items do not take a fresh page table entry each.
constexpr std::size_t c_smallestSlab = 8;              // records
constexpr std::size_t c_largestSlab = 2 * 1024 * 1024; // bytes
constexpr std::size_t c_mostRecords = 65536;           // as an item's place in its slab has 16 bits

// One slab of the largest size, on a multiple of it.
void* MapLargestSlab() {
    void* lp_memory =
        mmap(nullptr, 2 * c_largestSlab, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (lp_memory == MAP_FAILED)
        throw std::bad_alloc();
    char* lp_begin = static_cast<char*>(lp_memory);
    const std::size_t l_lead = -reinterpret_cast<std::uintptr_t>(lp_begin) % c_largestSlab;
    if (l_lead > 0)
        munmap(lp_begin, l_lead);
    munmap(lp_begin + l_lead + c_largestSlab, c_largestSlab - l_lead);
    madvise(lp_begin + l_lead, c_largestSlab, MADV_HUGEPAGE); // without huge pages it is merely slower
    return lp_begin + l_lead;
}

} // namespace

ItemSlabs::~ItemSlabs() {
    for (ItemSlab* lp_slab : m_slabs)
        FreeSlab(lp_slab);
}

Item* ItemSlabs::Allocate(Type* ip_type, std::uint8_t i_slots) {
    ItemSlab* lp_slab = OpenSlab(i_slots);
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
    ItemSlab::Of(ip_item)->Live()[ip_item->m_index / 64] &= ~(std::uint64_t{1} << (ip_item->m_index % 64));
    --m_count;
}

void ItemSlabs::Release(Item* ip_item) {
    ItemSlab* lp_slab = ItemSlab::Of(ip_item);
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
    // An empty slab goes back, but for a last small one: a Type whose only item comes and goes keeps its place.
    if (lp_slab->used == 0 && (m_slabs.size() > 1 || lp_slab->isMapped)) {
        m_open.erase(std::find(m_open.begin(), m_open.end(), lp_slab));
        m_slabs.erase(m_slabs.begin() + lp_slab->rank);
        Rank();
        FreeSlab(lp_slab);
    }
}

Item* ItemSlabs::First() const {
    for (ItemSlab* lp_slab : m_slabs) {
        for (std::uint32_t l_word = 0; l_word < lp_slab->words; ++l_word) {
            if (const std::uint64_t l_bits = lp_slab->Live()[l_word]; l_bits != 0)
                return lp_slab->At(l_word * 64 + static_cast<std::uint32_t>(std::countr_zero(l_bits)));
        }
    }
    return nullptr;
}

ItemSlab* ItemSlabs::OpenSlab(std::uint8_t i_slots) {
    while (!m_open.empty()) {
        ItemSlab* lp_slab = m_open.back();
        if (lp_slab->used < lp_slab->capacity && lp_slab->slots == i_slots)
            return lp_slab;
        // Full, or of the time before the Type's latest relation: its free records stay unused.
        lp_slab->isOpen = false;
        m_open.pop_back();
    }
    return NewSlab(i_slots);
}

ItemSlab* ItemSlabs::NewSlab(std::uint8_t i_slots) {
    const std::size_t l_recordSize = sizeof(Item) + i_slots * sizeof(Neighbours);
    const std::size_t l_most = std::min(c_mostRecords, (c_largestSlab - sizeof(ItemSlab)) / l_recordSize);
    const bool l_isLargest = m_count >= l_most / 2;
    const std::size_t l_capacity = l_isLargest ? l_most : std::max(c_smallestSlab, m_count);
    const std::size_t l_size = l_isLargest ? c_largestSlab : sizeof(ItemSlab) + l_capacity * l_recordSize;
    const std::size_t l_words = (l_capacity + 63) / 64;
    void* lp_memory = l_isLargest ? MapLargestSlab() : ::operator new(l_size, std::align_val_t(alignof(ItemSlab)));
    auto* lp_slab = new (lp_memory) ItemSlab{};
    lp_slab->capacity = static_cast<std::uint32_t>(l_capacity);
    lp_slab->recordSize = static_cast<std::uint32_t>(l_recordSize);
    lp_slab->slots = i_slots;
    lp_slab->words = static_cast<std::uint32_t>(l_words);
    lp_slab->bits = new std::uint64_t[2 * l_words]();
    lp_slab->bytes = l_size;
    lp_slab->isOpen = true;
    lp_slab->isMapped = l_isLargest;
    ASAN_POISON_MEMORY_REGION(lp_slab + 1, l_capacity * l_recordSize);
    m_slabs.insert(std::lower_bound(m_slabs.begin(), m_slabs.end(), lp_slab, std::less<ItemSlab*>()), lp_slab);
    Rank();
    m_open.push_back(lp_slab);
    m_bytes += l_size;
    return lp_slab;
}

void ItemSlabs::FreeSlab(ItemSlab* ip_slab) {
    ASAN_UNPOISON_MEMORY_REGION(ip_slab, ip_slab->bytes);
    m_bytes -= ip_slab->bytes;
    delete[] ip_slab->bits;
    if (ip_slab->isMapped)
        munmap(ip_slab, c_largestSlab);
    else
        ::operator delete(ip_slab, std::align_val_t(alignof(ItemSlab)));
}

void ItemSlabs::Rank() {
    for (std::size_t l_rank = 0; l_rank < m_slabs.size(); ++l_rank)
        m_slabs[l_rank]->rank = static_cast<std::uint32_t>(l_rank);
}

std::uint32_t ItemSlabs::TakeFreeIndex(ItemSlab* ip_slab) {
    std::uint32_t l_word = ip_slab->firstFree;
    while (ip_slab->Used()[l_word] == ~std::uint64_t{0})
        ++l_word;
    ip_slab->firstFree = l_word;
    const auto l_bit = static_cast<std::uint32_t>(std::countr_one(ip_slab->Used()[l_word]));
    ip_slab->Used()[l_word] |= std::uint64_t{1} << l_bit;
    ++ip_slab->used;
    return l_word * 64 + l_bit;
}
