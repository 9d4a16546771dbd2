// What a report would make of a record.
#pragma once

#include "ala/driver/check.h"
#include "ala/log/open_log.h"

namespace qvledger {

// Reads a record where the log stands, renders all of it, and counts its documents and the values that are
// skipped.  ALA_A_FAIL_READ_LOG_FILE, or another code of ALA_GetNextJobRecord: it could not be read again.
ALA_retCode_t summarise(ALA_handle_t handle, logParams &log, LogSummary &summary);

inline void noteSkipped(LogSummary &summary, SkipReason reason, std::uint64_t count) {
    summary.skipped[static_cast<std::size_t>(reason)] += count;
}

} // namespace qvledger
