// The computer's name.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// The host name up to its first dot, at most 15 characters, in capitals.  inoutp_size: bytes of the buffer
// in, characters without the NUL out.  Non-zero is success.
BOOL GetComputerNameA(char *outp_name, DWORD *inoutp_size);

} // extern "C"

#endif
