// A server's turn in a run: its logs in the date range, one after another.
#pragma once

#include "tool/log_output.h"
#include "tool/options.h"
#include "tool/report/line_writer.h"
#include "tool/server_session.h"

namespace qvledger {

// How a turn ended.
struct ServerResult {
    int status = 0;
    bool failed = false;     // something is missing from the report, or the run was asked to end
    bool foundLog = false;   // in the date range
    bool deletedAny = false; // the lines of deleted logs exist nowhere else
};

// Reports the server's logs, and deletes them under -d.  The environment is the server's, and the dates are
// valid.
ServerResult reportServer(const Options &options, LineWriter &report, LogOutput &writer);

} // namespace qvledger
