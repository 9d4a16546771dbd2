// Calls for copying a file.
#pragma once

#include "platform/os/types.h"

extern "C" {

// Reads at a position of the file and leaves the descriptor's position unchanged.  size: at most INT_MAX.
// Returns the number of bytes read, which is less than size only at the end of the file; -1 on failure, with
// errno.
int OS_ReadAt(int fd, std::int64_t position, void *buffer, unsigned size);

// Creates a file and opens it for writing.  On Linux only the file's owner may access it; on Windows it gets
// the access rights of its folder.  Returns the descriptor; -1 on failure, with errno (EEXIST if the name
// exists).
int OS_MakeFile(const char *path);

// Copies owner and group, access control list, permission bits and times from one open file to another.
// Skips an attribute that cannot be copied.  Unless owner, group and list are copied, the new permission bits
// grant group and others nothing.  Windows copies only the times.
void OS_GiveAttributes(int from, int to);

} // extern "C"
