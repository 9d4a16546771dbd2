#include <cerrno>
#include <climits>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "service/log/log.h"
#include "service/log/log_sink.h"
#include "service/log/log_text.h"

using namespace qvledger;

static int movedAboveStandardStreams(int fd) {
    if (fd < 0 || fd > STDERR_FILENO)
        return fd;
    const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(fd);
    return moved;
}

int LogSink::openFile(const char *name) {
    // With O_NONBLOCK, opening a pipe without a reader fails instead of blocking the program.
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    return movedAboveStandardStreams(::open(name, kFlags, 0640));
}

// Can PIPE_BUF bytes be written without blocking?  False if the pipe has no reader, because the write would
// raise SIGPIPE.
static bool isPipeReady(int fd) {
    pollfd pipe = {.fd = fd, .events = POLLOUT, .revents = 0};
    return ::poll(&pipe, 1, 0) == 1 && pipe.revents == POLLOUT;
}

// Checks a pipe before each write.  Making the pipe non-blocking would also affect other programs that share
// the standard error stream.
std::size_t LogSink::writeAtOnce(int fd, std::string_view bytes) {
    struct stat file = {};
    const bool isPipe = ::fstat(fd, &file) != 0 || S_ISFIFO(file.st_mode); // assumed if the type is unknown
    std::size_t done = 0;
    while (done < bytes.size() && (!isPipe || isPipeReady(fd))) {
        const std::string_view piece = bytes.substr(done, isPipe ? PIPE_BUF : std::string_view::npos);
        const ssize_t written = S_ISSOCK(file.st_mode)
                                    ? ::send(fd, piece.data(), piece.size(), MSG_NOSIGNAL | MSG_DONTWAIT)
                                    : ::write(fd, piece.data(), piece.size());
        if (written <= 0)
            break;
        done += static_cast<std::size_t>(written);
    }
    return done;
}

// Sends an entry to a socket; false if the entry is not taken.  Connects for each entry, so that a restarted
// daemon gets the next entry.
static bool send(const char *path, int type, std::string_view bytes) {
    const int opened = ::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const Descriptor daemon(movedAboveStandardStreams(opened));
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    return ::connect(daemon.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
           ::send(daemon.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == std::ssize(bytes);
}

// Does not use syslog(3), which would block while the daemon's queue is full.
bool LogSink::sendToSystemLog(const char *path, std::int32_t level, std::string_view entry) {
    LogText text;
    const int priority = level == LOG_EXPECTED ? LOG_INFO : level == LOG_ERROR ? LOG_ERR : LOG_DEBUG;
    text.appendFormat("<%d>", LOG_USER | priority);
    text.append(entry);
    text.end('\0'); // on a stream socket, a NUL ends each entry
    const std::string_view bytes = text.view();
    return send(path, SOCK_DGRAM, bytes.substr(0, bytes.size() - 1)) ||
           (errno == EPROTOTYPE && send(path, SOCK_STREAM, bytes));
}
