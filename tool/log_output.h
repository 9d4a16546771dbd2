// Interface of the writers that turn logs into output: the report of qvledger and the lines of qvledger-json.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "tool/report/line_writer.h"

namespace qvledger {

// Identifies a log.
struct LogName {
    const char *server;
    const char *file;   // file name without directory; same as `listed` if the log could not be opened
    const char *listed; // name in the list of logs; logs are opened by date, so `file` can differ
    std::int32_t date;  // YYYYMMDD
};

class LogOutput {
public:
    virtual ~LogOutput() = default;
    // Writes all records of an open log; stops early if mustStop() (tool/stop.h).  Reports failures to the
    // user.  Returns true if the end of the log was reached and nothing was skipped.
    virtual bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
                       LineWriter &report) = 0;
    // Called after the message about a log that could not be opened.
    virtual void skip(const LogName &, LineWriter &) {}
    // Called after the message about a log that could not be read to its end.
    virtual void readFailed() {}
    // Called after the message about a list of a server's logs that may be incomplete.
    virtual void listIsCut(const char *, LineWriter &) {}
    // Called after the last log of a server.
    virtual void end() {}
    // Called after the last server, unless a signal ended the run.
    virtual void endRun(LineWriter &) {}
};

} // namespace qvledger
