// MSG_: the message catalogue of the tool and formatted output.
//
// The catalogue is the X/Open one of the C library, chosen by LANG and NLSPATH, else the installation's for
// the locale.  Its texts are in UTF-8, and are given in the character set of the locale.  A message's set in
// it is the high half of its code (59 to 61), its number the low half.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" {

// Opens and closes the catalogue.  A missing one is no failure: every look-up then gives non-zero.
void MSG_UsageBegin(const char *inp_catalogue);
void MSG_UsageEnd();

// Puts the text of a code into the buffer and its length without the NUL into outp_count, and gives 0.
// Non-zero: there is no such text, or it does not fit in_size bytes with its NUL; the buffer is as it was.
std::int32_t MSG_GetUnformatted(std::int32_t in_reserved, std::uint32_t in_code, std::int32_t in_flags,
                                std::uint32_t in_size, std::uint32_t *outp_count, char *outp_buffer);

// printf's rules; positional arguments as service/messages/format.h has them.  They give the length of the
// whole text without its NUL, or a negative number for an invalid format, and MSG_fprintf also when
// memory runs out or the stream refuses. REQUIRES: the buffer of MSG_vsprintf and MSG_sprintf holds the text.
std::int32_t MSG_vsprintf(char *outp_buffer, const char *in_format, std::va_list in_values);
std::int32_t MSG_sprintf(char *outp_buffer, const char *in_format, ...) __attribute__((format(printf, 2, 3)));
std::int32_t MSG_fprintf(std::FILE *inp_stream, const char *in_format, ...)
    __attribute__((format(printf, 2, 3)));

} // extern "C"
