// The numbers that are summed: integers, and decimal fractions as multiples of their last decimal place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvledger {

// Wide enough for the sum of as many 64-bit values as any log can contain.
__extension__ typedef __int128 Amount;

// Parses a decimal number with at most `places` digits after the point, and multiplies it by 10 to the power
// of `places`: with 3 places, "-1.5" is -1500.  False if the text is not such a number, or if the product
// does not fit into 64 bits; *amount is then undefined.
bool parseAmount(std::string_view text, int places, std::int64_t *amount);

// The number as a text with exactly `places` digits after the point: with 3 places, -1500 is "-1.500".
std::string amountText(Amount amount, int places);

} // namespace qvledger
