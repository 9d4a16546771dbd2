// Files beneath their descriptors.
#pragma once

#include <utility>

#include "platform/os.h"

namespace qvledger {

// Closed when its owner goes.
class FileHandle {
public:
    explicit FileHandle(HANDLE handle) : handle_(handle) {}
    ~FileHandle() {
        if (isOpen())
            CloseHandle(handle_);
    }
    FileHandle(const FileHandle &) = delete;
    FileHandle &operator=(const FileHandle &) = delete;

    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }
    HANDLE release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

private:
    HANDLE handle_;
};

// What a program may do with a file that is open here: all, for the writer of a log renames and removes it.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The system's handle of a descriptor; INVALID_HANDLE_VALUE, with errno, if there is none.
HANDLE handleOf(int fd);

// Opens or makes a file, shared with everybody and inherited by nobody.  INVALID_HANDLE_VALUE on failure,
// with the reason for GetLastError and errno.  disposition and flags: as CreateFileA has them.
HANDLE openHandle(const char *path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL);

// OS_IdentifyDescriptor for the file of a handle.
int identifyHandle(HANDLE handle, OS_fileIdentity *identity);

// A descriptor of a handle, which goes with it, in binary; -1, with the handle closed, on failure.
int descriptorOf(HANDLE handle, int flags);

} // namespace qvledger
