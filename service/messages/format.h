// printf with positional arguments ("%2$s"), which not every C library supports.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace qvledger {

// Writes the formatted text, truncated to size bytes with its NUL; a size of 0 only measures.  Returns the
// length of the whole text without the NUL.  Returns -1 for a format that mixes positional and plain
// conversions, skips an argument before one that it uses, uses an argument as two types, or has a positional
// conversion other than "d i u x X o c s p f e g", with "l", "ll" or "z" for integers; also for a text beyond
// INT32_MAX.
std::int32_t formatText(char *text, std::size_t size, const char *format, std::va_list values);

} // namespace qvledger
