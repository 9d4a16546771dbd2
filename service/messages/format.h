// printf with positional arguments ("%2$s"), which not every C library supports.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace qvledger {

// Writes the formatted text, truncated to size bytes including its NUL; with size 0, writes nothing.  Returns
// the length of the whole text without the NUL.  Returns -1 if that length exceeds INT32_MAX or the format is
// invalid.
//
// The conversions of a valid format are either all plain or all positional.  A positional conversion is one
// of "d i u x X o c s p f e g", with "l", "ll" or "z" only for integers.  Positional conversions use every
// argument up to the highest number, and use each argument as only one type.
std::int32_t formatText(char *text, std::size_t size, const char *format, std::va_list values);

} // namespace qvledger
