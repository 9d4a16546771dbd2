#include "service/log/system_log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/os.h"
#include "service/log/log_text.h"

using namespace qvledger;

// What of an entry goes in one datagram, which takes only so much.
constexpr std::size_t kPiece = 8000;

int qvledger::movedBehindStandardStreams(int fd) {
    if (fd < 0 || fd > STDERR_FILENO)
        return fd;
    const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(fd);
    return moved;
}

void SystemLog::open() {
    fd = movedBehindStandardStreams(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    patience.renew();
}

void SystemLog::close() {
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

static sockaddr_un addressOf(const char *path) {
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    return address;
}

// The few daemons that take entries as a stream.  Such entries are rare enough for a connection each, which
// no thread has to share and no restart of the daemon breaks.
bool SystemLog::sendOverStream(std::string_view bytes) const {
    const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (connection < 0)
        return false;
    const sockaddr_un address = addressOf(path);
    bool isSent = ::connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    if (isSent) {
        const ssize_t sent = ::send(connection, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        isSent = sent == static_cast<ssize_t>(bytes.size());
        errno = sent < 0 ? errno : EMSGSIZE;
    }
    const int reason = errno;
    ::close(connection);
    errno = reason;
    return isSent;
}

bool SystemLog::trySend(std::string_view bytes) const {
    const sockaddr_un address = addressOf(path);
    if (::sendto(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
                 reinterpret_cast<const sockaddr *>(&address), sizeof address) >= 0)
        return true;
    // A stream's entry ends with a NUL.
    return errno == EPROTOTYPE && sendOverStream({bytes.data(), bytes.size() + 1});
}

// Priority, local time, program and process, as syslog(3) has them.
static void appendHeader(LogText &text, int priority) {
    static const char kMonths[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    static_cast<void>(localtime_s(&local, &now)); // the daemon has a clock of its own
    char field[64];
    std::snprintf(field, sizeof field, "<%d>%.3s %2d %02d:%02d:%02d ", LOG_USER | priority,
                  kMonths + 3 * (local.tm_mon % 12), local.tm_mday, local.tm_hour, local.tm_min,
                  local.tm_sec);
    text.append(field);
    text.appendVisible(OS_ProgramName());
    std::snprintf(field, sizeof field, "[%d]: ", _getpid());
    text.append(field);
}

bool SystemLog::send(bool isFailure, std::string_view text) {
    for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size()))) {
        LogText piece;
        appendHeader(piece, isFailure ? LOG_ERR : LOG_DEBUG);
        piece.append(text.substr(0, kPiece));
        piece.end('\0');
        const std::string_view bytes = piece.view().substr(0, piece.view().size() - 1);
        if (!patience.attempt([&] { return trySend(bytes); }))
            return false;
    }
    return true;
}
