#include "service/log.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/os.h"
#include "service/log_internal.h"
#include "service/log_text.h"

using namespace qvledger;

constexpr std::int32_t kEverything =
    INT32_MAX; // not initialised: every entry comes through and starts the log
constexpr std::int32_t kNothing = INT32_MIN;

std::atomic<std::int32_t> LOG_g_level = kEverything;

namespace {

// An entry that is being built in pieces.
struct Message {
    bool open = false;
    std::int32_t level = 0;
    const char *file = "";
    std::int32_t line = 0;
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

constexpr int kSyslog = -1;
constexpr int kNowhere = -2;

static std::mutex startLock;
static std::atomic<bool> started;
static int sink = kNowhere; // a descriptor, or one of the two above
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

static int openFile(const char *path) {
    // O_NONBLOCK: a pipe without a reader must not hold the program up.
    const int fd = ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640);
    if (fd < 0)
        return kSyslog;
    if (fd > STDERR_FILENO)
        return fd;
    // One of the standard streams was closed; the log must not become the report's stream.
    const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(fd);
    return moved < 0 ? kSyslog : moved;
}

static int openSink() {
    const char *name = OS_ProgramVariable("QV_LOG");
    if (name != nullptr && std::strcmp(name, "none") == 0)
        return kNowhere;
    if (name != nullptr && std::strcmp(name, "stderr") == 0)
        return STDERR_FILENO;
    const int chosen = name != nullptr && *name != '\0' ? openFile(name) : kSyslog;
    if (chosen == kSyslog)
        ::openlog(program_invocation_short_name, LOG_PID, LOG_USER);
    return chosen;
}

static void readLevels() {
    const char *level = OS_ProgramVariable("QV_LOG_LEVEL");
    const bool isLevel = level != nullptr && *level >= '5' && *level <= '7' && level[1] == '\0';
    messageLevel = isLevel ? *level - '0' : LOG_ERROR;
    const char *trace = OS_ProgramVariable("QV_LOG_TRACE");
    traceWanted = trace != nullptr && std::strcmp(trace, "1") == 0;
}

static void setLevel() {
    const bool wantsNone = sink == kNowhere && entryFunction == nullptr;
    LOG_g_level = wantsNone ? kNothing : traceWanted ? LOG_TRACE : messageLevel;
}

static void start() {
    if (started.load(std::memory_order_acquire))
        return;
    const std::lock_guard guard(startLock);
    if (started.load(std::memory_order_relaxed))
        return;
    sink = openSink();
    readLevels();
    setLevel();
    started.store(true, std::memory_order_release);
}

void LOG__Reset() {
    const std::lock_guard guard(startLock);
    if (sink > STDERR_FILENO)
        _close(sink);
    if (sink == kSyslog)
        ::closelog();
    sink = kNowhere;
    threadsMessage().open = false;
    LOG_g_level = kEverything;
    started = false;
}

// Without a daemon that listens every entry would cost a vain connection.  Whether there is one is looked up
// once a second.
static bool syslogListens() {
    static std::atomic<std::int64_t> checkedAt = -1;
    static std::atomic<bool> listens = true; // to who comes while another one looks
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const std::int64_t second = std::chrono::duration_cast<std::chrono::seconds>(now).count();
    if (checkedAt.exchange(second) != second)
        listens = ::access(_PATH_LOG, W_OK) == 0;
    return listens;
}

static bool isWanted(std::int32_t level) {
    if (!LOG_Wants(level))
        return false;
    start();
    if (entryFunction == nullptr && (sink == kNowhere || (sink == kSyslog && !syslogListens())))
        return false;
    return level <= messageLevel || (level == LOG_TRACE && traceWanted);
}

// ---- Writing an entry ----

// Texts come from files and command lines that anyone may have written: none may begin a line of its own or
// steer the terminal that the log is read on.
static void appendVisible(LogText &line, std::string_view text) {
    std::size_t shown = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte >= 0x20 && byte != 0x7f)
            continue;
        char escape[5];
        std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        line.append(text.substr(shown, at - shown));
        line.append(escape);
        shown = at + 1;
    }
    line.append(text.substr(shown));
}

// Time, program and process, which syslog puts before an entry on its own.
static void appendStamp(LogText &line) {
    std::timespec now{};
    std::tm utc{};
    static_cast<void>(std::timespec_get(&now, TIME_UTC)); // without a clock it is 1970
    static_cast<void>(gmtime_s(&utc, &now.tv_sec));
    char stamp[sizeof "2000-01-01T00:00:00" + 16];
    const std::size_t length = std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
    line.append({stamp, length});
    char rest[64];
    std::snprintf(rest, sizeof rest, ".%03dZ ", static_cast<int>(now.tv_nsec / 1'000'000));
    line.append(rest);
    appendVisible(line, program_invocation_short_name);
    std::snprintf(rest, sizeof rest, "[%d]: ", _getpid());
    line.append(rest);
}

static void writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const int written = _write(fd, bytes.data(), static_cast<unsigned>(bytes.size()));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return; // nobody is left to tell
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// A datagram takes only so much, so a long entry goes in pieces.
static void writeSyslog(std::int32_t level, std::string_view text) {
    constexpr std::size_t kPiece = 8000;
    for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size()))) {
        const int length = static_cast<int>(std::min(kPiece, text.size()));
        ::syslog(level <= LOG_ERROR ? LOG_ERR : LOG_DEBUG, "%.*s", length, text.data());
    }
}

static void handEntry(std::int32_t level, const char *file, std::int32_t line, std::string_view text) {
    LogText shown;
    appendVisible(shown, text);
    shown.end('\0');
    entryFunction(entryContext, level, file, line, shown.view().data());
}

static void writeEntry(std::int32_t level, const char *file, std::int32_t givenLine, std::string_view text) {
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    if (entryFunction != nullptr)
        return handEntry(level, file, givenLine, text);
    LogText line;
    if (sink != kSyslog)
        appendStamp(line);
    char number[32];
    std::snprintf(number, sizeof number, "%d ", level);
    line.append(number);
    line.append(file);
    std::snprintf(number, sizeof number, ":%d: ", givenLine);
    line.append(number);
    appendVisible(line, text);
    if (sink == kSyslog)
        return writeSyslog(level, line.view());
    line.end('\n');
    writeAll(sink, line.view());
}

// ---- Operations ----

void LOG_Init(const char *, const char *) {
    start();
}

void LOG_SetFunction(LOG_function in_function, void *inp_context) {
    start();
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
    LogText text;
    std::va_list values;
    va_start(values, in_format);
    text.appendFormat(in_format, values);
    va_end(values);
    writeEntry(in_level, in_file, in_line, text.view());
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
    message.level = in_level;
    message.file = in_file;
    message.line = in_line;
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
    writeEntry(message.level, message.file, message.line, message.text.view());
    message.text.clear();
}
