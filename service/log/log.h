// LOG_: the program's log.
//
// Each entry is a line: time in UTC (except in the system's log), program and process id, level, source file
// and line, text.  QV_LOG names the sink: a file to append to, "stderr" or "none".  If QV_LOG is empty or
// not set, or the file cannot be opened, the sink is the system's log: syslog, on Windows the event log.
// QV_LOG_LEVEL=6 adds details, QV_LOG_TRACE=1 adds the begin and end of operations.
//
// The log counts most repetitions instead of writing them.  A repetition is an entry of level 5 that equals
// the previous entry of the same source line.  The log writes "repeated N times: TEXT" when the source line
// logs another text, or at the latest at the program's end.
//
// On Linux, logging does not wait for syslog or for the reader of a pipe or socket: only writes to disks and
// terminals may wait.  On Windows, writes to pipes may wait, too.  An entry that the sink does not accept at
// once is dropped, and "N entries lost" precedes the next entry that the sink accepts.
#pragma once

#include <atomic>
#include <cstdint>

struct OS_fileIdentity;

// An expected result, such as the end of a log.  The entry shows level 5 and is counted like a failure, but
// the system's log gets it as information.
constexpr std::int32_t LOG_EXPECTED = 4;
constexpr std::int32_t LOG_ERROR = 5;  // a failure
constexpr std::int32_t LOG_DETAIL = 6; // what the program read and decided
constexpr std::int32_t LOG_TRACE = 7;  // begin and end of operations

extern "C" {

// Entries above this level are not written.  Until the log starts, this value is above all levels.
extern std::atomic<std::int32_t> LOG_g_level;

// Starts the log: reads the environment and opens the sink.  Does nothing if the log has started already.
// The arguments are not used.
void LOG_Init(const char *in_sink, const char *in_level);

// Writes the counts of repeated and lost entries.  exit() writes these counts, too.
void LOG_Flush();

// Writes an entry.  Called through LOG_CondMessage.  REQUIRES, here and below: the file name stays valid
// until the program ends.
void LOG__Message(std::int32_t level, const char *file, std::int32_t line, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

// Logs that an operation begins (`entry` is 1) or ends (0).  Called through LOG_CondFuncTrace.
void LOG__FuncTrace(const char *function, const char *file, std::int32_t line, std::int32_t entry);

// Build an entry in pieces; a thread builds one entry at a time.  LOG_StartMessage ends the thread's open
// entry, begins a new entry and returns non-zero if the new entry is wanted.  LOG_CondAdd then appends a
// piece, and LOG_EndMessage writes the entry.  If the entry is not wanted, LOG_CondAdd and LOG_EndMessage do
// nothing.
std::int32_t LOG_StartMessage(std::int32_t in_level, const char *in_file, std::int32_t in_line,
                              std::int32_t in_reserved);
void LOG_CondAdd(const char *in_format, ...) __attribute__((format(printf, 1, 2)));
void LOG_EndMessage();

// Passes every later entry that is wanted to a function instead of the sink: repetitions too, and with
// control characters escaped.  A null function restores the sink.  REQUIRES: no other thread logs meanwhile.
using LOG_function = void (*)(void *inp_context, std::int32_t in_level, const char *inp_file,
                              std::int32_t in_line, const char *inp_text);
void LOG_SetFunction(LOG_function function, void *context);

} // extern "C"

namespace qvledger {

// Number of bytes that the log has written to a file; 0 if the log does not write to this file.
std::int64_t logBytesIn(const OS_fileIdentity &file);

} // namespace qvledger

// If this returns false, the log writes no entries of this level.  The macros below call this function first,
// so most unwanted entries cost only a comparison.
inline bool LOG_Wants(std::int32_t level) {
    return level <= LOG_g_level.load(std::memory_order_relaxed);
}

#define LOG_CondMessage(level, file, line, ...)                                                              \
    (LOG_Wants(level) ? LOG__Message(level, file, line, __VA_ARGS__) : static_cast<void>(0))

#define LOG_CondFuncTrace(function, file, line, entry, reserved)                                             \
    (LOG_Wants(LOG_TRACE) ? LOG__FuncTrace(function, file, line, entry) : static_cast<void>(reserved))
