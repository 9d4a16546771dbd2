// Prevents exceptions from leaving the calls with C linkage.
#pragma once

#include <new>

#include "platform/os.h"

namespace qvledger {

// Sets the error for GetLastError and returns 0, a call's result on failure.
inline BOOL failWith(LONG error) {
    SetLastError(static_cast<DWORD>(error));
    return 0;
}

// Runs the body of a call that returns 0 on failure.  When memory runs out, sets the error and returns 0.
// Any other exception ends the program.
template <class Body>
auto guarded(Body body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::bad_alloc &) {
        return failWith(ERROR_NOT_ENOUGH_MEMORY);
    }
}

} // namespace qvledger
