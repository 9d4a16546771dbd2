// Holding an open file against other programs.
#pragma once

#include "platform/os/file_identity.h"
#include "platform/os/files.h" // OS_DONE, OS_TAKEN, OS_REFUSED

extern "C" {

// An exclusive advisory lock, which all descriptors of the open file share and the last one to close ends.
// OS_DONE, OS_TAKEN or OS_REFUSED; never waits.
int OS_LockFile(int fd);
void OS_UnlockFile(int fd);

// Keeps other processes from opening a file, which has the name, for writing until the descriptor is closed.
// file: what the descriptor was identified as.  OS_DONE; OS_TAKEN when one has it open for writing
// already; OS_REFUSED where the system cannot tell, or the name leads to another file.  On Linux only the
// file's owner, or root, can be told.  The descriptor's position is not kept.
int OS_LockOutWriters(int fd, const char *path, const OS_fileIdentity &file);

// 1 if the file is open under another descriptor, in this program or in another one; 0 if it is not, or the
// system does not tell.
int OS_IsOpenElsewhere(int fd);

// Removes an open file that has the name, and that this run made or holds against writers.  Where the system
// can it removes what is open, whatever the name leads to by now.  0, or -1.
int OS_RemoveFile(int fd, const char *path);

} // extern "C"
