#include "store/neighbours_walk.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <tuple>

#include <absl/container/inlined_vector.h>

namespace {

bool Before(const Item* ip_left, const Item* ip_right) {
    return std::less<const Item*>()(ip_left, ip_right);
}

} // namespace

std::size_t Neighbours::Size() const {
    switch (Kind()) {
    case c_single:
        return m_bits != 0 ? 1 : 0;
    case c_array:
        return AsArray()->m_size;
    default:
        return AsCrowd()->Size();
    }
}

Item* Neighbours::FirstOfMany() const {
    return Kind() == c_array ? AsArray()->Items()[0] : AsCrowd()->First();
}

bool Neighbours::ManyContain(const Item* ip_item) const {
    if (Kind() == c_array) {
        Item** lp_items = AsArray()->Items();
        return std::binary_search(lp_items, lp_items + AsArray()->m_size, ip_item, Before);
    }
    return AsCrowd()->Contains(ip_item);
}

bool Neighbours::Insert(Item* ip_item) {
    if (m_bits == 0) {
        m_bits = reinterpret_cast<std::uintptr_t>(ip_item);
        return true;
    }
    if (Kind() == c_array)
        return InsertInArray(ip_item);
    if (Kind() == c_crowd)
        return AsCrowd()->Insert(ip_item);
    if (Single() == ip_item)
        return false;
    Array* lp_array = NewArray(2);
    lp_array->m_size = 2;
    lp_array->Items()[0] = std::min(Single(), ip_item, Before);
    lp_array->Items()[1] = std::max(Single(), ip_item, Before);
    m_bits = reinterpret_cast<std::uintptr_t>(lp_array) | c_array;
    return true;
}

bool Neighbours::InsertInArray(Item* ip_item) {
    Array* lp_array = AsArray();
    Item** lp_end = lp_array->Items() + lp_array->m_size;
    Item** lp_place =
        Before(lp_end[-1], ip_item) ? lp_end : std::lower_bound(lp_array->Items(), lp_end, ip_item, Before);
    if (lp_place != lp_end && *lp_place == ip_item)
        return false;
    if (lp_array->m_size == c_longestArray) {
        Crowd* lp_crowd = new Crowd;
        for (Item** lp_old = lp_array->Items(); lp_old != lp_end; ++lp_old)
            lp_crowd->Insert(*lp_old);
        lp_crowd->Insert(ip_item);
        std::free(lp_array);
        m_bits = reinterpret_cast<std::uintptr_t>(lp_crowd) | c_crowd;
        return true;
    }
    const std::size_t l_before = static_cast<std::size_t>(lp_place - lp_array->Items());
    const std::size_t l_after = lp_array->m_size - l_before;
    if (lp_array->m_size == lp_array->m_capacity) {
        // Even capacities fill the allocator's 16-byte steps.
        const std::uint32_t l_more = lp_array->m_capacity < 8 ? 2 : (lp_array->m_capacity / 2 + 1) & ~1U;
        Array* lp_larger = NewArray(std::min(c_longestArray, lp_array->m_capacity + l_more));
        lp_larger->m_size = lp_array->m_size;
        std::memcpy(lp_larger->Items(), lp_array->Items(), l_before * sizeof(Item*));
        std::memcpy(lp_larger->Items() + l_before + 1, lp_place, l_after * sizeof(Item*));
        std::free(lp_array);
        lp_array = lp_larger;
        m_bits = reinterpret_cast<std::uintptr_t>(lp_array) | c_array;
    } else {
        std::memmove(lp_place + 1, lp_place, l_after * sizeof(Item*));
    }
    lp_array->Items()[l_before] = ip_item;
    ++lp_array->m_size;
    return true;
}

bool Neighbours::Erase(Item* ip_item) {
    if (Kind() == c_array)
        return EraseFromArray(ip_item);
    if (Kind() == c_crowd)
        return EraseFromCrowd(ip_item);
    if (m_bits == 0 || Single() != ip_item)
        return false;
    m_bits = 0;
    return true;
}

bool Neighbours::EraseFromArray(Item* ip_item) {
    Array* lp_array = AsArray();
    Item** lp_end = lp_array->Items() + lp_array->m_size;
    Item** lp_place = std::lower_bound(lp_array->Items(), lp_end, ip_item, Before);
    if (lp_place == lp_end || *lp_place != ip_item)
        return false;
    std::memmove(lp_place, lp_place + 1, static_cast<std::size_t>(lp_end - lp_place - 1) * sizeof(Item*));
    if (--lp_array->m_size == 1) {
        m_bits = reinterpret_cast<std::uintptr_t>(lp_array->Items()[0]);
        std::free(lp_array);
    }
    return true;
}

bool Neighbours::EraseFromCrowd(Item* ip_item) {
    Crowd* lp_crowd = AsCrowd();
    if (!lp_crowd->Erase(ip_item))
        return false;
    if (lp_crowd->Size() <= c_smallestCrowd) {
        Array* lp_array = NewArray(c_smallestCrowd);
        ForEach([lp_array](Item* ip_left) { lp_array->Items()[lp_array->m_size++] = ip_left; });
        delete lp_crowd;
        m_bits = reinterpret_cast<std::uintptr_t>(lp_array) | c_array;
    }
    return true;
}

bool Neighbours::AnyOfCommon(std::span<const Neighbours*> io_sets, absl::FunctionRef<bool(Item*)> i_predicate) {
    // Few items are looked up in the other sets one by one; the members of crowds are met slab by slab.
    std::sort(io_sets.begin(), io_sets.end(), [](const Neighbours* ip_left, const Neighbours* ip_right) {
        return std::tuple(ip_left->Kind() == c_crowd, ip_left->Size()) <
               std::tuple(ip_right->Kind() == c_crowd, ip_right->Size());
    });
    const Neighbours& l_smallest = *io_sets.front();
    if (l_smallest.Kind() == c_crowd) {
        absl::InlinedVector<const Crowd*, 8> l_crowds;
        for (const Neighbours* lp_set : io_sets)
            l_crowds.push_back(lp_set->AsCrowd());
        return Crowd::AnyOfCommon(l_crowds, i_predicate);
    }
    std::array<Item*, c_longestArray> l_items;
    Item** lp_end = l_items.data();
    l_smallest.ForEach([&lp_end](Item* ip_item) { *lp_end++ = ip_item; });
    for (const Neighbours* lp_set : io_sets.subspan(1))
        lp_end = lp_set->KeepMembers(l_items.data(), lp_end);
    return std::any_of(l_items.data(), lp_end, i_predicate);
}

Item** Neighbours::KeepMembers(Item** ip_begin, Item** ip_end) const {
    if (Kind() == c_crowd)
        return AsCrowd()->KeepMembers(ip_begin, ip_end);
    return std::remove_if(ip_begin, ip_end, [this](const Item* ip_item) { return !Contains(ip_item); });
}

void Neighbours::FreeMany() {
    if (Kind() == c_array)
        std::free(AsArray());
    else
        delete AsCrowd();
}

Neighbours::Array* Neighbours::NewArray(std::uint32_t i_capacity) {
    void* lp_memory = std::malloc(sizeof(Array) + i_capacity * sizeof(Item*));
    if (lp_memory == nullptr)
        throw std::bad_alloc();
    return new (lp_memory) Array{0, i_capacity};
}

bool Neighbours::IsWellFormed() const {
    if (Kind() == c_single)
        return true;
    const Item* lp_last = nullptr;
    const bool l_isAscending = !AnyOf([&lp_last](const Item* ip_item) {
        const bool l_isWrong = ip_item == nullptr || !Before(lp_last, ip_item);
        lp_last = ip_item;
        return l_isWrong;
    });
    return l_isAscending && Size() > 1;
}
