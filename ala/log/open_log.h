// An open log.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/log/log_file.h"
#include "platform/os.h"

struct logParams {
    std::int32_t fd; // at the first record after opening, then as far as was read ahead; after a failed call
                     // at that call's record, or at byte 0 (ALA_GetFirstJobRecord)
    char *logName;   // path of the file that was opened; owned
    std::int32_t date;      // year * 10000 + month * 100 + day
    std::int32_t pid;       // of the process that opened it
    std::uint32_t verNum;   // format version from the header
    std::int32_t todaysLog; // 0; no operation depends on it
    std::int64_t end; // offset where the last call found the file's end instead of a record; -1: it did not
    std::int32_t readError; // errno of the last call; 0: no read failed
    bool holdsNoRecord;     // the first call found the file's end after the header
    bool isKnown;           // `file` is valid: the state before reading, of a log opened for deletion
    OS_fileIdentity file;
    qvledger::LogFile bytes; // the next item is the next record
};
using ALA_logParams_t = logParams;

namespace qvledger {

// The first format versions in which the header has createDate, and records have the counts of job and
// document attributes.
constexpr std::uint32_t kVersionWithDate = 2;
constexpr std::uint32_t kVersionWithCounts = 3;

} // namespace qvledger
