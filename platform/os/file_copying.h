// What a copy of a file is made with.
#pragma once

#include "platform/os/types.h"

extern "C" {

// Reads at a position, wherever the descriptor stands and without moving it.  Gives the bytes read, fewer
// than asked for only where the file ends; -1 on failure.
int OS_ReadAt(int fd, std::int64_t position, void *buffer, unsigned size);

// Makes a file to write to, for its owner alone; -1 when that is refused, with errno EEXIST where the name is
// taken.
int OS_MakeFile(const char *path);

// Gives an open file another one's owner and group, access control list, mode and times, as far as the caller
// may.  Where owner and group, or the list, cannot be given, the mode's rights for group and others are not
// given either.
void OS_GiveAttributes(int from, int to);

} // extern "C"
