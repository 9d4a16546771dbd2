// Reading a file, with read-ahead in large blocks beneath the reader.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// _read gives the bytes read, 0 at the end of the file, -1 on failure; it reads ahead and gives fewer bytes
// than asked for only where the file ends.  _lseeki64 drops what was read ahead, so that bytes appended or
// overwritten meanwhile are seen.
int _read(int in_fd, void *outp_buffer, unsigned in_size);
std::int64_t _lseeki64(int in_fd, std::int64_t in_offset, int in_origin);
int _close(int in_fd);

} // extern "C"

#endif

// What _read has read ahead of a descriptor, from next up to end.  A caller may take bytes from its front by
// moving next, in place of a _read.
struct OS_readAhead {
    const unsigned char *next;
    const unsigned char *end;
};

extern "C" {

// Good until the descriptor is closed; null when there is none.
OS_readAhead *OS_ReadAheadOf(int in_fd);

} // extern "C"
