// The part of the X/Open conversion of texts that the system is written against: to UTF-8, by code pages.
#pragma once

#include <cstddef>

struct Iconv; // a converter
using iconv_t = Iconv *;

extern "C" {

// By the names in service/text/convert.cpp.  All ones, with errno EINVAL for a code set that the system has
// not, or another target than UTF-8; else ENOMEM.
iconv_t iconv_open(const char *inp_to, const char *inp_from);
int iconv_close(iconv_t in_converter);

// Converts as much as it can and moves the four values on.  All ones, with errno E2BIG when the output is
// full, EILSEQ at what is no character, EINVAL at one that the input's end cuts.  It holds nothing between
// calls, so a null input is no work.
std::size_t iconv(iconv_t in_converter, char **inoutp_in, std::size_t *inoutp_left, char **inoutp_out,
                  std::size_t *inoutp_room);

} // extern "C"
