#include "service/log/log.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "service/log/log_internal.h"
#include "service/log/log_sink.h"
#include "service/log/log_text.h"

using namespace qvledger;

constexpr std::int32_t kNotStarted = INT32_MAX;
constexpr std::int32_t kNothing = INT32_MIN;
constexpr std::size_t kMostPlaces = 64;    // source lines whose repeated entries are counted
constexpr std::size_t kLongestText = 1000; // bytes; a longer text never counts as repeated

std::atomic<std::int32_t> LOG_g_level = kNotStarted;

namespace {

// The last entry that a source line logged.
struct LastEntry {
    LogPlace place;
    std::uint64_t repeated; // number of repetitions since the entry was written
    std::size_t size;
    char text[kLongestText]; // truncated
};

// The log's sink, levels and counts, shared by all threads.
class ProgramLog {
public:
    void start() {
        if (LOG_g_level.load(std::memory_order_acquire) != kNotStarted)
            return;
        // Registers the functions before the lock is first taken, because a child that another thread forks
        // must not inherit a locked mutex.  If a registration fails, repetitions are not counted, because
        // counts could be lost at the exit or written by a child, too.
        static const bool isWatched =
            std::atexit([] { instance.flush(); }) == 0 && OS_WatchForks([] { instance.beginChild(); }) == 0;
        const std::lock_guard guard(lock_);
        if (LOG_g_level != kNotStarted)
            return;
        countsRepeats_ = isWatched;
        const char *level = OS_ProgramVariable("QV_LOG_LEVEL");
        const bool isLevel = level != nullptr && *level >= '5' && *level <= '7' && level[1] == '\0';
        messageLevel_ = isLevel ? *level - '0' : LOG_ERROR;
        const char *trace = OS_ProgramVariable("QV_LOG_TRACE");
        tracesToo_ = trace != nullptr && std::strcmp(trace, "1") == 0;
        sink_.open(OS_ProgramVariable("QV_LOG"));
        setLevel();
    }

    // Is an entry of this level wanted?  Starts the log if necessary.
    bool wants(std::int32_t level) {
        if (!LOG_Wants(level))
            return false;
        start();
        return LOG_Wants(level) && (level <= messageLevel_ || level == LOG_TRACE);
    }

    void write(const LogPlace &place, std::string_view text) {
        if (text.ends_with('\n'))
            text.remove_suffix(1);
        if (function_ != nullptr) {
            LogText shown;
            shown.appendVisible(text);
            shown.end('\0');
            return function_(context_, shownLevel(place.level), place.file, place.line, shown.view().data());
        }
        const std::lock_guard guard(lock_);
        if (place.level > LOG_ERROR || !countsRepeats_ || !isRepeated(place, text))
            sink_.write(place, text);
    }

    void flush() {
        const std::lock_guard guard(lock_);
        writeCounts();
    }

    void setFunction(LOG_function function, void *context) {
        start();
        const std::lock_guard guard(lock_);
        writeCounts();
        function_ = function;
        context_ = context;
        setLevel();
    }

    std::int64_t bytesIn(const OS_fileIdentity &file) {
        const std::lock_guard guard(lock_);
        return sink_.bytesIn(file);
    }

    void reset(const char *systemLogPath) {
        const std::lock_guard guard(lock_);
        writeCounts();
        placesKnown_ = 0;
        sink_.close();
        sink_.systemLogPath = systemLogPath;
        LOG_g_level = kNotStarted;
    }

    static ProgramLog instance;

private:
    // Runs in a forked child.  Replaces the lock, because another thread of the parent may have locked it.
    // Drops the counts, because the parent writes them.
    void beginChild() {
        new (&lock_) std::mutex;
        placesKnown_ = 0;
        sink_.forgetLost();
    }

    void setLevel() {
        const bool isWanted = sink_.isOpen() || function_ != nullptr;
        LOG_g_level = !isWanted ? kNothing : tracesToo_ ? LOG_TRACE : messageLevel_;
    }

    // Does the entry repeat the last entry of its source line?  If so, counts the repetition; otherwise the
    // entry becomes the line's last entry.
    bool isRepeated(const LogPlace &place, std::string_view text) {
        LastEntry *const known = last_ + placesKnown_;
        LastEntry *const last = std::find_if(last_, known, [&](const LastEntry &it) {
            return it.place.line == place.line &&
                   (it.place.file == place.file || std::strcmp(it.place.file, place.file) == 0);
        });
        if (last == last_ + kMostPlaces)
            return false; // the table is full
        if (last == known)
            last_[placesKnown_++] = {.place = place, .repeated = 0, .size = 0, .text = {}};
        if (!text.empty() && text == std::string_view(last->text, last->size)) {
            ++last->repeated;
            return true;
        }
        writeCount(*last);
        last->size = text.copy(last->text, kLongestText);
        return false;
    }

    void writeCount(LastEntry &entry) {
        if (entry.repeated == 0)
            return;
        LogText text;
        text.appendFormat("repeated %" PRIu64 " times: ", entry.repeated);
        text.append({entry.text, entry.size});
        sink_.write(entry.place, text.view(), std::exchange(entry.repeated, 0));
    }

    void writeCounts() {
        std::for_each_n(last_, placesKnown_, [this](LastEntry &entry) { writeCount(entry); });
        static_cast<void>(sink_.writeLost()); // on failure, the lost entries stay counted
    }

    std::mutex lock_; // guards sink and counts, and changes of the other members
    LogSink sink_;
    std::int32_t messageLevel_ = LOG_ERROR;
    bool tracesToo_ = false;
    LOG_function function_ = nullptr; // unless null, receives the entries instead of the sink
    void *context_ = nullptr;
    bool countsRepeats_ = false;
    std::size_t placesKnown_ = 0;
    LastEntry last_[kMostPlaces] = {};
};

// If std::mutex needs no constructor and destructor to run, this object needs none either, so the program may
// log before main() and during exit().
ProgramLog ProgramLog::instance;

// Restores errno, because the calling function may read errno after it logs.
struct KeepErrno {
    const int kept = errno;
    ~KeepErrno() { errno = kept; }
};

} // namespace

// The entry that this thread builds in pieces; null if there is no such entry.  Not a thread_local object,
// because registering the object's destructor ends the program when memory runs out.
static thread_local LogText *openText = nullptr;
static thread_local LogPlace openPlace;
alignas(LogText) static thread_local unsigned char openRoom[sizeof(LogText)];

void LOG_Init(const char *, const char *) {
    ProgramLog::instance.start();
}

void LOG_Flush() {
    const KeepErrno keep;
    ProgramLog::instance.flush();
}

void LOG_SetFunction(LOG_function function, void *context) {
    ProgramLog::instance.setFunction(function, context);
}

std::int64_t qvledger::logBytesIn(const OS_fileIdentity &file) {
    return ProgramLog::instance.bytesIn(file);
}

void LOG__Reset(const char *systemLogPath) {
    ProgramLog::instance.reset(systemLogPath);
}

void LOG__Message(std::int32_t level, const char *file, std::int32_t line, const char *format, ...) {
    const KeepErrno keep;
    if (!ProgramLog::instance.wants(level))
        return;
    const LogPlace place = {level, file, line};
    if (std::strchr(format, '%') == nullptr)
        return ProgramLog::instance.write(place, format);
    LogText text;
    std::va_list values;
    va_start(values, format);
    text.appendValues(format, values);
    va_end(values);
    ProgramLog::instance.write(place, text.view());
}

void LOG__FuncTrace(const char *function, const char *file, std::int32_t line, std::int32_t entry) {
    LOG__Message(LOG_TRACE, file, line, "%s %s", entry != 0 ? "entering" : "leaving", function);
}

std::int32_t LOG_StartMessage(std::int32_t in_level, const char *in_file, std::int32_t in_line,
                              std::int32_t) {
    LOG_EndMessage();
    const KeepErrno keep;
    if (!ProgramLog::instance.wants(in_level))
        return 0;
    openPlace = {in_level, in_file, in_line};
    openText = new (openRoom) LogText;
    return 1;
}

void LOG_CondAdd(const char *in_format, ...) {
    if (openText == nullptr)
        return;
    const KeepErrno keep;
    std::va_list values;
    va_start(values, in_format);
    openText->appendValues(in_format, values);
    va_end(values);
}

void LOG_EndMessage() {
    if (openText == nullptr)
        return;
    const KeepErrno keep;
    ProgramLog::instance.write(openPlace, openText->view());
    std::exchange(openText, nullptr)->~LogText();
}
