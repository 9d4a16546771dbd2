// The computer's name.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// Gets the computer's name: the host name up to its first dot, at most 15 characters, in capitals.
// inoutp_size: on input, bytes of the buffer; on output, characters without the NUL.  Returns non-zero on
// success, otherwise 0.  Error 111 if the buffer is too small or null; the size is then the needed size and
// counts the NUL.
BOOL GetComputerNameA(char *outp_name, DWORD *inoutp_size);

} // extern "C"

#endif
