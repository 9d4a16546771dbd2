// The logs of a server, a line each in a table with tabs between its fields.
#pragma once

#include <string>

#include "ala/driver/check.h"

namespace qvledger {

enum class LogState { Whole, Cut, Damaged, Empty, NotAdmitted, Unreadable };

void writeLogHeader();
// A log that was read.
void writeLogLine(const char *server, const char *log, LogState state, const LogSummary &summary);
// One that was not, with nothing of what it holds.
void writeClosedLogLine(const char *server, const char *log, LogState state, const char *reason);

LogState stateOf(const LogSummary &summary);

} // namespace qvledger
