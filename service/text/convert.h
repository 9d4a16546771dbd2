// Conversion of texts from other code sets to UTF-8, independent of the locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// Code sets have their IANA MIBenum numbers.
constexpr std::uint32_t CODE_SET_LATIN1 = 4;
constexpr std::uint32_t CODE_SET_T61 = 76;
constexpr std::uint32_t CODE_SET_UTF8 = 106;
constexpr std::uint32_t CODE_SET_UCS2 = 1000; // big-endian

namespace qvledger {

// Converts the characters before the first NUL to a new NUL-terminated text; release it with free().  Null
// when memory or another resource runs out.  Each unit that cannot be converted becomes a "?".  A unit is one
// byte, or the 2 or 4 bytes of a wide code set.  If the code set is not supported, ASCII characters are
// copied and every other byte becomes a "?".
char *convertToUtf8(std::span<const std::uint8_t> bytes, std::uint32_t codeSet);

// Copies the bytes before the first NUL unchanged to a new NUL-terminated text; release it with free().  Null
// when memory runs out.
char *copyText(std::span<const std::uint8_t> bytes);

} // namespace qvledger
