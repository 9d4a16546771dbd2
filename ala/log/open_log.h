// An open log.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/log/log_file.h"
#include "platform/os.h"

struct logParams {
    std::int32_t fd;   // on the first record after opening; then wherever reading ahead has come, and after a
                       // failed call on that call's record, or on byte 0 (ALA_GetFirstJobRecord)
    char *logName;     // path of the file that was opened; owned
    std::int32_t date; // date number: year * 10000 + month * 100 + day
    std::int32_t pid;  // of the process that opened it
    std::uint32_t verNum;   // format version from the header
    std::int32_t todaysLog; // 0; no operation depends on it
    std::int64_t end;       // position at which the last call found the file's end; -1: it did not
    std::int32_t readError; // errno of the last call's failed read; 0: none
    bool holdsNoRecord;     // the first call did, behind the header
    bool isKnown;           // of a log that is to be deleted: how its file stood before it was read
    OS_fileIdentity file;
    qvledger::LogFile bytes; // its next item is the record to be read next
};
using ALA_logParams_t = logParams;

namespace qvledger {

// The format version from which on the header holds createDate, and the one from which on records hold the
// counts of job and document attributes.
constexpr std::uint32_t kVersionWithDate = 2;
constexpr std::uint32_t kVersionWithCounts = 3;

} // namespace qvledger
