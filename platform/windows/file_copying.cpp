#include "platform/os.h"

#include <cerrno>

#include "platform/windows/file_handle.h"

using namespace qvledger;

int OS_ReadAt(int fd, std::int64_t position, void *buffer, unsigned size) {
    const std::int64_t before = _lseeki64(fd, 0, SEEK_CUR);
    if (before == -1 || _lseeki64(fd, position, SEEK_SET) != position)
        return -1;
    const int done = _read(fd, buffer, size);
    const int reason = errno;
    const bool isBack = _lseeki64(fd, before, SEEK_SET) == before;
    errno = done == -1 ? reason : errno;
    return isBack ? done : -1;
}

int OS_MakeFile(const char *path) {
    return descriptorOf(openHandle(path, GENERIC_WRITE, CREATE_NEW), _O_WRONLY);
}

// The folder decides about access rights, so only the times are copied.
void OS_GiveAttributes(int from, int to) {
    FILETIME made = {}, used = {}, written = {};
    if (GetFileTime(handleOf(from), &made, &used, &written) != 0)
        SetFileTime(handleOf(to), &made, &used, &written);
}
