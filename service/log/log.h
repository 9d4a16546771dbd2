// LOG_: the program's log.
//
// One line per entry: time in UTC, program and process id, level, source file and line, text.  QV_LOG names
// the sink: a file to append to, "stderr" or "none".  Without it, and if that file cannot be opened, it is
// syslog.  QV_LOG_LEVEL=6 adds details, QV_LOG_TRACE=1 adds entries to and exits from operations.
//
// An entry of level 5 that equals the last one of its source file and line is only counted.  "repeated N
// times: TEXT" is written when that place logs another text, and at the program's end.
//
// Logging never blocks the program: entries that syslog or the reader of a pipe or socket does not take at
// once are dropped, and "N entries lost" precedes the next entry that is taken.  Only writes to disks and
// terminals wait.
#pragma once

#include <atomic>
#include <cstdint>

struct OS_fileIdentity;

constexpr std::int32_t LOG_ERROR = 5;  // a failure
constexpr std::int32_t LOG_DETAIL = 6; // what the program read and decided
constexpr std::int32_t LOG_TRACE = 7;  // entry to and exit from operations

extern "C" {

// The highest level that is written.  Until the first entry starts the log, it lets all levels pass.
extern std::atomic<std::int32_t> LOG_g_level;

// Reads the environment and opens the sink, unless that was done before.  The arguments are not used.
void LOG_Init(const char *in_sink, const char *in_level);

// Writes the counts of repeated and lost entries.  exit() does so, too.
void LOG_Flush();

// Writes one entry; used through LOG_CondMessage.  REQUIRES, here and below: the file name stays valid until
// the program ends.
void LOG__Message(std::int32_t level, const char *file, std::int32_t line, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

// Logs the entry (entry 1) to or exit (0) from an operation; used through LOG_CondFuncTrace.
void LOG__FuncTrace(const char *function, const char *file, std::int32_t line, std::int32_t entry);

// Builds an entry in pieces, one at a time per thread.  LOG_StartMessage returns non-zero if the entry is
// wanted; then LOG_CondAdd appends to it and LOG_EndMessage writes it.  Otherwise both do nothing.
std::int32_t LOG_StartMessage(std::int32_t in_level, const char *in_file, std::int32_t in_line,
                              std::int32_t in_reserved);
void LOG_CondAdd(const char *in_format, ...) __attribute__((format(printf, 1, 2)));
void LOG_EndMessage();

// Passes every entry, repeated ones too, to a function instead of the sink, with control characters escaped.
// A null function restores the sink.  REQUIRES: no other thread logs meanwhile.
using LOG_function = void (*)(void *inp_context, std::int32_t in_level, const char *inp_file,
                              std::int32_t in_line, const char *inp_text);
void LOG_SetFunction(LOG_function function, void *context);

} // extern "C"

namespace qvledger {

// Number of bytes that the log has written to a file; 0 if it is not the log's file.
std::int64_t logBytesIn(const OS_fileIdentity &file);

} // namespace qvledger

// An unwanted entry costs this comparison; the macros evaluate nothing else before it.
inline bool LOG_Wants(std::int32_t level) {
    return level <= LOG_g_level.load(std::memory_order_relaxed);
}

#define LOG_CondMessage(level, file, line, ...)                                                              \
    (LOG_Wants(level) ? LOG__Message(level, file, line, __VA_ARGS__) : static_cast<void>(0))

#define LOG_CondFuncTrace(function, file, line, entry, reserved)                                             \
    (LOG_Wants(LOG_TRACE) ? LOG__FuncTrace(function, file, line, entry) : static_cast<void>(reserved))
