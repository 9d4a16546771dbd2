#include "platform/os.h"

#include "platform/descriptor.h"
#include "platform/malloced.h"
#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

// ---- Opening ----

// Rights to write only at the file's current end, and to query the file.
constexpr DWORD kAppend = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;

// Opens a file for appending.  Opens it for reading too if possible, because a lock needs the right to read
// or overwrite the file.
static HANDLE openToAppend(const char *path, DWORD rights, DWORD disposition) {
    const HANDLE file = openHandle(path, kAppend | GENERIC_READ | rights, disposition);
    return file != INVALID_HANDLE_VALUE ? file : openHandle(path, kAppend | rights, disposition);
}

int OS_OpenToRead(const char *path) {
    return descriptorOf(openHandle(path, GENERIC_READ, OPEN_EXISTING), _O_RDONLY);
}

int OS_OpenToAppend(const char *name, char **made) {
    constexpr int kTries = 40; // attempts for a name that other programs create and remove
    *made = nullptr;
    Malloced<char> path(_strdup(name));
    if (path == nullptr) {
        errno = ENOMEM;
        return -1;
    }
    for (int tries = 0; tries < kTries; ++tries) {
        // Requests the right to delete, because the program may have to remove the file that it creates.
        const HANDLE file = openToAppend(name, DELETE, CREATE_NEW);
        const bool isMade = file != INVALID_HANDLE_VALUE;
        if (!isMade && errno != EEXIST)
            return -1;
        const int fd =
            descriptorOf(isMade ? file : openToAppend(name, 0, OPEN_EXISTING), _O_WRONLY | _O_APPEND);
        if (fd != -1 && isMade)
            *made = path.release();
        if (fd != -1 || errno != ENOENT)
            return fd;
    }
    return -1;
}

int OS_OpenAgain(int fd) {
    const HANDLE file = handleOf(fd);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    const int again = descriptorOf(ReOpenFile(file, GENERIC_READ, kShareAll, 0), _O_RDONLY);
    return again != -1 ? again : descriptorOf(ReOpenFile(file, kAppend, kShareAll, 0), _O_WRONLY | _O_APPEND);
}

// ---- Contents ----

int OS_CutFile(int fd, std::int64_t size) {
    // A handle that only appends cannot truncate, so the file is opened again.
    const HANDLE again = ReOpenFile(handleOf(fd), GENERIC_WRITE, kShareAll, 0);
    if (again == INVALID_HANDLE_VALUE) {
        setErrno(GetLastError());
        return -1;
    }
    const Descriptor file(descriptorOf(again, _O_WRONLY));
    return file.isOpen() && _chsize_s(file.get(), size) == 0 && _lseeki64(fd, size, SEEK_SET) == size ? 0
                                                                                                      : -1;
}

// ---- Names ----

int OS_MoveName(const char *from, const char *to) {
    // A longer path might not open afterwards.  The limit counts characters of UTF-16, and the NUL.
    if (MultiByteToWideChar(CP_ACP, 0, to, -1, nullptr, 0) > MAX_PATH) {
        errno = EINVAL;
        return OS_REFUSED;
    }
    if (MoveFileExA(from, to, MOVEFILE_WRITE_THROUGH) != 0)
        return OS_DONE;
    setErrno(GetLastError()); // EBUSY if another program has the file open without FILE_SHARE_DELETE
    return errno == EEXIST ? OS_TAKEN : OS_REFUSED;
}

int OS_NameNewFile(const char *from, const char *to) {
    return OS_MoveName(from, to); // never replaces a file, on any file system
}

int OS_ReplaceName(const char *from, const char *to) {
    if (MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0)
        return 0;
    setErrno(GetLastError());
    return -1;
}

// Does nothing, because no call flushes a folder.  OS_MoveName writes the new name to disk, and _commit
// flushes a new file's name with its contents.
int OS_SyncFolderOf(int) {
    return 0;
}
