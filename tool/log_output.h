// What a run makes of each log: a report, or another form of the same records.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "tool/report/line_writer.h"

namespace qvledger {

// Which log it is.
struct LogName {
    const char *server;
    const char *file;   // that was opened, without its directory
    const char *listed; // the name in the listing, which leads to the date and so to the file
    std::int32_t date;  // YYYYMMDD
};

class LogOutput {
public:
    virtual ~LogOutput() = default;
    // Writes all records of an open log, until mustStop() (tool/stop.h) says so.  True when the walk ended at
    // the log's end and nothing in it had to be passed over; failures were told to the user.
    virtual bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
                       LineWriter &report) = 0;
    // A log could not be opened; the user was told.
    virtual void passOver(const LogName &, LineWriter &) {}
    // The log that was written last could not be read to its end, which was reported.
    virtual void readFailed() {}
    // Logs of the server may be missing, which was reported.
    virtual void listIsCut(const char *, LineWriter &) {}
    // No further log follows.
    virtual void end() {}
};

} // namespace qvledger
