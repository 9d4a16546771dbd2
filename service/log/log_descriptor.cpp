#include "service/log/log_descriptor.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service/log/system_log.h"

using namespace qvledger;

// ---- Opening ----

void LogDescriptor::look() {
    struct stat status = {};
    if (::fstat(fd, &status) != 0)
        return;
    isSocket = S_ISSOCK(status.st_mode);
    canFill = isSocket || S_ISFIFO(status.st_mode);
}

bool LogDescriptor::openFile(const char *name) {
    // O_NONBLOCK: a pipe without a reader must not hold the program up.
    fd = movedBehindStandardStreams(
        ::open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640));
    if (fd < 0)
        return false;
    look();
    static_cast<void>(OS_IdentifyDescriptor(fd, &opened)); // one that was opened just now can be looked at
    return true;
}

void LogDescriptor::openStandardError(bool isComplete) {
    fd = STDERR_FILENO;
    look();
    canFill = canFill && !isComplete;
}

bool LogDescriptor::isStillOpen() const {
    OS_fileIdentity now = {};
    return fd == STDERR_FILENO || (OS_IdentifyDescriptor(fd, &now) == 0 && OS_IsSameFile(now, opened));
}

void LogDescriptor::close() {
    if (fd > STDERR_FILENO && isStillOpen())
        static_cast<void>(_close(fd)); // nobody is left to tell
    *this = {};
}

// ---- Bytes ----

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

bool LogDescriptor::passPiece(std::string_view &bytes) const {
    if (canFill && !isSocket && !hasRoom(fd))
        return false;
    const std::string_view piece = canFill ? bytes.substr(0, PIPE_BUF) : bytes;
    errno = 0;
    const ssize_t written =
        isSocket ? ::send(fd, piece.data(), piece.size(), MSG_NOSIGNAL | (canFill ? MSG_DONTWAIT : 0))
                 : _write(fd, piece.data(), static_cast<unsigned>(piece.size()));
    if (written > 0)
        bytes.remove_prefix(static_cast<std::size_t>(written));
    return written > 0;
}

bool LogDescriptor::waitForRoom() const {
    if (errno == EAGAIN) { // who shares the standard error stream may have made it so
        pollfd ready = {.fd = fd, .events = POLLOUT, .revents = 0};
        return ::poll(&ready, 1, -1) > 0 || errno == EINTR;
    }
    return errno == EINTR;
}
