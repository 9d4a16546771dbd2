// The progress line of a long run.
//
// One line on the standard error stream: date, number of the log, records per second.  It is shown only if
// that stream is a terminal and the report goes to a file, so that no report and no pager writes to the
// terminal at the same time.  QV_PROGRESS=0 and QV_LOG=stderr turn it off.
#pragma once

#include <cstdint>

namespace qvledger {

// Starts a run over numLogs logs.
void startProgress(bool reportIsFile, std::int32_t numLogs);

// The next log, with its date YYYYMMDD; and one more record.  Both redraw the line at most four times a
// second.
void progressToLog(std::int32_t date);
void countRecord();

// Redraws the line if it is due, for work that takes long without a record.
void redrawProgress();

// Erases the line; call it before anything else is written to the standard error stream.
void eraseProgress();
// Erases the line at the end of the run.
void endProgress();

} // namespace qvledger
