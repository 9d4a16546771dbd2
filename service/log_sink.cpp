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
#include <sys/socket.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/os.h"
#include "service/log.h"
#include "service/log_text.h"

using namespace qvledger;

// ---- Opening ----

void LogSink::openFile(const char *name) {
    // O_NONBLOCK: a pipe without a reader must not hold the program up.
    fd = movedBehindStandardStreams(
        ::open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640));
    const int reason = errno;
    kind = fd >= 0 ? Kind::descriptor : Kind::systemLog;
    if (kind == Kind::descriptor)
        return;
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
        return systemLog.open();
    }
    if (std::strcmp(name, "none") == 0)
        return;
    const bool isStandard = std::strcmp(name, "stderr") == 0;
    if (isStandard) {
        kind = Kind::descriptor;
        fd = STDERR_FILENO; // which others share, so it stays as it is
    } else {
        openFile(name);
    }
    struct stat status = {};
    if (fd < 0 || ::fstat(fd, &status) != 0)
        return;
    device = status.st_dev;
    inode = status.st_ino;
    isSocket = S_ISSOCK(status.st_mode);
    mayFill = (isSocket || S_ISFIFO(status.st_mode)) && !(isStandard && isComplete);
}

// A program that closes descriptors which are not its own may have another file under the number by now.
bool LogSink::isStillOpen() const {
    struct stat status = {};
    return fd == STDERR_FILENO ||
           (::fstat(fd, &status) == 0 && status.st_dev == device && status.st_ino == inode);
}

void LogSink::close() {
    if (fd > STDERR_FILENO && isStillOpen())
        static_cast<void>(_close(fd)); // nobody is left to tell
    systemLog.close();
    kind = Kind::nowhere;
    fd = -1;
    isSocket = false;
    mayFill = false;
    isCut = false;
    lost = 0;
}

void LogSink::tryAgain(std::int64_t longestWait) {
    systemLog.tryAgain(longestWait);
    patience.renew(longestWait);
}

// ---- Bytes to a descriptor ----

// Whether a write of a piece to the pipe would not wait; false with errno.
static bool hasRoom(int pipe) {
    pollfd ready = {.fd = pipe, .events = POLLOUT, .revents = 0};
    const int count = ::poll(&ready, 1, 0);
    if (count == 1 && ready.revents == POLLOUT)
        return true;
    if (count >= 0)
        errno = count == 0 ? EAGAIN : EPIPE;
    return false;
}

// Takes off the bytes what was written, all if it does not go to a reader that may take nothing; false with
// errno when nothing was.
bool LogSink::passPiece(std::string_view &bytes) const {
    if (mayFill && !isSocket && !hasRoom(fd))
        return false;
    const std::string_view piece = mayFill ? bytes.substr(0, PIPE_BUF) : bytes;
    errno = 0;
    const ssize_t written =
        isSocket ? ::send(fd, piece.data(), piece.size(), MSG_NOSIGNAL | (mayFill ? MSG_DONTWAIT : 0))
                 : _write(fd, piece.data(), static_cast<unsigned>(piece.size()));
    if (written > 0)
        bytes.remove_prefix(static_cast<std::size_t>(written));
    return written > 0;
}

// After bytes were not written that are waited for: whether to go on.
static bool waitForRoom(int fd) {
    if (errno == EAGAIN) { // who shares the standard error stream may have made it so
        pollfd ready = {.fd = fd, .events = POLLOUT, .revents = 0};
        return ::poll(&ready, 1, -1) > 0 || errno == EINTR;
    }
    return errno == EINTR;
}

// How many of the bytes were written.
std::size_t LogSink::pass(std::string_view bytes) {
    const std::size_t size = bytes.size();
    bool goesOn = isStillOpen();
    while (goesOn && !bytes.empty())
        goesOn = mayFill ? patience.attempt([&] { return passPiece(bytes); })
                         : passPiece(bytes) || waitForRoom(fd);
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
