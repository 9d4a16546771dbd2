// Keeps exceptions inside the calls with C linkage.
#pragma once

#include <new>

#include "platform/os.h"

namespace qvledger {

// Fails a call that answers zero on failure, with the reason for GetLastError.
inline BOOL failWith(LONG error) {
    SetLastError(static_cast<DWORD>(error));
    return 0;
}

// Runs a call that answers zero on failure; running out of memory is such a failure.
template <class Body>
auto guarded(Body body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::bad_alloc &) {
        return failWith(ERROR_NOT_ENOUGH_MEMORY);
    }
}

} // namespace qvledger
