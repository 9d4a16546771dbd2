// Numbers that are summed: whole ones, and decimal fractions as multiples of their last place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvledger {

// Wide enough for the sum of as many 64-bit values as any log can contain.
__extension__ typedef __int128 Amount;

// Reads a decimal number with at most that many places after the point; with 3 places, "-1.5" is -1500.
// False for any other text, and for a number whose multiple does not fit into 64 bits.
bool parseAmount(std::string_view text, int places, std::int64_t *amount);

// The number with exactly that many places.
std::string amountText(Amount amount, int places);

} // namespace qvledger
