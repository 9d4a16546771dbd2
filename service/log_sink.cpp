#include "service/log_sink.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/os.h"
#include "service/log.h"
#include "service/log_text.h"

using namespace qvledger;

// ---- Opening ----

// A pipe's or a socket's reader may stop to read.
static bool hasReader(int fd) {
    struct stat status = {};
    return ::fstat(fd, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

void LogSink::openFile(const char *name) {
    // O_NONBLOCK: a pipe without a reader must not hold the program up.
    fd = movedBehindStandardStreams(
        ::open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640));
    mayFill = fd >= 0 && hasReader(fd);
}

void LogSink::open(const char *name, bool isComplete) {
    const bool isNamed = name != nullptr && *name != '\0';
    if (isNamed && std::strcmp(name, "none") == 0)
        return;
    if (isNamed && std::strcmp(name, "stderr") == 0) {
        fd = STDERR_FILENO; // which others share, so it stays as it is
        mayFill = !isComplete && hasReader(fd);
    } else if (isNamed) {
        openFile(name);
    }
    kind = fd >= 0 ? Kind::descriptor : Kind::systemLog;
    if (kind == Kind::systemLog)
        systemLog.open();
    patience.renew();
}

void LogSink::close() {
    if (fd > STDERR_FILENO)
        static_cast<void>(_close(fd)); // nobody is left to tell
    systemLog.close();
    kind = Kind::nowhere;
    fd = -1;
    mayFill = false;
    isCut = false;
    lost = 0;
}

void LogSink::tryAgain() {
    systemLog.tryAgain();
    patience.renew();
}

// ---- Bytes to a descriptor ----

// A piece to a pipe or a socket that has room for one.
bool LogSink::tryReader(std::string_view &bytes, bool wait) const {
    pollfd ready = {.fd = fd, .events = POLLOUT, .revents = 0};
    const int count = ::poll(&ready, 1, wait ? static_cast<int>(LogPatience::kLongestWait / 1000) : 0);
    if (count < 0)
        return false;
    if ((ready.revents & POLLOUT) == 0 || (ready.revents & POLLERR) != 0) {
        errno = count == 0 ? EAGAIN : EPIPE;
        return false;
    }
    const std::string_view piece = bytes.substr(0, PIPE_BUF);
    const int written = _write(fd, piece.data(), static_cast<unsigned>(piece.size()));
    if (written > 0)
        bytes.remove_prefix(static_cast<std::size_t>(written));
    return written > 0;
}

std::size_t LogSink::passToReader(std::string_view bytes) {
    const std::size_t size = bytes.size();
    while (!bytes.empty())
        if (!patience.attempt([&](bool wait) { return tryReader(bytes, wait); }))
            break;
    return size - bytes.size();
}

// How many of the bytes were written.
std::size_t LogSink::pass(std::string_view bytes) {
    if (mayFill)
        return passToReader(bytes);
    const std::size_t size = bytes.size();
    while (!bytes.empty()) {
        const int written = _write(fd, bytes.data(), static_cast<unsigned>(bytes.size()));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
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
    line.appendVisible(program_invocation_short_name);
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
        return systemLog.send(place.level <= LOG_ERROR ? LOG_ERR : LOG_DEBUG, line.view());
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
