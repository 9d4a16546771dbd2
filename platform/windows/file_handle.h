// Handles of files, and their descriptors.
#pragma once

#include "platform/os.h"

namespace qvledger {

// Lets other programs read, write, rename and remove a file that is open here, because the program that
// writes a log also renames and removes it.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The handle of a descriptor; INVALID_HANDLE_VALUE, with errno, if the descriptor is not open.
HANDLE handleOf(int fd);

// Opens or creates a file, shared with all programs (kShareAll) and not inherited by child processes.
// access, disposition and flags are those of CreateFileA.  Returns INVALID_HANDLE_VALUE on failure, with
// GetLastError and errno set.
HANDLE openHandle(const char *path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL);

// Makes a descriptor in binary mode, which takes the ownership of the handle.  On failure, closes the handle
// and returns -1.  Returns -1 for INVALID_HANDLE_VALUE and leaves errno unchanged.
int descriptorOf(HANDLE handle, int flags);

} // namespace qvledger
