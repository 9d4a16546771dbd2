// Summarises a record as a report would show it.
#pragma once

#include "ala/driver/check.h"
#include "ala/log/open_log.h"

namespace qvledger {

// Reads the record at the log's position, renders the values that a report shows, and counts its documents
// and the skipped values.  Returns ALA_N_NORMAL, or a code of ALA_GetNextJobRecord if the record cannot be
// read again.
ALA_retCode_t summarise(ALA_handle_t handle, logParams &log, LogSummary &summary);

inline void noteSkipped(LogSummary &summary, SkipReason reason, std::uint64_t count) {
    summary.skipped[static_cast<std::size_t>(reason)] += count;
}

} // namespace qvledger
