// Byte order of words.  Logs, credentials and packed values store words in network byte order, the high byte
// first.
#pragma once

#include <bit>
#include <cstdint>

namespace qvledger {

// Converts a word from network byte order to the machine's.
constexpr std::uint32_t fromNetworkOrder(std::uint32_t word) {
    return std::endian::native == std::endian::big ? word : __builtin_bswap32(word);
}

// Converts a word from the machine's byte order to network byte order.
constexpr std::uint32_t toNetworkOrder(std::uint32_t word) {
    return fromNetworkOrder(word); // swapping is its own inverse
}

} // namespace qvledger
