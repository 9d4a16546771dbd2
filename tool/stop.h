// When a walk through records ends before their end.
#pragma once

#include "platform/os.h"

namespace qvledger {

// The report could not be written, or the program was asked to end.  To be asked behind each record.
inline bool mustStop(bool outputFailed) {
    return OS_NotedSignal() != 0 || outputFailed;
}

} // namespace qvledger
