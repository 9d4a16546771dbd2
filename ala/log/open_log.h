// An open log: its descriptor stands on the record to be read next.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "platform/os.h"

struct logParams {
    std::int32_t fd;        // -1 once closed
    char *logName;          // path of the file that was opened; owned
    std::int32_t date;      // date number: year * 10000 + month * 100 + day
    std::int32_t pid;       // of the process that opened it
    std::uint32_t verNum;   // format version from the header
    std::int32_t todaysLog; // 0; no operation depends on it
    std::int64_t end;       // position at which the last call found the file's end; -1: it did not
    std::int32_t readError; // errno of the last call's failed read; 0: none
    bool holdsNoRecord;     // the first call did, behind the header
    bool isKnown;           // of a log that is to be deleted: how its file stood before it was read
    OS_fileIdentity file;
};
using ALA_logParams_t = logParams;

namespace qvledger {

// The format version from which on the header holds createDate, and the one from which on records hold the
// counts of job and document attributes.
constexpr std::uint32_t kVersionWithDate = 2;
constexpr std::uint32_t kVersionWithCounts = 3;

} // namespace qvledger
