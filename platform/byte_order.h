// The order of a word's bytes: logs, credentials and packed values hold words in network byte order, the high
// byte first.
#pragma once

#include <bit>
#include <cstdint>

namespace qvledger {

// A word in network byte order as one of the machine's.
constexpr std::uint32_t fromNetworkOrder(std::uint32_t word) {
    return std::endian::native == std::endian::big ? word : __builtin_bswap32(word);
}

// A word of the machine's in network byte order.
constexpr std::uint32_t toNetworkOrder(std::uint32_t word) {
    return fromNetworkOrder(word); // to swap twice is not to swap
}

} // namespace qvledger
