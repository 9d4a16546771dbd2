#include "platform/os.h"

#include <cerrno>
#include <cstring>

#include "platform/malloced.h"
#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

// ---- Opening ----

// To write at the end alone, wherever that is by then, and to be asked.
constexpr DWORD kAppend = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;

// Only what may be read or overwritten can be locked, so a file that may be read is opened for that, too.
static HANDLE openToAppend(const char *path, DWORD rights, DWORD disposition) {
    const HANDLE file = openHandle(path, kAppend | GENERIC_READ | rights, disposition);
    return file != INVALID_HANDLE_VALUE || errno != EACCES ? file
                                                           : openHandle(path, kAppend | rights, disposition);
}

int OS_OpenToRead(const char *inp_path) {
    return descriptorOf(openHandle(inp_path, GENERIC_READ, OPEN_EXISTING), _O_RDONLY);
}

int OS_OpenToAppend(const char *inp_path, char **outp_made) {
    constexpr int kTries = 40; // at a name that others make and remove
    *outp_made = nullptr;
    Malloced<char> path(_strdup(inp_path));
    if (path == nullptr) {
        errno = ENOMEM;
        return -1;
    }
    for (int tries = 0; tries < kTries; ++tries) {
        // Who makes it may have to remove it.
        FileHandle file(openToAppend(inp_path, DELETE, CREATE_NEW));
        const bool isMade = file.isOpen();
        if (!isMade && errno != EEXIST)
            return -1;
        const int fd = descriptorOf(isMade ? file.release() : openToAppend(inp_path, 0, OPEN_EXISTING),
                                    _O_WRONLY | _O_APPEND);
        if (fd != -1 && isMade)
            *outp_made = path.release();
        if (fd != -1 || errno != ENOENT)
            return fd;
    }
    return -1;
}

int OS_OpenAgain(int in_fd) {
    const HANDLE file = handleOf(in_fd);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    const int fd = descriptorOf(ReOpenFile(file, GENERIC_READ, kShareAll, 0), _O_RDONLY);
    return fd != -1 ? fd : descriptorOf(ReOpenFile(file, kAppend, kShareAll, 0), _O_WRONLY | _O_APPEND);
}

// ---- Contents ----

int OS_LastByte(int in_fd) {
    LARGE_INTEGER size = {};
    unsigned char last = 0;
    if (GetFileSizeEx(handleOf(in_fd), &size) == 0 || size.QuadPart == 0)
        return -1;
    return OS_ReadAt(in_fd, size.QuadPart - 1, &last, 1) == 1 ? last : -1;
}

int OS_CutFile(int in_fd, std::int64_t in_size) {
    // What is open to append may not be cut: once more, with the right to.
    const FileHandle file(ReOpenFile(handleOf(in_fd), GENERIC_WRITE, kShareAll, 0));
    FILE_END_OF_FILE_INFO end = {};
    end.EndOfFile.QuadPart = in_size;
    if (!file.isOpen() || SetFileInformationByHandle(file.get(), FileEndOfFileInfo, &end, sizeof end) == 0) {
        setErrno(GetLastError());
        return -1;
    }
    return _lseeki64(in_fd, in_size, SEEK_SET) == in_size ? 0 : -1;
}

// ---- Names ----

int OS_MoveName(const char *inp_from, const char *inp_to) {
    // Under a name that is too long it could not be opened again.
    if (std::strlen(inp_to) >= MAX_PATH) {
        errno = EINVAL;
        return OS_REFUSED;
    }
    if (MoveFileExA(inp_from, inp_to, MOVEFILE_WRITE_THROUGH) != 0)
        return OS_DONE;
    const DWORD error = GetLastError();
    setErrno(error);
    if (error == ERROR_SHARING_VIOLATION)
        errno = EBUSY; // a program has it open that does not share it with who would move it
    return errno == EEXIST ? OS_TAKEN : OS_REFUSED;
}

int OS_NameNewFile(const char *inp_from, const char *inp_to) {
    return OS_MoveName(inp_from, inp_to); // which every file system knows here
}

// There is no call for it.  Names that are given above are on the disk; that of a file that was made is once
// its contents are (_commit).
int OS_SyncFolderOf(int) {
    return 0;
}
