// The report of one server: its logs in the date range, one after another.
#pragma once

#include "tool/log_output.h"
#include "tool/options.h"
#include "tool/report/line_writer.h"
#include "tool/server_session.h"

namespace qvledger {

// The result of reporting one server.
struct ServerResult {
    int status = 0;          // the exit status for this server
    bool failed = false;     // something is missing from the report, or the run was asked to end
    bool foundLog = false;   // a log is in the date range
    bool deletedAny = false; // logs were deleted, so the report has the only copy of their lines
};

// Reports the server's logs, and deletes them with -d.
// REQUIRES: the environment is that of the server, and the dates are valid.
ServerResult reportServer(const Options &options, LineWriter &report, LogOutput &writer);

} // namespace qvledger
