// LOG_: the program's log.
//
// Each entry is a line: time in UTC, program and process id, level, source file and line, text.  QV_LOG names
// the sink: a file to append to, "stderr" or "none".  If QV_LOG is not set or the file cannot be opened, the
// sink is the system's log: syslog, on Windows the event log.  QV_LOG_LEVEL=6 adds details, QV_LOG_TRACE=1
// adds the begin and end of operations.
//
// If an entry of level 5 equals the previous entry of its source file and line, the log only counts it.  It
// writes "repeated N times: TEXT" when that line logs another text, and at the program's end.
//
// Logging never waits for syslog or for the reader of a pipe or socket: an entry that is not taken at once is
// dropped, and "N entries lost" precedes the next entry that is taken.  Only writes to disks and terminals
// wait, and on Windows writes to pipes.
#pragma once

#include <atomic>
#include <cstdint>

struct OS_fileIdentity;

constexpr std::int32_t LOG_ERROR = 5;  // a failure
constexpr std::int32_t LOG_DETAIL = 6; // what the program read and decided
constexpr std::int32_t LOG_TRACE = 7;  // begin and end of operations

extern "C" {

// The highest level that is written.  Until the first entry starts the log, this value is above all levels.
extern std::atomic<std::int32_t> LOG_g_level;

// Starts the log: reads the environment and opens the sink.  Does nothing if the log has started already.
// The arguments are not used.
void LOG_Init(const char *in_sink, const char *in_level);

// Writes the counts of repeated and lost entries.  exit() does so, too.
void LOG_Flush();

// Writes an entry.  Called through LOG_CondMessage.  REQUIRES, here and below: the file name stays valid
// until the program ends.
void LOG__Message(std::int32_t level, const char *file, std::int32_t line, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

// Logs that an operation begins (`entry` is 1) or ends (0).  Called through LOG_CondFuncTrace.
void LOG__FuncTrace(const char *function, const char *file, std::int32_t line, std::int32_t entry);

// Build an entry in pieces; a thread builds one entry at a time.  LOG_StartMessage begins an entry and
// returns non-zero if the entry is wanted.  LOG_CondAdd then appends a piece, and LOG_EndMessage writes the
// entry.  If the entry is not wanted, LOG_CondAdd and LOG_EndMessage do nothing.
std::int32_t LOG_StartMessage(std::int32_t in_level, const char *in_file, std::int32_t in_line,
                              std::int32_t in_reserved);
void LOG_CondAdd(const char *in_format, ...) __attribute__((format(printf, 1, 2)));
void LOG_EndMessage();

// From now on, passes every entry, also repeated entries, to a function instead of the sink.  Control
// characters are escaped.  A null function restores the sink.  REQUIRES: no other thread logs meanwhile.
using LOG_function = void (*)(void *inp_context, std::int32_t in_level, const char *inp_file,
                              std::int32_t in_line, const char *inp_text);
void LOG_SetFunction(LOG_function function, void *context);

} // extern "C"

namespace qvledger {

// Number of bytes that the log has written to a file; 0 if the log does not write to this file.
std::int64_t logBytesIn(const OS_fileIdentity &file);

} // namespace qvledger

// Is an entry of this level wanted?  The macros below compare first, so an unwanted entry costs only this
// comparison.
inline bool LOG_Wants(std::int32_t level) {
    return level <= LOG_g_level.load(std::memory_order_relaxed);
}

#define LOG_CondMessage(level, file, line, ...)                                                              \
    (LOG_Wants(level) ? LOG__Message(level, file, line, __VA_ARGS__) : static_cast<void>(0))

#define LOG_CondFuncTrace(function, file, line, entry, reserved)                                             \
    (LOG_Wants(LOG_TRACE) ? LOG__FuncTrace(function, file, line, entry) : static_cast<void>(reserved))
