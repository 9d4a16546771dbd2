// LOG_: the program's log.
//
// One line an entry: time in UTC, program and process id, level, source file and line, text.  The sink is
// syslog unless QV_LOG names another (a file to append to, "stderr", "none"); a file that cannot be opened is
// the first entry there.  QV_LOG_LEVEL=6 adds the detail, QV_LOG_TRACE=1 the entry and exit of operations.
// Nothing ever goes to the report stream.
//
// An entry that equals the last one of its level, source file and line is counted instead of written: "last
// entry repeated N times", with that level, file and line, comes before the place's next entry that is
// written, and at the program's end; while it repeats, after a minute, after an hour more, and then once a
// day.  A file and stderr get every entry, none counted, where QV_LOG_LEVEL or QV_LOG_TRACE ask for more than
// failures, and a function (LOG_SetFunction) always.
//
// The log never holds the program up for longer than moments: what the system's log or the reader of a pipe
// does not take is lost, counted, and told with the next entry that is taken, "N entries lost: ...".  A file
// on a disk, a terminal, and stderr where it gets every entry take their time.
//
// The macros test the level before they evaluate anything else, so an unwanted entry costs one comparison.
#pragma once

#include <atomic>
#include <cstdint>

constexpr std::int32_t LOG_ERROR = 5;  // a failure
constexpr std::int32_t LOG_DETAIL = 6; // what was read and decided
constexpr std::int32_t LOG_TRACE = 7;  // entry and exit of operations

extern "C" {

// The highest level that is written.  Before LOG_Init it lets every entry through to LOG__Message, which
// then sets it from the environment.
extern std::atomic<std::int32_t> LOG_g_level;

// Reads the environment and opens the sink.  The arguments are not used: the environment has the sink and
// the level.  A later call, and the first entry without any, has the same effect once.
void LOG_Init(const char *in_sink, const char *in_level);

// Tells what is counted and not told yet; exit does it on its own.  For who ends the program in another way.
void LOG_Flush();

// One entry.  Callers use LOG_CondMessage.  REQUIRES, here and below: the name of the file stays as long as
// the program runs.
void LOG__Message(std::int32_t in_level, const char *in_file, std::int32_t in_line, const char *in_format,
                  ...) __attribute__((format(printf, 4, 5)));

// Entry (in_entry 1) to or exit (0) from an operation.  Callers use LOG_CondFuncTrace.
void LOG__FuncTrace(const char *in_function, const char *in_file, std::int32_t in_line,
                    std::int32_t in_entry);

// An entry built in pieces, one at a time per thread: StartMessage gives non-zero if the entry is wanted, and
// then takes over what LOG_CondAdd appends, until LOG_EndMessage writes it.  Outside a message both others
// do nothing.
std::int32_t LOG_StartMessage(std::int32_t in_level, const char *in_file, std::int32_t in_line,
                              std::int32_t in_reserved);
void LOG_CondAdd(const char *in_format, ...) __attribute__((format(printf, 1, 2)));
void LOG_EndMessage();

// Has the entries, repeated ones too, go to a function instead of the sink: level, source file and line, and
// the text as the sink would show it.  Null brings the sink back.  REQUIRES: no other thread writes an entry
// meanwhile.
using LOG_function = void (*)(void *inp_context, std::int32_t in_level, const char *inp_file,
                              std::int32_t in_line, const char *inp_text);
void LOG_SetFunction(LOG_function in_function, void *inp_context);

} // extern "C"

inline bool LOG_Wants(std::int32_t in_level) {
    return in_level <= LOG_g_level.load(std::memory_order_relaxed);
}

#define LOG_CondMessage(level, file, line, ...)                                                              \
    (LOG_Wants(level) ? LOG__Message(level, file, line, __VA_ARGS__) : static_cast<void>(0))

#define LOG_CondFuncTrace(function, file, line, entry, reserved)                                             \
    (LOG_Wants(LOG_TRACE) ? LOG__FuncTrace(function, file, line, entry) : static_cast<void>(reserved))
