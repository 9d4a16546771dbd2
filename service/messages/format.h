// printf's rules with positional arguments ("%2$s"), which not every C library knows.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace qvledger {

// Writes the text of a format and its values, as much as fits, with a NUL behind it; with a size of 0 it only
// measures.  Gives the length of the whole text without the NUL; -1 for a format that mixes both kinds of
// arguments, leaves one out in front of another that it uses, uses one as two different types, or holds a
// positional conversion that is none of "d i u x X o c s p f e g" with "l", "ll" or "z".
std::int32_t formatText(char *text, std::size_t size, const char *format, std::va_list values);

} // namespace qvledger
