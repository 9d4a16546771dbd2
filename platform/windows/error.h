// Converts the system's errors to the C library's.
#pragma once

#include <cerrno>
#include <system_error>

#include "platform/os.h"

namespace qvledger {

// Sets errno to the counterpart of an error code from GetLastError; EIO if there is no counterpart.
inline void setErrno(DWORD error) {
    const auto condition = std::system_category().default_error_condition(static_cast<int>(error));
    errno = condition.category() == std::generic_category() ? condition.value() : EIO;
}

} // namespace qvledger
