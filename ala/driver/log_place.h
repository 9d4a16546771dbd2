// Continues a log after the records that an earlier run has read.
#pragma once

#include <cstdint>

#include "ala/ala.h"

namespace qvledger {

// A place after a record of a log: offsets in the log's file.
struct LogPlace {
    std::int64_t firstEnd = 0;  // end of the first record
    std::int64_t lastBegin = 0; // beginning of the last record before the place
    std::int64_t end = 0;       // end of that record
};

// Returns the offset of the next record; after the header if no record was read yet.
std::int64_t nextRecordOffset(ALA_acctLogHandle_t log);

// Makes ALA_GetNextJobRecord return the record at the offset.
void continueAt(ALA_acctLogHandle_t log, std::int64_t offset);

// Computes a checksum of the header, the first record and the last record before the place.  Two logs with
// the same checksum at one place are the same log.  False if the file is shorter, or cannot be read.
bool checksumAt(ALA_acctLogHandle_t log, const LogPlace &place, std::uint64_t *checksum);

} // namespace qvledger
