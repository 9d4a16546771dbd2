// An open log.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/log/log_file.h"
#include "platform/os.h"

struct logParams {
    // The open file.  After makeLog, its position is the first record; later, the end of the bytes read
    // ahead.  If ALA_GetFirstJobRecord cannot read a record, the position is byte 0; if ALA_GetNextJobRecord
    // cannot, it is the start of the record.
    std::int32_t fd;
    char *logName;          // path of the file that was opened; owned
    std::int32_t date;      // year * 10000 + month * 100 + day
    std::int32_t pid;       // process that opened the log
    std::uint32_t verNum;   // format version from the header
    std::int32_t todaysLog; // always 0; no operation uses it
    // Offset of the file's end if the last attempt to read a record found no more bytes, else -1.
    std::int64_t end;
    std::int32_t readError;  // errno if that attempt failed to read the file, else 0
    bool holdsNoRecord;      // that attempt was ALA_GetFirstJobRecord, and found no bytes
    bool isKnown;            // `file` is set; only in a log that was opened to be deleted
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
