#include "platform/os.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <linux/sockios.h>

static OS_outputKind kindOfSocket(int socket) {
    sockaddr address = {};
    socklen_t size = sizeof address;
    if (getsockname(socket, &address, &size) != 0)
        return OS_outputKind::Unknown;
    return address.sa_family == AF_UNIX ? OS_outputKind::LocalSocket : OS_outputKind::OtherSocket;
}

OS_outputKind OS_KindOfOutput(int fd) {
    struct stat status;
    if (fstat(fd, &status) != 0)
        return OS_outputKind::Unknown;
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        return OS_outputKind::File;
    case S_IFBLK:
        return OS_outputKind::BlockDevice;
    case S_IFIFO:
        return OS_outputKind::Pipe;
    case S_IFSOCK:
        return kindOfSocket(fd);
    case S_IFCHR:
        return OS_outputKind::Device;
    default:
        return OS_outputKind::Unknown;
    }
}

int OS_WriteAtEnd(int fd) {
    if (OS_KindOfOutput(fd) != OS_outputKind::File)
        return 0;
    const int flags = fcntl(fd, F_GETFL, 0L);
    return flags != -1 ? fcntl(fd, F_SETFL, static_cast<long>(flags | O_APPEND)) : -1;
}

int OS_WriteError() {
    return errno;
}

int OS_UnreadBytes(int fd) {
    const bool isPipe = OS_KindOfOutput(fd) == OS_outputKind::Pipe;
    int unread = 0;
    if (ioctl(fd, isPipe ? FIONREAD : SIOCOUTQ, &unread) != 0)
        return -1;
    // Checks the reader after getting the count: a reader that closes can discard its unread bytes, and the
    // count would then be 0 as if they had been read.
    pollfd reader = {.fd = fd, .events = POLLOUT, .revents = 0};
    if (poll(&reader, 1, 0) < 0 || (reader.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0)
        return -1;
    return unread;
}
