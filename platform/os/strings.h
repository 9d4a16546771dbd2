// Texts: copying, case-insensitive comparison, multibyte and wide characters.
//
// Multibyte text is UTF-8 throughout the system; a byte that is not valid UTF-8 counts as one character.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

constexpr UINT CP_OEMCP = 1;
constexpr UINT CP_UTF8 = 65001;

extern "C" {

char *_strdup(const char *inp_text);
int _stricmp(const char *inp_one, const char *inp_two);
int _memicmp(const void *inp_one, const void *inp_two, std::size_t in_length);

const unsigned char *_mbschr(const unsigned char *inp_text, unsigned in_character);
int _mbsicmp(const unsigned char *inp_one, const unsigned char *inp_two);

// Returns the code page of all texts of char, on Linux always CP_UTF8.
UINT GetACP();

// Converts wide text to UTF-8 and returns its size in bytes; 0 on failure, with error 122 if the UTF-8 text
// does not fit.  With in_size 0, writes nothing and returns the needed size.  With in_wideLength -1, the text
// ends after its NUL.  in_default replaces an invalid character; null means "?".  Only CP_OEMCP and flags 0
// are supported.
int WideCharToMultiByte(UINT in_codePage, DWORD in_flags, const wchar_t *inp_wide, int in_wideLength,
                        char *outp_text, int in_size, const char *in_default, BOOL *outp_usedDefault);

} // extern "C"

#endif
