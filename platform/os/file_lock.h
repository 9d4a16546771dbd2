// Locking an open file.
#pragma once

#include "platform/os/file_identity.h"
#include "platform/os/files.h" // OS_DONE, OS_TAKEN, OS_REFUSED

extern "C" {

// Takes an exclusive advisory lock without waiting.  Returns OS_DONE; OS_TAKEN if the file is locked already;
// OS_REFUSED, with errno, on any other failure.  Copies of the descriptor share the lock; closing the last of
// them releases the lock.
int OS_LockFile(int fd);
void OS_UnlockFile(int fd);

// Prevents other processes from opening a file for writing until the descriptor is closed; on Linux their
// open() waits, by default at most 45 seconds.  path: the file's name.  file: the identity of the descriptor.
// Returns OS_DONE; OS_TAKEN when a process already has the file open for writing; otherwise OS_REFUSED.
// Linux refuses all users except the file's owner and root; Windows refuses if the name refers to another
// file.  The descriptor's position may change.
int OS_LockOutWriters(int fd, const char *path, const OS_fileIdentity &file);

// Returns 1 if the file has been opened a second time, by this program or another one; otherwise 0.  Also
// returns 0 if the system cannot report it, always on Windows.
int OS_IsOpenElsewhere(int fd);

// Removes a file that is open.  path: the file's name.  REQUIRES: this run made the file or locked out its
// writers.  If the name refers to another file by now, Linux removes that name, but Windows removes the open
// file.  Returns 0, or -1 with errno.
int OS_RemoveFile(int fd, const char *path);

} // extern "C"
