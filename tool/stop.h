// When to stop reading records early.
#pragma once

#include "platform/os.h"

namespace qvledger {

// True if the report could not be written or a signal asked the program to end.  Check it after each record.
inline bool mustStop(bool outputFailed) {
    return OS_NotedSignal() != 0 || outputFailed;
}

} // namespace qvledger
