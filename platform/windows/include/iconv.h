// The part of X/Open iconv that the program uses: conversion to UTF-8 from the system's code pages.
#pragma once

#include <cstddef>

struct Iconv; // a converter
using iconv_t = Iconv *;

extern "C" {

// Opens a converter.  Code sets have the names in service/text/convert.cpp; the target is always UTF-8.
// Returns all ones, with errno EINVAL, if the system lacks the code set.
iconv_t iconv_open(const char *inp_to, const char *inp_from);
int iconv_close(iconv_t in_converter);

// Converts the input up to the first character that cannot be converted, and advances the four values.
// Returns 0 if all input was converted, otherwise all ones.  Keeps no state between calls, so a null input
// does nothing.
std::size_t iconv(iconv_t in_converter, char **inoutp_in, std::size_t *inoutp_left, char **inoutp_out,
                  std::size_t *inoutp_room);

} // extern "C"
