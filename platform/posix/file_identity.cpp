#include "platform/os.h"

#include <ctime>

#include <sys/stat.h>

constexpr std::uint64_t kSecond = 1'000'000'000;

static std::int64_t nanoseconds(const std::timespec &time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.tv_sec) * kSecond +
                                     static_cast<std::uint64_t>(time.tv_nsec));
}

static int identify(int result, const struct stat &status, OS_fileIdentity *identity) {
    if (result != 0)
        return -1;
    *identity = {status.st_dev,
                 status.st_ino,
                 status.st_size,
                 nanoseconds(status.st_mtim),
                 nanoseconds(status.st_ctim),
                 status.st_mtim.tv_sec,
                 status.st_nlink,
                 S_ISREG(status.st_mode)};
    return 0;
}

int OS_IdentifyDescriptor(int fd, OS_fileIdentity *identity) {
    struct stat status;
    return identify(fstat(fd, &status), status, identity);
}

int OS_IdentifyName(const char *path, OS_fileIdentity *identity) {
    struct stat status;
    return identify(lstat(path, &status), status, identity);
}

int OS_IdentifyTarget(const char *path, OS_fileIdentity *identity) {
    struct stat status;
    return identify(stat(path, &status), status, identity);
}
