#include "platform/os.h"

#include <cerrno>

#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

// ---- Against other runs ----

// A lock keeps others from the bytes under it, so the locked ones are two that no file has.  Whoever has both
// holds the file; the second one alone tells that its holder has gone over to another handle
// (OS_LockOutWriters).
constexpr DWORD kLockedAt = 0x7fffffff; // the high half of their position
enum LockByte : DWORD { kFirst = 0, kSecond = 1 };

static DWORD lock(HANDLE file, LockByte byte) {
    OVERLAPPED place = {};
    place.Offset = byte;
    place.OffsetHigh = kLockedAt;
    const DWORD kind = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
    return LockFileEx(file, kind, 0, 1, 0, &place) != 0 ? DWORD{ERROR_SUCCESS} : GetLastError();
}

static void unlock(HANDLE file, LockByte byte) {
    OVERLAPPED place = {};
    place.Offset = byte;
    place.OffsetHigh = kLockedAt;
    static_cast<void>(UnlockFileEx(file, 0, 1, 0, &place)); // held or not, it is not afterwards
}

int OS_LockFile(int fd) {
    const HANDLE file = handleOf(fd);
    DWORD error = lock(file, kFirst);
    if (error == ERROR_SUCCESS) {
        error = lock(file, kSecond);
        if (error == ERROR_SUCCESS)
            return OS_DONE;
        unlock(file, kFirst);
    }
    setErrno(error);
    return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? OS_TAKEN : OS_REFUSED;
}

void OS_UnlockFile(int fd) {
    unlock(handleOf(fd), kFirst);
    unlock(handleOf(fd), kSecond);
}

// ---- Against writers ----

// A handle that shares the file with readers alone can only be had where nobody writes, and while it is there
// nobody opens the file to write.  It takes the old one's place, which ends with the old one's locks; its own
// is there before.
int OS_LockOutWriters(int fd, const char *path, const OS_fileIdentity &file) {
    FileHandle held(CreateFileA(path, GENERIC_READ | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!held.isOpen()) {
        const DWORD error = GetLastError();
        setErrno(error);
        return error == ERROR_SHARING_VIOLATION ? OS_TAKEN : OS_REFUSED;
    }
    OS_fileIdentity opened = {};
    if (identifyHandle(held.get(), &opened) != 0)
        return OS_REFUSED;
    if (!OS_IsSameFile(opened, file)) {
        errno = ENOENT;
        return OS_REFUSED;
    }
    unlock(handleOf(fd), kSecond); // the first one keeps others off
    if (lock(held.get(), kSecond) != ERROR_SUCCESS)
        return OS_REFUSED;
    const int newFd = descriptorOf(held.release(), _O_RDONLY);
    if (newFd == -1)
        return OS_REFUSED;
    const int moved = _dup2(newFd, fd);
    static_cast<void>(_close(newFd)); // its file is open under the other number
    return moved == 0 ? OS_DONE : OS_REFUSED;
}

// No call tells of a file that is open with the right to read or write it.
int OS_IsOpenElsewhere(int) {
    return 0;
}

// ---- Removing ----

// It was opened with the right to: by OS_OpenToAppend or OS_LockOutWriters.
int OS_RemoveFile(int fd, const char *) {
    FILE_DISPOSITION_INFO removed = {};
    removed.DeleteFile = 1;
    if (SetFileInformationByHandle(handleOf(fd), FileDispositionInfo, &removed, sizeof removed) != 0)
        return 0;
    setErrno(GetLastError());
    return -1;
}
