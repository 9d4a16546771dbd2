// Reading a log in large blocks, ahead of its reader.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/descriptor.h"

namespace qvledger {

// What was read ahead of a log's descriptor, from next up to end.  A reader may take bytes from its front by
// moving next, in place of readLog.
struct ReadAhead {
    const unsigned char *next;
    const unsigned char *end;
};

// Good until the descriptor is closed; null when there is none.
ReadAhead *readAheadOf(int fd);

// Gives the bytes read, fewer than asked for only where the file ends, 0 at its end, -1 with errno on
// failure.
int readLog(int fd, void *bytes, std::size_t size);

// As _lseeki64, from where readLog stands.  It drops what was read ahead, so that bytes appended or
// overwritten meanwhile are seen.
std::int64_t seekLog(int fd, std::int64_t offset, int origin);

// A descriptor that readLog was called for has to be closed by this.
void closeLog(int fd);

using LogFile = OwnedDescriptor<closeLog>;

} // namespace qvledger
