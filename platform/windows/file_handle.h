// Handles of files, and their descriptors.
#pragma once

#include <utility>

#include "platform/os.h"

namespace qvledger {

// Owner of a handle; its destructor closes the handle.
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

// Lets other programs read, write, rename and remove a file that is open here, because the program that
// writes a log also renames and removes it.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The handle of a descriptor; INVALID_HANDLE_VALUE, with errno, if the descriptor is not open.
HANDLE handleOf(int fd);

// Opens or creates a file, shared with all programs (kShareAll) and not inherited by child processes.
// access, disposition and flags are those of CreateFileA.  Returns INVALID_HANDLE_VALUE on failure, with
// GetLastError and errno set.
HANDLE openHandle(const char *path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL);

// OS_IdentifyDescriptor for the file of a handle.
int identifyHandle(HANDLE handle, OS_fileIdentity *identity);

// Makes a descriptor in binary mode, which takes the ownership of the handle.  On failure, closes the handle
// and returns -1.  Returns -1 for INVALID_HANDLE_VALUE and leaves errno unchanged.
int descriptorOf(HANDLE handle, int flags);

} // namespace qvledger
