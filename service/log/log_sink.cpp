#include "service/log/log_sink.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "platform/os.h"
#include "service/log/log.h"
#include "service/log/log_text.h"

using namespace qvledger;

// ---- Opening ----

void LogSink::openFile(const char *name) {
    if (descriptor.openFile(name)) {
        kind = Kind::descriptor;
        return;
    }
    const int reason = errno;
    kind = Kind::systemLog;
    systemLog.open();
    LogText text;
    text.append(name);
    text.append(" cannot be opened: ");
    text.append(std::strerror(reason));
    static_cast<void>(write({LOG_ERROR, __FILE__, __LINE__}, text.view())); // the sink knows what it lost
}

void LogSink::open(const char *name, bool isComplete) {
    patience.renew();
    if (name == nullptr || *name == '\0') {
        kind = Kind::systemLog;
        systemLog.open();
    } else if (std::strcmp(name, "stderr") == 0) {
        kind = Kind::descriptor;
        descriptor.openStandardError(isComplete);
    } else if (std::strcmp(name, "none") != 0) {
        openFile(name);
    }
}

void LogSink::close() {
    descriptor.close();
    systemLog.close();
    kind = Kind::nowhere;
    isCut = false;
    lost = 0;
}

void LogSink::tryAgain(std::int64_t longestWait) {
    systemLog.tryAgain(longestWait);
    patience.renew(longestWait);
}

// ---- Bytes to a descriptor ----

// How many of the bytes were written.
std::size_t LogSink::pass(std::string_view bytes) {
    const std::size_t size = bytes.size();
    bool goesOn = descriptor.isStillOpen();
    while (goesOn && !bytes.empty())
        goesOn = descriptor.mayFill() ? patience.attempt([&] { return descriptor.passPiece(bytes); })
                                      : descriptor.passPiece(bytes) || descriptor.waitForRoom();
    return size - bytes.size();
}

bool LogSink::putLine(std::string_view line) {
    const std::size_t passed = pass(line);
    if (passed != 0 && passed != line.size())
        isCut = true;
    return passed == line.size();
}

// ---- Entries ----

// Time, program and process, which the system's log puts before an entry on its own.
static void appendStamp(LogText &line) {
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm utc{};
    static_cast<void>(gmtime_s(&utc, &seconds));
    char stamp[sizeof "2000-01-01T00:00:00" + 16];
    const std::size_t length = std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
    line.append({stamp, length});
    char rest[64];
    std::snprintf(rest, sizeof rest, ".%03dZ ", static_cast<int>(now.time_since_epoch().count() % 1000));
    line.append(rest);
    line.appendVisible(OS_ProgramName());
    std::snprintf(rest, sizeof rest, "[%d]: ", _getpid());
    line.append(rest);
}

static void appendEntry(LogText &line, const LogPlace &place, std::string_view text) {
    char number[32];
    std::snprintf(number, sizeof number, "%d ", place.level);
    line.append(number);
    line.append(place.file);
    std::snprintf(number, sizeof number, ":%d: ", place.line);
    line.append(number);
    line.appendVisible(text);
}

bool LogSink::put(const LogPlace &place, std::string_view text) {
    LogText line;
    if (kind == Kind::systemLog) {
        appendEntry(line, place, text);
        return systemLog.send(place.level <= LOG_ERROR, line.view());
    }
    // The rest of a line that was cut must not become the beginning of this one.
    const bool mendsCut = isCut.exchange(false);
    if (mendsCut)
        line.append("\n");
    appendStamp(line);
    appendEntry(line, place, text);
    line.end('\n');
    const bool isWritten = putLine(line.view());
    if (mendsCut && !isWritten)
        isCut = true;
    return isWritten;
}

bool LogSink::tellLost() {
    const std::uint64_t calls = lost.exchange(0, std::memory_order_relaxed);
    if (calls == 0)
        return true;
    char text[96];
    std::snprintf(text, sizeof text, "%" PRIu64 " entries lost: the %s did not take them", calls,
                  kind == Kind::systemLog ? "system log" : "log's output");
    const bool isTold = put({LOG_ERROR, __FILE__, __LINE__}, text);
    if (!isTold)
        lose(calls);
    return isTold;
}

bool LogSink::write(const LogPlace &place, std::string_view text, std::uint64_t calls) {
    const bool isWritten = tellLost() && put(place, text);
    if (!isWritten)
        lose(calls);
    return isWritten;
}
