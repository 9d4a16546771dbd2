// The table of a server's logs, with one line of tab-separated fields per log.
#pragma once

#include <string>

#include "ala/driver/check.h"

namespace qvledger {

enum class LogState { Whole, Cut, Damaged, Empty, NotAdmitted, Unreadable, NotALog, Missing };

void writeLogHeader();
// Writes the line of a log that was read to its end.
void writeLogLine(const char *server, const char *log, LogState state, const LogSummary &summary);
// Writes the line of a log that was not read to its end, or of a name or days without a log.
void writeUnreadLogLine(const char *server, const char *log, LogState state, const char *reason);

LogState stateOf(const LogSummary &summary);

} // namespace qvledger
