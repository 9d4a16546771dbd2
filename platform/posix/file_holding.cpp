#include "platform/os.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

int OS_LockFile(int in_fd) {
    if (flock(in_fd, LOCK_EX | LOCK_NB) == 0)
        return OS_DONE;
    return errno == EWOULDBLOCK ? OS_TAKEN : OS_REFUSED;
}

void OS_UnlockFile(int in_fd) {
    static_cast<void>(flock(in_fd, LOCK_UN)); // held or not, it is not afterwards
}

int OS_HoldAgainstWriters(int in_fd, const char *, const OS_fileIdentity &) {
    if (fcntl(in_fd, F_SETLEASE, static_cast<long>(F_RDLCK)) == 0)
        return OS_DONE;
    return errno == EAGAIN ? OS_TAKEN : OS_REFUSED;
}

int OS_IsOpenElsewhere(int in_fd) {
    if (fcntl(in_fd, F_SETLEASE, static_cast<long>(F_WRLCK)) != 0)
        return errno == EAGAIN ? 1 : 0;
    static_cast<void>(fcntl(in_fd, F_SETLEASE, static_cast<long>(F_UNLCK))); // it was to tell, not to hold
    return 0;
}

// There is no call that removes by the descriptor.
int OS_RemoveFile(int, const char *inp_path) {
    return _unlink(inp_path);
}
