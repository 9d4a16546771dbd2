#include "platform/os.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

int OS_LockFile(int fd) {
    if (flock(fd, LOCK_EX | LOCK_NB) == 0)
        return OS_DONE;
    return errno == EWOULDBLOCK ? OS_TAKEN : OS_REFUSED;
}

void OS_UnlockFile(int fd) {
    static_cast<void>(flock(fd, LOCK_UN)); // afterwards the file is unlocked in any case
}

int OS_LockOutWriters(int fd, const char *, const OS_fileIdentity &) {
    if (fcntl(fd, F_SETLEASE, static_cast<long>(F_RDLCK)) == 0)
        return OS_DONE;
    return errno == EAGAIN ? OS_TAKEN : OS_REFUSED;
}

int OS_IsOpenElsewhere(int fd) {
    if (fcntl(fd, F_SETLEASE, static_cast<long>(F_WRLCK)) != 0)
        return errno == EAGAIN ? 1 : 0;
    static_cast<void>(fcntl(fd, F_SETLEASE, static_cast<long>(F_UNLCK))); // the lease was only a test
    return 0;
}

// Linux has no call that removes a file by descriptor.
int OS_RemoveFile(int, const char *path) {
    return _unlink(path);
}
