#include "platform/os.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

constexpr mode_t kOwnerAlone = S_IRUSR | S_IWUSR;
constexpr mode_t kOwnersRights = S_IRWXU;
constexpr mode_t kRights = S_IRWXU | S_IRWXG | S_IRWXO;

int OS_ReadAt(int fd, std::int64_t position, void *buffer, unsigned size) {
    auto *bytes = static_cast<char *>(buffer);
    const unsigned wanted = std::min(size, unsigned{INT_MAX});
    unsigned done = 0;
    while (done < wanted) {
        const ssize_t got = pread(fd, bytes + done, wanted - done, position + done);
        if (got < 0 && errno != EINTR)
            return -1;
        if (got == 0)
            break;
        done += static_cast<unsigned>(std::max<ssize_t>(got, 0));
    }
    return static_cast<int>(done);
}

int OS_MakeFile(const char *path) {
    return open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, kOwnerAlone);
}

// Copies the access control list, if any; returns false on failure.  A file with a list has the list's mask
// in the group bits of its mode, so these bits must not be copied without the list.
static bool giveAccessList(int from, int to) {
    constexpr const char *kName = "system.posix_acl_access";
    char list[65536]; // the size limit of an extended attribute
    const ssize_t size = fgetxattr(from, kName, list, sizeof list);
    if (size < 0)
        return errno == ENODATA || errno == ENOTSUP;
    return fsetxattr(to, kName, list, static_cast<std::size_t>(size), 0) == 0;
}

void OS_GiveAttributes(int from, int to) {
    struct stat status;
    if (fstat(from, &status) != 0)
        return;
    // The bits for group and others suit only a file with the original's owner and group.
    const bool given = fchown(to, status.st_uid, status.st_gid) == 0;
    const bool listed = given && giveAccessList(from, to);
    static_cast<void>(fchmod(to, status.st_mode & (listed ? kRights : kOwnersRights)));
    const timespec times[2] = {status.st_atim, status.st_mtim};
    static_cast<void>(futimens(to, times));
}
