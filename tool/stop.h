// When a walk through records ends before their end.
#pragma once

#include <cstdio>

#include "platform/os.h"

namespace qvledger {

// The report could not be written, or the program was asked to end.  To be asked behind each record.
inline bool mustStop(std::FILE *report) {
    return OS_NotedSignal() != 0 || std::ferror(report) != 0;
}

} // namespace qvledger
