// Which file it is, whose it is for now, and under which name: what keeps a program from taking one file for
// another while others work on the same folder.
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/malloced.h"
#include "platform/os.h"

constexpr std::int64_t kSecond = 1'000'000'000;
// Twice the steps by which file times advance: of the kernel's clock, and where a file system keeps no
// fractions.
constexpr std::int64_t kFineStep = kSecond / 50;
constexpr std::int64_t kCoarseStep = 4 * kSecond;
constexpr int kLooks = 3;  // at a file that changes all the time
constexpr int kLinks = 40; // that a path may lead through, as for the kernel

// ---- Identity ----

static std::int64_t nanoseconds(const std::timespec &time) {
    return time.tv_sec * kSecond + time.tv_nsec;
}

static int identify(int result, const struct stat &status, OS_fileIdentity *identity) {
    if (result != 0)
        return -1;
    *identity = {status.st_dev,
                 status.st_ino,
                 status.st_size,
                 nanoseconds(status.st_mtim),
                 nanoseconds(status.st_ctim),
                 status.st_nlink,
                 S_ISREG(status.st_mode)};
    return 0;
}

int OS_IdentifyDescriptor(int in_fd, OS_fileIdentity *outp_identity) {
    struct stat status;
    return identify(fstat(in_fd, &status), status, outp_identity);
}

int OS_IdentifyName(const char *inp_path, OS_fileIdentity *outp_identity) {
    struct stat status;
    return identify(lstat(inp_path, &status), status, outp_identity);
}

int OS_IdentifyTarget(const char *inp_path, OS_fileIdentity *outp_identity) {
    struct stat status;
    return identify(stat(inp_path, &status), status, outp_identity);
}

int OS_IdentifySettled(int in_fd, OS_fileIdentity *outp_identity) {
    for (int look = 0; look < kLooks; ++look) {
        std::timespec now = {}; // before the file is looked at: what changes behind the look has a later time
        if (clock_gettime(CLOCK_REALTIME, &now) != 0 || OS_IdentifyDescriptor(in_fd, outp_identity) != 0)
            return -1;
        const bool isCoarse = outp_identity->modified % kSecond == 0 && outp_identity->changed % kSecond == 0;
        const std::int64_t step = isCoarse ? kCoarseStep : kFineStep;
        const std::int64_t age = nanoseconds(now) - outp_identity->changed;
        if (age > step || age < -step) // or by another clock than this machine's
            return 0;
        OS_Sleep(static_cast<int>(step / 1'000'000));
    }
    return OS_IdentifyDescriptor(in_fd, outp_identity);
}

// ---- Holding ----

int OS_LockFile(int in_fd) {
    if (flock(in_fd, LOCK_EX | LOCK_NB) == 0)
        return OS_DONE;
    return errno == EWOULDBLOCK ? OS_TAKEN : OS_REFUSED;
}

void OS_UnlockFile(int in_fd) {
    static_cast<void>(flock(in_fd, LOCK_UN)); // held or not, it is not afterwards
}

int OS_HoldAgainstWriters(int in_fd) {
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

// ---- Names ----

int OS_MoveName(const char *inp_from, const char *inp_to) {
    if (renameat2(AT_FDCWD, inp_from, AT_FDCWD, inp_to, RENAME_NOREPLACE) == 0)
        return OS_DONE;
    return errno == EEXIST ? OS_TAKEN : OS_REFUSED;
}

// The path one symbolic link further; null when the path is no link, or memory runs out.
static Malloced<char> follow(const char *givenPath) {
    char target[PATH_MAX];
    const ssize_t length = readlink(givenPath, target, sizeof target - 1);
    if (length <= 0)
        return nullptr;
    target[length] = '\0';
    const char *slash = target[0] == '/' ? nullptr : std::strrchr(givenPath, '/');
    const std::size_t folder = slash != nullptr ? static_cast<std::size_t>(slash - givenPath) + 1 : 0;
    Malloced<char> path(static_cast<char *>(std::malloc(folder + static_cast<std::size_t>(length) + 1)));
    if (path == nullptr)
        return nullptr;
    std::memcpy(path.get(), givenPath, folder);
    std::memcpy(path.get() + folder, target, static_cast<std::size_t>(length) + 1);
    return path;
}

int OS_OpenToAppend(const char *inp_path, char **outp_made) {
    constexpr int kAppend = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY;
    constexpr mode_t kMode = 0666; // less what the umask takes
    *outp_made = nullptr;
    Malloced<char> path(strdup(inp_path));
    for (int links = 0; path != nullptr && links < kLinks;) {
        int fd = open(path.get(), kAppend | O_CREAT | O_EXCL, kMode);
        if (fd != -1) {
            *outp_made = path.release();
            return fd;
        }
        if (errno != EEXIST)
            return -1;
        fd = open(inp_path, kAppend, mode_t{0});
        if (fd != -1 || errno != ENOENT)
            return fd;
        // It went meanwhile, or the link leads nowhere.
        if (Malloced<char> target = follow(path.get()); target != nullptr)
            path = std::move(target);
        ++links;
    }
    errno = path != nullptr ? ELOOP : ENOMEM;
    return -1;
}

// ---- Contents ----

int OS_OpenAgain(int in_fd) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", in_fd);
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode_t{0});
    return fd != -1 ? fd : open(path, O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode_t{0});
}

int OS_LastByte(int in_fd) {
    unsigned char last = 0;
    return lseek(in_fd, -1, SEEK_END) >= 0 && read(in_fd, &last, 1) == 1 ? last : -1;
}

int OS_CutFile(int in_fd, std::int64_t in_size) {
    return ftruncate(in_fd, in_size) == 0 && lseek(in_fd, in_size, SEEK_SET) == in_size ? 0 : -1;
}
