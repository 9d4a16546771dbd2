// The computer's name.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// The host name up to its first dot, at most 15 characters, in capitals.  inoutp_size: bytes of the buffer on
// input, characters without the NUL on output.  Non-zero is success.  Fails with 111 and the needed size, NUL
// included, when the buffer is too small.
BOOL GetComputerNameA(char *outp_name, DWORD *inoutp_size);

} // extern "C"

#endif
