// The progress line of a long run.
//
// One line on the standard error stream: date, number of the log, records per second.  The line is shown only
// if the stream is a terminal and the report goes to a file.  So no report and no pager writes to the
// terminal at the same time.  QV_PROGRESS=0 and QV_LOG=stderr turn the line off.
#pragma once

#include <cstdint>

namespace qvledger {

// Starts the progress line for a run over numLogs logs.
void startProgress(bool reportIsFile, std::int32_t numLogs);

// Counts a log, whose date is YYYYMMDD.  Redraws the line, at most four times a second.
void progressToLog(std::int32_t date);
// Counts a record.  Redraws the line, at most four times a second.
void countRecord();

// Redraws the line, at most four times a second.  Call this function during long work without records.
void redrawProgress();

// Erases the line.  Call this function before anything else is written to the standard error stream.
void eraseProgress();
// Ends what startProgress() began: erases the line, and draws no line until the next startProgress().
void endProgress();

} // namespace qvledger
