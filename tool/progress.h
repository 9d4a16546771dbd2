// The progress of a long run, on a terminal that nothing else is being written to: not by a program behind a
// pipe, such as a pager, either.
//
// One line on the standard error stream: date, share of the logs, records per second.  It shows when, and
// only when, the standard error stream is a terminal and the report goes to a file on a disk; QV_PROGRESS=0
// turns it off.
#pragma once

#include <cstdint>

namespace qvledger {

// The run begins with that many logs before it.
void startProgress(bool reportIsFile, std::int32_t numLogs);

// A log of the date is read from now on; one more record was written.  The line is drawn again at most four
// times a second.
void progressToLog(std::int32_t date);
void countRecord();

// Draws the line again if it is time, where work goes on without a record.
void redrawProgress();

// Before anything else is written to the standard error stream, and at the end of the run.
void eraseProgress();
void endProgress();

} // namespace qvledger
