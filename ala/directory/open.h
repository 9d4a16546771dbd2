// Opens a log by its date.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/base/owners.h"
#include "ala/log/log_file.h"

namespace qvledger {

// A log while it is being opened.
struct NamedLog {
    Malloced<char> path;          // directory and name
    Malloced<char> convertedPath; // for the system's calls
    Descriptor descriptor;
    LogFile bytes;
    std::int32_t date = 0;
    std::uint32_t verNum = 0;
};

// Checks the handle and opens the file of a date's log; a null date means the oldest log.
// ALA_A_FAIL_TO_OPEN_LOG_FILE: the log does not exist or cannot be opened; ALA_A_FAIL_TO_GET_TIME: the
// current time is not available; ALA_A_UNKNOWN_ERR: the path cannot be converted; ALA_A_OUT_OF_MEMORY; the
// codes for an invalid handle.
ALA_retCode_t openFile(ALA_handle_t handle, const ALA_time *date, NamedLog &file);

// Reads the header.  On ALA_N_NORMAL the access list admits the caller, and the next item is the first
// record.  ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE: it does not; also the codes of lookUpPermission.
ALA_retCode_t checkAccess(NamedLog &file);

// Makes the handle of the open log, which takes over the descriptor, the converted path and the bytes.
// ALA_A_OUT_OF_MEMORY, with nothing taken over.
ALA_retCode_t makeLog(NamedLog &file, ALA_acctLogHandle_t *logHandle);

} // namespace qvledger
