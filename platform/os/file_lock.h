// Locking an open file.
#pragma once

#include "platform/os/file_identity.h"
#include "platform/os/files.h" // OS_DONE, OS_TAKEN, OS_REFUSED

extern "C" {

// Takes an exclusive advisory lock without waiting.  Returns OS_DONE; OS_TAKEN if a separately opened
// descriptor has locked the file; OS_REFUSED, with errno, on any other failure.  Copies of the descriptor
// share the lock; closing the last copy releases the lock.
int OS_LockFile(int fd);
void OS_UnlockFile(int fd);

// Prevents other processes from opening a file for writing until the descriptor is closed; on Linux their
// open() waits, by default at most 45 seconds.  path: the file's name.  file: the identity of the descriptor.
// Returns OS_DONE; OS_TAKEN when a process already has the file open for writing (on Windows also without
// sharing); otherwise OS_REFUSED.  Linux refuses all users except the file's owner and root; Windows refuses
// if the name refers to another file.  The descriptor's position may change.
int OS_LockOutWriters(int fd, const char *path, const OS_fileIdentity &file);

// Returns 1 if this program or another program has the file open a second time; otherwise 0.  Also returns 0
// if the system cannot report this, and always on Windows.
int OS_IsOpenElsewhere(int fd);

// Removes a file that is open.  path: the file's name.  REQUIRES: the descriptor is from the OS_OpenToAppend
// that created the file, or OS_LockOutWriters returned OS_DONE for it.  If the name now refers to a different
// file, Linux removes that name, but Windows removes the open file.  Returns 0, or -1 with errno.
int OS_RemoveFile(int fd, const char *path);

} // extern "C"
