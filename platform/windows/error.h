// Converts the system's errors to the C library's.
#pragma once

#include "platform/os.h"

namespace qvledger {

// Sets errno to the counterpart of an error code from GetLastError; EIO if there is no counterpart.
void setErrno(DWORD error);

} // namespace qvledger
