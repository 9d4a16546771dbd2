// An open log.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/log/log_file.h"
#include "platform/os.h"

struct logParams {
    // Position of fd: the first record after opening, later the end of the bytes read ahead.  After a failed
    // call, the record of that call, or byte 0 for ALA_GetFirstJobRecord.
    std::int32_t fd;
    char *logName;          // path of the file that was opened; owned
    std::int32_t date;      // year * 10000 + month * 100 + day
    std::int32_t pid;       // process that opened the log
    std::uint32_t verNum;   // format version from the header
    std::int32_t todaysLog; // always 0; no operation uses it
    std::int64_t end; // offset of the file's end if the last call found the end instead of a record, else -1
    std::int32_t readError;  // errno of a failed read in the last call, else 0
    bool holdsNoRecord;      // the last call was ALA_GetFirstJobRecord, and found no record
    bool isKnown;            // `file` is set, because the log was opened to be deleted
    OS_fileIdentity file;    // state of the file before the first read
    qvledger::LogFile bytes; // current item: the next record
};
using ALA_logParams_t = logParams;

namespace qvledger {

// The first format versions in which the header has createDate, and records have the counts of job and
// document attributes.
constexpr std::uint32_t kVersionWithDate = 2;
constexpr std::uint32_t kVersionWithCounts = 3;

} // namespace qvledger
