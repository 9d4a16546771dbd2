// Reading job records: what is put right after one that could not be read.
#pragma once

#include <cstdint>

#include "ala/base/record.h"

// After a failed read: sets the file's position, releases what has been read of the record, if anything, and
// clears the variable.
void ALA__GetJobRecordCleanup(record **inoutpp_record, const std::int32_t *inoutp_fd, std::int64_t in_offset,
                              std::int32_t in_pos);
