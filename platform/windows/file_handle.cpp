#include "platform/windows/file_handle.h"

#include <cstdint>

#include "platform/windows/error.h"

using namespace qvledger;

HANDLE qvledger::handleOf(int fd) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(fd));
}

HANDLE qvledger::openHandle(const char *path, DWORD access, DWORD disposition, DWORD flags) {
    const HANDLE handle = CreateFileA(path, access, kShareAll, nullptr, disposition, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        setErrno(GetLastError());
    return handle;
}

int qvledger::descriptorOf(HANDLE handle, int flags) {
    if (handle == INVALID_HANDLE_VALUE)
        return -1;
    const int fd = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), flags | _O_BINARY | _O_NOINHERIT);
    if (fd == -1)
        CloseHandle(handle);
    return fd;
}
