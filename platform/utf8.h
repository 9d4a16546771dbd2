// UTF-8, character by character.  A byte that is no UTF-8 is a character of its own, kStrayByte plus the
// byte: such a number is no character elsewhere, so every text comes back as it was.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qvledger {

constexpr char32_t kStrayByte = 0xDC00;

// Bytes of the character at the front of a text that is not empty; 0 if there is none (RFC 3629, section 4).
std::size_t utf8Length(std::string_view text);

bool isUtf8(std::string_view text);

// The first character of a text that is not empty, removed from it.
char32_t takeUtf8(std::string_view &text);

// False, with nothing appended, for a number that is neither a character nor a stray byte.
bool appendUtf8(std::string &text, char32_t character);

// The UTF-8 of UTF-16 units, low byte first or high byte first.  Half of a surrogate pair becomes "?", a last
// byte without its partner is left out.
std::string utf8FromUtf16(std::string_view bytes, bool bigEndian);

} // namespace qvledger
