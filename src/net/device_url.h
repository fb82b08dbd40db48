// What answers to a search for routers may name: an answer is a datagram from anyone on the network, and asking
// whatever address it names would let strangers aim this program at third machines.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// IPv4 addresses as numbers: the first of the four is the most significant byte.

// The host of an http address with a path, when it is an IPv4 address in figures; nothing for names and anything else.
std::optional<std::uint32_t> HostAddress(std::string_view i_url);

// Of a home network, or self-assigned. The own machine (127...) is neither.
bool IsPrivateOrLinkLocal(std::uint32_t i_address);

// The description address of an answer, the first if it has more; empty if it has none.
std::string_view LocationOf(std::string_view i_answer);
