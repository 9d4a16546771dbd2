// One run for one server, from its options to its exit status.
#pragma once

#include <cstdio>

#include "ala/ala.h"
#include "tool/options.h"

// The tool's version, for -V.
constexpr char compiledVersionString[] = "1.2-06";

// Exit statuses besides 0 and the return codes of the facility.
constexpr int kStatusUsage = 1;     // option error, or no server name
constexpr int kStatusNoMemory = 3;  // for the default log path
constexpr int kStatusNoLogs = 29;   // none in the date range
constexpr int kStatusBadStart = 30; // environment, dates or report file
constexpr int kStatusNoRoot = 100;  // QV_ROOT is not set

// What a run makes of each log.
class LogWriter {
public:
    virtual ~LogWriter() = default;
    // Writes all records of the open log of a date (YYYYMMDD), until mustStop() (tool/stop.h) says so.  True
    // when the walk ended at the log's end and nothing in it had to be passed over; failures were told to the
    // user.
    virtual bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, std::int32_t date,
                       std::FILE *stream) = 0;
    // No further log follows.
    virtual void end() {}
};

// The run of qvledger.
int run(const Options &in_options);

// The same with another writer in the place of the report's.  statusIfLost: the status when the report
// could not be written; kStatusAsUsual leaves it to what else happened.
constexpr int kStatusAsUsual = -1;
int runWith(const Options &options, LogWriter &writer, int statusIfLost = kStatusAsUsual);
