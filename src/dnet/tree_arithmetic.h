// The numbers of the tree. They come from strangers and from a settings file, so each may be anything.
#pragma once

#include <cstdint>
#include <limits>

// One step further from the root, or one step deeper. The largest number stays what it is.
[[nodiscard]] constexpr std::int32_t OneFurther(std::int32_t i_distance) {
    return i_distance == std::numeric_limits<std::int32_t>::max() ? i_distance : i_distance + 1;
}

// i_speed: bytes a second; i_minSpeed: kilobytes a second, as the server asks for.
[[nodiscard]] constexpr bool IsFastEnoughForParent(long long i_speed, std::int32_t i_minSpeed) {
    return i_speed >= static_cast<long long>(i_minSpeed) * 1024;
}

// How many children the server wants a client of that speed to take: i_ratio is in tenths of a kilobyte a second and
// child. Any ratio that asks for nothing, or less, gives no children.
[[nodiscard]] constexpr long long ChildCapacity(long long i_speed, std::int32_t i_ratio) {
    if (i_ratio <= 0)
        return 0;
    // i_speed * 10 / 1024, in an order that does not overflow.
    return (i_speed / 1024 * 10 + i_speed % 1024 * 10 / 1024) / i_ratio;
}
