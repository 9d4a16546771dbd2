#include "service/log/log.h"

#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string_view>

#include "platform/os.h"
#include "service/log/log_internal.h"
#include "service/log/log_repeats.h"
#include "service/log/log_sink.h"
#include "service/log/log_text.h"

using namespace qvledger;

constexpr std::int32_t kEverything =
    INT32_MAX; // not initialised: every entry comes through and starts the log
constexpr std::int32_t kNothing = INT32_MIN;

constexpr std::int64_t kLastWait = 100'000; // microseconds, for who is to take the counts

std::atomic<std::int32_t> LOG_g_level = kEverything;

namespace {

// An entry that is being built in pieces.
struct Message {
    bool open = false;
    LogPlace place = {};
    LogText text;
};

// A caller that logs before it reads errno still finds its own.
class KeepErrno {
public:
    KeepErrno() = default;
    ~KeepErrno() { errno = kept; }
    KeepErrno(const KeepErrno &) = delete;
    KeepErrno &operator=(const KeepErrno &) = delete;

private:
    int kept = errno;
};

} // namespace

// ---- Sink and levels ----

static std::mutex startLock;
static std::atomic<bool> started;
constinit static LogSink sink(kSystemLogPath);
constinit static LogRepeats repeats;
static std::atomic<bool> countsRepeats;
static std::atomic<bool> wasInVain; // the last flush
static std::int32_t messageLevel = LOG_ERROR;
static bool traceWanted;
static LOG_function entryFunction; // takes the entries in the sink's place, unless null
static void *entryContext;

// The thread's message.  It is never destroyed, as registering a destructor ends the program when memory runs
// out; LOG_EndMessage releases what it holds.
static Message &threadsMessage() {
    alignas(Message) static thread_local unsigned char room[sizeof(Message)];
    static thread_local Message *made = nullptr;
    if (made == nullptr)
        made = new (room) Message;
    return *made;
}

static void readLevels() {
    const char *level = OS_ProgramVariable("QV_LOG_LEVEL");
    const bool isLevel = level != nullptr && *level >= '5' && *level <= '7' && level[1] == '\0';
    messageLevel = isLevel ? *level - '0' : LOG_ERROR;
    const char *trace = OS_ProgramVariable("QV_LOG_TRACE");
    traceWanted = trace != nullptr && std::strcmp(trace, "1") == 0;
}

static void setLevel() {
    const bool wantsNone = !sink.isOpen() && entryFunction == nullptr;
    LOG_g_level = wantsNone ? kNothing : traceWanted ? LOG_TRACE : messageLevel;
}

// What the program's end and a fork do to the log.  False when the system will not call it then.
static bool watchProcess() {
    const auto end = [] {
        countsRepeats = false; // nobody would tell the count of what a destructor logs later still
        LOG_Flush();
    };
    const auto inChild = [] {
        repeats.startAnew();
        sink.forgetLost();
    };
    return std::atexit(end) == 0 && OS_WatchForks(inChild) == 0;
}

static void start() {
    if (started.load(std::memory_order_acquire))
        return;
    const std::lock_guard guard(startLock);
    if (started.load(std::memory_order_relaxed))
        return;
    readLevels();
    const bool isDetailed = messageLevel > LOG_ERROR || traceWanted;
    sink.open(OS_ProgramVariable("QV_LOG"), isDetailed);
    static const bool isWatched = watchProcess(); // without it counts could be lost, or told twice
    countsRepeats = isWatched && sink.isOpen() && (sink.isSystemLog() || !isDetailed);
    setLevel();
    started.store(true, std::memory_order_release);
}

void LOG__Reset() {
    LOG_Flush();
    const std::lock_guard guard(startLock);
    repeats.startAnew();
    sink.close();
    wasInVain = false;
    threadsMessage().open = false;
    LOG_g_level = kEverything;
    started = false;
}

static bool isWanted(std::int32_t level) {
    if (!LOG_Wants(level))
        return false;
    start();
    return (entryFunction != nullptr || sink.isOpen()) &&
           (level <= messageLevel || (level == LOG_TRACE && traceWanted));
}

// ---- Writing an entry ----

static void handEntry(const LogPlace &place, std::string_view text) {
    LogText shown;
    shown.appendVisible(text);
    shown.end('\0');
    entryFunction(entryContext, place.level, place.file, place.line, shown.view().data());
}

static void tell(const DueRepetitions &due) {
    for (const auto &[place, times] : due) {
        char text[64];
        std::snprintf(text, sizeof text, "last entry repeated %" PRIu64 " times", times);
        static_cast<void>(sink.write(place, text, times)); // the sink knows what it lost
    }
}

static void writeCounted(const LogPlace &place, std::string_view text) {
    DueRepetitions due;
    if (repeats.count(place, text, due))
        return tell(due);
    if (!sink.isReady())
        return sink.lose(1);
    repeats.enter(place, text, due);
    tell(due);
    if (!sink.write(place, text))
        sink.lose(repeats.forget(place));
}

static void writeEntry(const LogPlace &place, std::string_view text) {
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    if (entryFunction != nullptr)
        return handEntry(place, text);
    if (countsRepeats.load(std::memory_order_relaxed))
        return writeCounted(place, text);
    if (!sink.isReady())
        return sink.lose(1);
    static_cast<void>(sink.write(place, text)); // the sink knows what it lost
}

// ---- Operations ----

void LOG_Init(const char *, const char *) {
    start();
}

void LOG_Flush() {
    const KeepErrno keep;
    if (!started.load(std::memory_order_acquire) || !sink.isOpen())
        return;
    DueRepetitions due;
    repeats.takeAll(due);
    // What was refused just now may be taken, and there may be no later time; once in vain is enough.
    sink.tryAgain(wasInVain ? 0 : kLastWait);
    tell(due);
    wasInVain = !sink.tellLost(); // what it cannot tell it knows still
}

void LOG_SetFunction(LOG_function in_function, void *inp_context) {
    start();
    LOG_Flush();
    const std::lock_guard guard(startLock);
    entryFunction = in_function;
    entryContext = inp_context;
    setLevel();
}

void LOG__Message(std::int32_t in_level, const char *in_file, std::int32_t in_line, const char *in_format,
                  ...) {
    const KeepErrno keep;
    if (!isWanted(in_level))
        return;
    const LogPlace place = {in_level, in_file, in_line};
    if (std::strchr(in_format, '%') == nullptr)
        return writeEntry(place, in_format);
    LogText text;
    std::va_list values;
    va_start(values, in_format);
    text.appendFormat(in_format, values);
    va_end(values);
    writeEntry(place, text.view());
}

void LOG__FuncTrace(const char *in_function, const char *in_file, std::int32_t in_line,
                    std::int32_t in_entry) {
    LOG__Message(LOG_TRACE, in_file, in_line, "%s %s", in_entry != 0 ? "entering" : "leaving", in_function);
}

std::int32_t LOG_StartMessage(std::int32_t in_level, const char *in_file, std::int32_t in_line,
                              std::int32_t) {
    const KeepErrno keep;
    Message &message = threadsMessage();
    message.open = isWanted(in_level);
    message.place = {in_level, in_file, in_line};
    message.text.clear();
    return message.open ? 1 : 0;
}

void LOG_CondAdd(const char *in_format, ...) {
    Message &message = threadsMessage();
    if (!message.open)
        return;
    const KeepErrno keep;
    std::va_list values;
    va_start(values, in_format);
    message.text.appendFormat(in_format, values);
    va_end(values);
}

void LOG_EndMessage() {
    Message &message = threadsMessage();
    if (!message.open)
        return;
    const KeepErrno keep;
    message.open = false;
    writeEntry(message.place, message.text.view());
    message.text.clear();
}
