#include "platform/os.h"

#include <algorithm>
#include <climits>

#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

int OS_ReadAt(int fd, std::int64_t position, void *buffer, unsigned size) {
    const HANDLE file = handleOf(fd);
    auto *bytes = static_cast<char *>(buffer);
    const unsigned wanted = std::min(size, unsigned{INT_MAX});
    const LARGE_INTEGER here = {};
    LARGE_INTEGER before = {};
    if (SetFilePointerEx(file, here, &before, FILE_CURRENT) == 0) {
        setErrno(GetLastError());
        return -1;
    }
    DWORD done = 0;
    bool works = true;
    while (works && done < wanted) {
        const std::uint64_t at = static_cast<std::uint64_t>(position) + done;
        OVERLAPPED place = {};
        place.Offset = static_cast<DWORD>(at);
        place.OffsetHigh = static_cast<DWORD>(at >> 32);
        DWORD got = 0;
        works = ReadFile(file, bytes + done, wanted - done, &got, &place) != 0;
        const DWORD error = works ? DWORD{ERROR_SUCCESS} : GetLastError();
        if (!works)
            setErrno(error);
        works = works || error == ERROR_HANDLE_EOF;
        if (got == 0)
            break;
        done += got;
    }
    // ReadFile has moved the handle's position, although it was called with a position.
    works = SetFilePointerEx(file, before, nullptr, FILE_BEGIN) != 0 && works;
    return works ? static_cast<int>(done) : -1;
}

int OS_MakeFile(const char *path) {
    return descriptorOf(openHandle(path, GENERIC_WRITE, CREATE_NEW), _O_WRONLY);
}

// The folder decides about access rights, so only the times are copied.
void OS_GiveAttributes(int from, int to) {
    FILETIME made = {};
    FILETIME used = {};
    FILETIME written = {};
    if (GetFileTime(handleOf(from), &made, &used, &written) != 0)
        SetFileTime(handleOf(to), &made, &used, &written);
}
