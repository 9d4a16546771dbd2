// Reads and writes UTF-8 one character at a time.  A byte that is not part of valid UTF-8 is read as the code
// point kStrayByte plus the byte.  No valid character has such a code point, so reading a text and appending
// its characters reproduces the text exactly.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qvledger {

constexpr char32_t kStrayByte = 0xDC00;

// Length in bytes of the first character of a text; 0 if the text does not begin with valid UTF-8 (RFC 3629,
// section 4).  REQUIRES: the text is not empty.
std::size_t utf8Length(std::string_view text);

bool isUtf8(std::string_view text);

// Is the code point half of a pair in UTF-16, and so not a character?
constexpr bool isSurrogate(char32_t number) {
    return number >= 0xD800 && number <= 0xDFFF;
}

// Removes and returns the first character of a text.  REQUIRES: the text is not empty.
char32_t takeUtf8(std::string_view &text);

// Appends a character, or a stray byte from takeUtf8.  Returns false and appends nothing for any other code
// point.
bool appendUtf8(std::string &text, char32_t character);

// Converts UTF-16 to UTF-8.  bigEndian: the high byte of a unit comes first.  An unpaired surrogate becomes
// "?", and an odd last byte is skipped.
std::string utf8FromUtf16(std::string_view bytes, bool bigEndian);

} // namespace qvledger
