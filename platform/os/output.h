// The kind of the program's output, and how much of the output is unread.
#pragma once

#include "platform/os/types.h"

enum class OS_outputKind : std::uint8_t {
    Unknown, // the system does not report it, or the descriptor is closed
    File,
    BlockDevice,
    Pipe,
    LocalSocket,
    OtherSocket,
    Device // a terminal or another character device
};

extern "C" {

OS_outputKind OS_KindOfOutput(int fd);

// If the descriptor refers to a file, makes all later writes append, also the writes of other programs that
// share the descriptor.  Windows only moves the position to the file's end.  Returns 0, or -1 with errno.
int OS_WriteAtEnd(int fd);

// Number of bytes in a pipe or local socket that the reader has not read yet.  Returns -1 if the reader has
// closed the pipe or socket, or if the system cannot report the number.  Always 0 on Windows.
int OS_UnreadBytes(int fd);

} // extern "C"
