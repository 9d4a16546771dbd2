#include "service/log/log_sink.h"

#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstring>
#include <ctime>

#include "service/calendar.h"
#include "service/log/log.h"
#include "service/log/log_text.h"

using namespace qvledger;

constexpr int kStandardError = 2; // descriptor of the standard error stream

void LogSink::open(const char *name) {
    const std::string_view sink = name != nullptr ? name : "";
    isOpen_ = sink != "none";
    if (sink.empty() || !isOpen_)
        return;
    fd_ = sink == "stderr" ? kStandardError : openFile(name);
    if (fd_ >= 0) {
        static_cast<void>(OS_IdentifyDescriptor(fd_, &opened_)); // on failure, writes fail, too
        return;
    }
    LogText text;
    text.appendFormat("%s cannot be opened: %s", name, std::strerror(errno));
    write({LOG_ERROR, __FILE__, __LINE__}, text.view());
}

// Is the sink's file still open?  The program may have closed the descriptor and opened another file with the
// same number.
bool LogSink::isStillOpen() const {
    OS_fileIdentity now = {};
    return fd_ == kStandardError || (OS_IdentifyDescriptor(fd_, &now) == 0 && OS_IsSameFile(now, opened_));
}

void LogSink::close() {
    if (fd_ > kStandardError && isStillOpen())
        static_cast<void>(_close(fd_)); // a failure can no longer be logged
    *this = LogSink();
}

// Appends the current time in UTC.
static void appendTime(LogText &text) {
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::tm utc = calendarOf(std::chrono::system_clock::to_time_t(now));
    char time[32] = "";
    std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%S", &utc);
    text.appendFormat("%s.%03dZ ", time, static_cast<int>(now.time_since_epoch().count() % 1000));
}

bool LogSink::put(const LogPlace &place, std::string_view text) {
    LogText entry, line;
    if (fd_ >= 0) // the system's log adds its own time
        appendTime(entry);
    entry.appendFormat("%s[%d]: %d %s:%d: ", OS_ProgramName(), _getpid(), shownLevel(place.level), place.file,
                       place.line);
    entry.append(text);
    if (isCut_) // separates the new line from the line that was cut
        line.append("\n");
    line.appendVisible(entry.view());
    if (fd_ < 0)
        return sendToSystemLog(systemLogPath, place.level, line.view());
    line.end('\n');
    const std::size_t written = isStillOpen() ? writeAtOnce(fd_, line.view()) : 0;
    const bool isWhole = written == line.view().size();
    isCut_ = !isWhole && (isCut_ || written != 0);
    written_ += static_cast<std::int64_t>(written);
    return isWhole;
}

bool LogSink::writeLost() {
    if (lost_ == 0)
        return true;
    LogText text;
    text.appendFormat("%" PRIu64 " entries lost: the log did not take them", lost_);
    const bool isTaken = put({LOG_ERROR, __FILE__, __LINE__}, text.view());
    lost_ = isTaken ? 0 : lost_;
    return isTaken;
}

void LogSink::write(const LogPlace &place, std::string_view text, std::uint64_t calls) {
    if (!writeLost() || !put(place, text))
        lost_ += calls;
}
