#include "platform/os.h"

#include <ctime>

#include <sys/stat.h>

constexpr std::int64_t kSecond = 1'000'000'000;
// How long to wait until file times have certainly advanced: twice the longest step.  The kernel's clock
// advances in steps of up to 10 ms (kFineStep); file systems without fractions of a second, such as FAT, in
// steps of up to 2 s (kCoarseStep).
constexpr std::int64_t kFineStep = kSecond / 50;
constexpr std::int64_t kCoarseStep = 4 * kSecond;
constexpr int kLooks = 3; // attempts for a file that keeps changing

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

int OS_IdentifySettled(int fd, OS_fileIdentity *identity) {
    for (int look = 0; look < kLooks; ++look) {
        std::timespec now = {}; // read before the file's times, so that a later change gets a later time
        if (clock_gettime(CLOCK_REALTIME, &now) != 0 || OS_IdentifyDescriptor(fd, identity) != 0)
            return -1;
        const bool isCoarse = identity->modified % kSecond == 0 && identity->changed % kSecond == 0;
        const std::int64_t step = isCoarse ? kCoarseStep : kFineStep;
        const std::int64_t age = nanoseconds(now) - identity->changed;
        if (age > step || age < -step) // a time far in the future comes from another machine's clock
            return 0;
        OS_Sleep(static_cast<int>(step / 1'000'000));
    }
    return OS_IdentifyDescriptor(fd, identity);
}
