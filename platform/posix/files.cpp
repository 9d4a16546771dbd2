#include "platform/os.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "platform/malloced.h"

using namespace qvledger;

constexpr int kLinks = 40; // the most symbolic links to follow, as in the kernel

// ---- The system's own calls ----

int _unlink(const char *inp_path) {
    return unlink(inp_path);
}

int _read(int in_fd, void *outp_buffer, unsigned in_size) {
    ssize_t got;
    do
        got = read(in_fd, outp_buffer, std::min(in_size, unsigned{INT_MAX}));
    while (got < 0 && errno == EINTR);
    return static_cast<int>(got);
}

std::int64_t _lseeki64(int fd, std::int64_t offset, int origin) {
    return lseek(fd, offset, origin);
}

int _close(int in_fd) {
    return close(in_fd);
}

int _write(int fd, const void *bytes, unsigned size) {
    return static_cast<int>(write(fd, bytes, std::min(size, unsigned{INT_MAX})));
}

int _dup(int fd) {
    return fcntl(fd, F_DUPFD_CLOEXEC, 0L);
}

int _fileno(std::FILE *stream) {
    return fileno(stream);
}

int _isatty(int fd) {
    return isatty(fd);
}

int _commit(int fd) {
    return fsync(fd);
}

// ---- Opening ----

// Returns the path that a symbolic link refers to; null if the path is not a link or on failure.
static Malloced<char> follow(const char *link) {
    char target[PATH_MAX];
    const ssize_t length = readlink(link, target, sizeof target - 1);
    if (length <= 0)
        return nullptr;
    target[length] = '\0';
    const char *slash = target[0] == '/' ? nullptr : std::strrchr(link, '/');
    const std::size_t folder = slash != nullptr ? static_cast<std::size_t>(slash - link) + 1 : 0;
    Malloced<char> path;
    if (!resize(path, folder + static_cast<std::size_t>(length) + 1))
        return nullptr;
    std::memcpy(path.get(), link, folder);
    std::memcpy(path.get() + folder, target, static_cast<std::size_t>(length) + 1);
    return path;
}

static bool isFileOrFolder(int result, const struct stat &status) {
    if (result != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
        return result == 0;
    errno = ENOTSUP;
    return false;
}

// Refuses devices, because opening a device can change it, and reading a device may never end.
int OS_OpenToRead(const char *path) {
    struct stat status;
    if (!isFileOrFolder(stat(path, &status), status))
        return -1;
    int fd = -1;
    do
        fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    while (fd < 0 && errno == EINTR);
    Descriptor file(fd);
    return file.isOpen() && isFileOrFolder(fstat(fd, &status), status) ? file.release() : -1;
}

int OS_OpenToAppend(const char *name, char **made) {
    constexpr int kAppend = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY;
    constexpr mode_t kMode = 0666; // reduced by the umask
    *made = nullptr;
    Malloced<char> path(strdup(name));
    for (int links = 0; path != nullptr && links < kLinks;) {
        int fd = open(path.get(), kAppend | O_CREAT | O_EXCL, kMode);
        if (fd != -1) {
            *made = path.release();
            return fd;
        }
        if (errno != EEXIST)
            return -1;
        fd = open(name, kAppend, mode_t{0});
        if (fd != -1 || errno != ENOENT)
            return fd;
        // The file was removed meanwhile, or the path is a link whose target does not exist.
        if (Malloced<char> target = follow(path.get()); target != nullptr)
            path = std::move(target);
        ++links;
    }
    errno = path != nullptr ? ELOOP : ENOMEM;
    return -1;
}

int OS_OpenAgain(int fd) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    const int again = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode_t{0});
    return again != -1 ? again
                       : open(path, O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode_t{0});
}

// ---- Contents ----

int OS_CutFile(int fd, std::int64_t size) {
    return ftruncate(fd, size) == 0 && lseek(fd, size, SEEK_SET) == size ? 0 : -1;
}

// ---- Names ----

int OS_MoveName(const char *from, const char *to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return OS_DONE;
    return errno == EEXIST ? OS_TAKEN : OS_REFUSED;
}

int OS_NameNewFile(const char *from, const char *to) {
    const int moved = OS_MoveName(from, to);
    // Not every file system can rename without replacing, but link() never replaces.
    if (moved != OS_REFUSED || (errno != EINVAL && errno != ENOSYS))
        return moved;
    if (link(from, to) != 0)
        return errno == EEXIST ? OS_TAKEN : OS_REFUSED;
    static_cast<void>(unlink(from)); // on failure the file keeps both names
    return OS_DONE;
}

int OS_ReplaceName(const char *from, const char *to) {
    return std::rename(from, to);
}

// Syncs the folder in the path that the kernel reports for the file.  Syncs the whole file system instead if
// that path does not refer to the file, if the folder cannot be opened, or if its sync fails without EIO.
int OS_SyncFolderOf(int fd) {
    char link[64];
    char path[PATH_MAX];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    path[std::max<ssize_t>(length, 0)] = '\0';
    OS_fileIdentity file = {};
    OS_fileIdentity named = {};
    char *slash = std::strrchr(path, '/');
    if (slash == nullptr || OS_IdentifyDescriptor(fd, &file) != 0 || OS_IdentifyTarget(path, &named) != 0 ||
        !OS_IsSameFile(file, named))
        return syncfs(fd);
    slash[slash == path ? 1 : 0] = '\0';
    const Descriptor folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen() && fsync(folder.get()) == 0)
        return 0;
    return folder.isOpen() && errno == EIO ? -1 : syncfs(fd); // after EIO, names may be lost already
}
