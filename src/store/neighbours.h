// The items that one item is connected to over one relation, in eight bytes: nothing, one pointer, or a pointer to
// a sorted array while they are few and to a crowd (crowd.h) when they are many. So a `One` end costs a plain pointer,
// and an attribute shared by half a million owners is still joined and left at once.
// Always in address order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include <absl/functional/function_ref.h>

class Crowd;
class Item;

class Neighbours {
public:
    Neighbours() = default;
    Neighbours(Neighbours&& i_other) noexcept : m_bits(std::exchange(i_other.m_bits, 0)) {}
    Neighbours& operator=(Neighbours&&) = delete;
    ~Neighbours() { Clear(); }

    bool IsEmpty() const { return m_bits == 0; }
    std::size_t Size() const;
    // The one of lowest address, null when empty.
    Item* First() const { return Kind() == c_single ? Single() : FirstOfMany(); }
    bool Contains(const Item* ip_item) const {
        return Kind() == c_single ? m_bits == reinterpret_cast<std::uintptr_t>(ip_item) && m_bits != 0
                                  : ManyContain(ip_item);
    }
    // False when it was there already.
    bool Insert(Item* ip_item);
    // False when it was not there.
    bool Erase(Item* ip_item);
    void Clear() {
        if (Kind() != c_single)
            FreeMany();
        m_bits = 0;
    }

    // The walks are in neighbours_walk.h. AnyOf calls with each item in address order until the call answers true;
    // tells whether one did. The callback must not change this set.
    template <class Predicate>
    bool AnyOf(Predicate i_predicate) const;
    template <class Visitor>
    void ForEach(Visitor i_visit) const;
    // AnyOf for the members that all of several sets, of one Type, have in common. The span, at least one, is left in
    // another order. Allocates nothing for up to eight sets.
    static bool AnyOfCommon(std::span<const Neighbours*> io_sets, absl::FunctionRef<bool(Item*)> i_predicate);

    // The representation is sound: ascending, no array or crowd of none. Touches none of the items.
    bool IsWellFormed() const;

private:
    struct Array {
        std::uint32_t m_size;
        std::uint32_t m_capacity;
        Item** Items() { return reinterpret_cast<Item**>(this + 1); }
    };

    // The low bits of a pointer tell what it points to.
    static constexpr std::uintptr_t c_single = 0;
    static constexpr std::uintptr_t c_array = 1;
    static constexpr std::uintptr_t c_crowd = 2;
    static constexpr std::uintptr_t c_kindMask = 3;
    // Spread over the slabs of a large Type, fewer would cost more in a crowd.
    static constexpr std::uint32_t c_longestArray = 128;
    // A crowd that shrinks to this becomes an array again; well below the longest array, so that a set that goes up
    // and down at the border is not converted each time.
    static constexpr std::uint32_t c_smallestCrowd = 64;

    std::uintptr_t Kind() const { return m_bits & c_kindMask; }
    Item* Single() const { return reinterpret_cast<Item*>(m_bits); }
    Array* AsArray() const { return reinterpret_cast<Array*>(m_bits - c_array); }
    Crowd* AsCrowd() const { return reinterpret_cast<Crowd*>(m_bits - c_crowd); }

    static Array* NewArray(std::uint32_t i_capacity);
    Item* FirstOfMany() const;
    bool ManyContain(const Item* ip_item) const;
    // See Crowd.
    Item** KeepMembers(Item** ip_begin, Item** ip_end) const;
    void FreeMany();
    bool InsertInArray(Item* ip_item);
    bool EraseFromArray(Item* ip_item);
    bool EraseFromCrowd(Item* ip_item);

    std::uintptr_t m_bits = 0;
};
