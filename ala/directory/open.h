// Opening a log by its date.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/base/owners.h"
#include "ala/log/log_file.h"

namespace qvledger {

// A log while it is being opened.
struct NamedLog {
    Malloced<char> path;          // as made from directory and name
    Malloced<char> convertedPath; // as the system takes it
    Descriptor descriptor;
    LogFile bytes;
    std::int32_t date = 0;
    std::uint32_t verNum = 0;
};

// Checks the handle, and opens the file of the log of a date; null: the oldest log.
ALA_retCode_t openFile(ALA_handle_t handle, const ALA_time *date, NamedLog &file);

// Reads the header.  ALA_N_NORMAL if its access list admits the caller; the first record is read next then.
ALA_retCode_t checkAccess(NamedLog &file);

// Makes the open log.
ALA_retCode_t makeLog(NamedLog &file, ALA_acctLogHandle_t *logHandle);

} // namespace qvledger
