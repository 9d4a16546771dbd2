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
    Malloced<char> convertedPath; // the path in the form that system calls need
    Descriptor descriptor;
    LogFile bytes;
    std::int32_t date = 0;
    std::uint32_t verNum = 0;
};

// Checks the handle and opens the log of a date; a null date means the oldest log.  Returns ALA_N_NORMAL or:
// ALA_A_NOT_REGISTER: the handle is invalid; ALA_A_FAIL_TO_OPEN_LOG_FILE: the log does not exist or cannot be
// opened, or the oldest log cannot be determined; ALA_A_FAIL_TO_GET_TIME: the current time cannot be
// determined; ALA_A_UNKNOWN_ERR: the path cannot be converted; ALA_A_OUT_OF_MEMORY.
ALA_retCode_t openFile(ALA_handle_t handle, const ALA_time *date, NamedLog &file);

// Reads the header and checks whether its access list admits the user.  ALA_N_NORMAL: the user is admitted,
// and the next item is the first record.  ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE: the user is not admitted.
// Otherwise a code of lookUpPermission.
ALA_retCode_t checkAccess(NamedLog &file);

// Makes the handle of the open log.  The handle takes over the descriptor, the converted path and the bytes.
// If memory runs out, takes over nothing and returns ALA_A_OUT_OF_MEMORY.
ALA_retCode_t makeLog(NamedLog &file, ALA_acctLogHandle_t *logHandle);

} // namespace qvledger
