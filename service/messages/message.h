// MSG_: the tool's message catalogue, and formatted output.
//
// The messages come from the X/Open catalogue that the locale and NLSPATH select, otherwise from the
// installation's catalogue for the locale.  On Windows there is no catalogue.  Texts are stored in UTF-8 and
// returned in the locale's character set; a text that cannot be converted is returned unchanged.  The high
// half of a message's code is the number of its set (59 to 61); the low half is the message's number in the
// set.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" {

// Open and close the catalogue.  A missing catalogue is not an error: every look-up then returns non-zero.
void MSG_UsageBegin(const char *inp_catalogue);
void MSG_UsageEnd();

// Writes the text of a code to the buffer, and the length without the NUL to outp_count unless outp_count is
// null.  Returns 0; non-zero, with the outputs unchanged, if there is no such text or the text with its NUL
// does not fit in_size bytes.
std::int32_t MSG_GetUnformatted(std::int32_t in_reserved, std::uint32_t in_code, std::int32_t in_flags,
                                std::uint32_t in_size, std::uint32_t *outp_count, char *outp_buffer);

// Like printf, with the positional arguments of service/messages/format.h.  Return the length of the text
// without its NUL, or a negative number on failure.  MSG_fprintf also fails when memory runs out or the
// write fails.  REQUIRES: the buffer of MSG_vsprintf and MSG_sprintf is large enough.
std::int32_t MSG_vsprintf(char *outp_buffer, const char *in_format, std::va_list in_values);
std::int32_t MSG_sprintf(char *outp_buffer, const char *in_format, ...) __attribute__((format(printf, 2, 3)));
std::int32_t MSG_fprintf(std::FILE *inp_stream, const char *in_format, ...)
    __attribute__((format(printf, 2, 3)));

} // extern "C"
