#include "platform/os.h"

#include "platform/descriptor.h"
#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

// ---- Locks between processes ----

// A lock on Windows blocks access to the locked bytes, so a process locks a file by two bytes beyond the end
// of any file.  A process that has locked both bytes has locked the file.  After OS_LockOutWriters only the
// second byte is locked, by the new handle.
constexpr DWORD kLockedAt = 0x7fffffff; // high half of the position of the two bytes
enum LockByte : DWORD { kFirst = 0, kSecond = 1 };

static bool lock(HANDLE file, LockByte byte) {
    return LockFile(file, byte, kLockedAt, 1, 0) != 0;
}

static void unlock(HANDLE file, LockByte byte) {
    static_cast<void>(UnlockFile(file, byte, kLockedAt, 1, 0)); // afterwards the byte is unlocked in any case
}

int OS_LockFile(int fd) {
    const HANDLE file = handleOf(fd);
    const bool hasFirst = lock(file, kFirst);
    if (hasFirst && lock(file, kSecond))
        return OS_DONE;
    const DWORD error = GetLastError();
    if (hasFirst)
        unlock(file, kFirst);
    setErrno(error);
    return errno == EBUSY ? OS_TAKEN : OS_REFUSED;
}

void OS_UnlockFile(int fd) {
    unlock(handleOf(fd), kFirst);
    unlock(handleOf(fd), kSecond);
}

// ---- Locking out writers ----

// Opens a second handle that does not share the file with writers.  This fails while a writer has the file
// open, and afterwards prevents writers from opening the file.  The new handle locks the second byte and then
// replaces the descriptor's old handle.  Closing the old handle releases the lock of the first byte.
int OS_LockOutWriters(int fd, const char *path, const OS_fileIdentity &file) {
    const HANDLE handle = CreateFileA(path, GENERIC_READ | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        setErrno(GetLastError());
        return errno == EBUSY ? OS_TAKEN : OS_REFUSED;
    }
    const Descriptor held(descriptorOf(handle, _O_RDONLY));
    OS_fileIdentity opened = {};
    if (OS_IdentifyDescriptor(held.get(), &opened) != 0)
        return OS_REFUSED;
    if (!OS_IsSameFile(opened, file)) {
        errno = ENOENT;
        return OS_REFUSED;
    }
    unlock(handleOf(fd), kSecond); // the lock of the first byte still excludes other processes
    return lock(handleOf(held.get()), kSecond) && _dup2(held.get(), fd) == 0 ? OS_DONE : OS_REFUSED;
}

// No simple call reports whether a file is open elsewhere for reading or writing.
int OS_IsOpenElsewhere(int) {
    return 0;
}

// ---- Removing ----

// OS_OpenToAppend or OS_LockOutWriters opened the file with the right to delete it.
int OS_RemoveFile(int fd, const char *) {
    FILE_DISPOSITION_INFO removed = {};
    removed.DeleteFile = 1;
    if (SetFileInformationByHandle(handleOf(fd), FileDispositionInfo, &removed, sizeof removed) != 0)
        return 0;
    setErrno(GetLastError());
    return -1;
}
