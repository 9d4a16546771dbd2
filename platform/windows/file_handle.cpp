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

int qvledger::descriptorOf(HANDLE opened, int flags) {
    FileHandle handle(opened);
    if (!handle.isOpen())
        return -1;
    const int fd =
        _open_osfhandle(reinterpret_cast<std::intptr_t>(handle.get()), flags | _O_BINARY | _O_NOINHERIT);
    if (fd != -1)
        static_cast<void>(handle.release()); // the descriptor owns the handle now
    return fd;
}
