// The report of one server: its logs in the date range, one after another.
#pragma once

#include "tool/log_output.h"
#include "tool/options.h"
#include "tool/report/line_writer.h"
#include "tool/server_session.h"

namespace qvledger {

// The result of reporting one server.
struct ServerResult {
    int status = 0; // the exit status for this server
    // A step before the first log failed, a log could not be opened, closed or deleted, or a signal ended the
    // run.
    bool failed = false;
    bool foundLog = false;   // a log in the date range was opened
    bool deletedAny = false; // logs were deleted, so the report has the only copy of their lines
};

// Reports the server's logs in the date range.  With -d, deletes the logs that were reported completely.
// REQUIRES: the environment is that of the server, and the dates are valid.
ServerResult reportServer(const Options &options, LineWriter &report, LogOutput &writer);

} // namespace qvledger
