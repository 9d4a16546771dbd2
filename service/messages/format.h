// printf with positional arguments ("%2$s"), which not every C library supports.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace qvledger {

// Writes the formatted text, truncated to size bytes including its NUL; with size 0, writes nothing.  Returns
// the length of the whole text without the NUL; a negative number if that length exceeds INT32_MAX, a
// positional conversion is invalid, or the C library fails.
//
// A positional conversion is one of "d i u x X o c s p f e g", with "l", "ll" or "z" only for integers, and
// an argument number from 1 to 9.  Positional conversions must use every argument up to the highest number,
// and each argument as only one type.  REQUIRES: the format's conversions are either all plain or all
// positional.
std::int32_t formatText(char *text, std::size_t size, const char *format, std::va_list values);

} // namespace qvledger
