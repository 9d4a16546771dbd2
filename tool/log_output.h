// Interface of the writers that turn logs into the report of qvledger, the lines of qvledger-json, or the
// sums of qvledger-sum.
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
    // Writes or sums all records of an open log; stops early if mustStop() (tool/stop.h).  Returns true only
    // if the end of the log was reached.  A writer that is used with -d returns true only if it also skipped
    // nothing, because the log is then deleted.
    virtual bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
                       LineWriter &report) = 0;
    // Called for the logs before the range, and for the first log after it.
    virtual void outsideRange(const LogName &) {}
    // Called after the message about a log that could not be opened.
    virtual void skip(const LogName &, LineWriter &) {}
    // Called after the message about a log that could not be read to its end.
    virtual void readFailed() {}
    // Called with the server's name after the message that the list of its logs may be incomplete.
    virtual void listIsCut(const char *, LineWriter &) {}
    // Called after the last log of a server.
    virtual void end() {}
    // Called after the last server, unless the report was not opened or a signal ended the run.
    virtual void endRun(LineWriter &) {}
    // Called after endRun().  True: a report that this run created is kept even if the run failed.
    virtual bool keepsReport() const { return false; }
};

} // namespace qvledger
