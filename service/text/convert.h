// Texts of other code sets as UTF-8, the same in every locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// Code sets go by their IANA MIBenum numbers.
constexpr std::uint32_t CODE_SET_LATIN1 = 4;
constexpr std::uint32_t CODE_SET_T61 = 76;
constexpr std::uint32_t CODE_SET_UTF8 = 106;
constexpr std::uint32_t CODE_SET_UCS2 = 1000; // big-endian

namespace qvledger {

// The characters before the first NUL character as a new NUL-terminated text, released with free; null when
// memory or another resource runs out.  Each unit that cannot be converted becomes a "?": a byte, also inside
// a sequence of bytes that makes no character, or the 2 or 4 bytes of a wide code set.  Of a code set that
// the system does not know, ASCII characters are taken and every other byte becomes a "?".
char *convertToUtf8(std::span<const std::uint8_t> bytes, std::uint32_t codeSet);

// The bytes as they are up to the first NUL; otherwise like convertToUtf8.
char *copyText(std::span<const std::uint8_t> bytes);

} // namespace qvledger
