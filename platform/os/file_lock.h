// Locking an open file.
#pragma once

#include "platform/os/file_identity.h"
#include "platform/os/files.h" // OS_DONE, OS_TAKEN, OS_REFUSED

extern "C" {

// Takes an exclusive advisory lock without waiting: OS_DONE, OS_TAKEN or OS_REFUSED.  All descriptors of the
// open file share the lock; closing the last one releases it.
int OS_LockFile(int fd);
void OS_UnlockFile(int fd);

// Prevents other processes from opening a file for writing until the descriptor is closed; on Linux their
// open() waits, by default at most 45 seconds.  path: the file's name.  file: the identity of the descriptor.
// Returns OS_DONE; OS_TAKEN when a process already has the file open for writing; OS_REFUSED when the system
// cannot do this, or the name refers to another file.  Linux does it only for the file's owner and root.  The
// descriptor's position may change.
int OS_LockOutWriters(int fd, const char *path, const OS_fileIdentity &file);

// 1 if the file is also open elsewhere, in this program or another one; 0 if it is not or the system does not
// report it.
int OS_IsOpenElsewhere(int fd);

// Removes an open file.  path: the file's name.  REQUIRES: this run made the file or locked out its writers.
// Windows removes the open file even if the name refers to another one by now; Linux removes the name.  0, or
// -1 with errno.
int OS_RemoveFile(int fd, const char *path);

} // extern "C"
