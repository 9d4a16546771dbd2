// Interface of the writers that turn logs into output: the report of qvledger, the lines of qvledger-json.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "tool/report/line_writer.h"

namespace qvledger {

// Identifies a log.
struct LogName {
    const char *server;
    const char *file;   // name of the opened file, without its directory
    const char *listed; // name in the listing; its date determines which file is opened
    std::int32_t date;  // YYYYMMDD
};

class LogOutput {
public:
    virtual ~LogOutput() = default;
    // Writes all records of an open log, or fewer if mustStop() (tool/stop.h).  True if it reached the end of
    // the log and skipped nothing.  Reports failures to the user.
    virtual bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
                       LineWriter &report) = 0;
    // Called if a log could not be opened, after that was reported.
    virtual void skip(const LogName &, LineWriter &) {}
    // Called if the last log could not be read to its end, after that was reported.
    virtual void readFailed() {}
    // Called if the list of the server's logs may be incomplete, after that was reported.
    virtual void listIsCut(const char *, LineWriter &) {}
    // Called after the last log of a server.
    virtual void end() {}
    // Called after the last server, unless a signal ended the run.
    virtual void endRun(LineWriter &) {}
};

} // namespace qvledger
