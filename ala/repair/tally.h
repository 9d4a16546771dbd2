// What a report would make of a record.
#pragma once

#include "ala/driver/check.h"
#include "ala/repair/attribute.h"

namespace qvledger {

// Reads a record where the log stands, renders all of it, and counts its documents and what was passed over.
// ALA_A_FAIL_READ_LOG_FILE, or another code of ALA_GetNextJobRecord: it could not be read again.
ALA_retCode_t tallyRecord(ALA_handle_t handle, logParams &log, ALA__logSummary &summary);

} // namespace qvledger
