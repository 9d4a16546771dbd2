// Calls for copying a file.
#pragma once

#include "platform/os/types.h"

extern "C" {

// Reads at a position without moving the descriptor's own.  Returns the bytes read, fewer than asked for only
// at the end of the file; -1 on failure.
int OS_ReadAt(int fd, std::int64_t position, void *buffer, unsigned size);

// Creates a file for writing that only its owner may access; on Windows its folder decides who may.  -1 on
// failure, with errno EEXIST if the name exists.
int OS_MakeFile(const char *path);

// Copies owner and group, access control list, mode and times from one open file to another, as far as the
// caller may.  If owner and group or the list cannot be copied, the mode grants group and others nothing.
// Windows copies only the times.
void OS_GiveAttributes(int from, int to);

} // extern "C"
