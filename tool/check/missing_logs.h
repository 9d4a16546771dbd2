// Lines of the log table for jobs that no report can have: files whose name is not a log's, and days without
// a log.
#pragma once

#include <string>

#include "tool/options.h"
#include "tool/server_session.h"

namespace qvledger {

// True if the name, which the listing returned, is a log's.  Otherwise writes its line: reports open a log by
// its date, so they cannot open this file.
bool isLogsName(const char *server, const char *name);

// Writes the lines of the files in the directory that look like logs of the server and are not listed.  A
// name that has a date outside the range is skipped.  Returns their number.  error: 0, or the errno of a
// failed read.
std::size_t writeNamesLikeLogs(const Options &options, const std::string &logPath, int &error);

// Writes the lines of the days in the range that are between two listed logs and have no log.  Returns the
// number of lines.
std::size_t writeMissingDays(const char *server, const ServerSession &session, const DateRange &range);

} // namespace qvledger
