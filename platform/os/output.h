// The kind of the program's output, and how much of the output is unread.
#pragma once

#include "platform/os/types.h"

enum class OS_outputKind : std::uint8_t {
    Unknown, // another kind, such as a folder, or a failure, such as a closed descriptor
    File,
    BlockDevice,
    Pipe, // on Windows also a socket
    LocalSocket,
    OtherSocket,
    Device // a terminal or another character device
};

extern "C" {

OS_outputKind OS_KindOfOutput(int fd);

// If the descriptor refers to a regular file, makes all later writes append, also the writes of other
// programs that share the descriptor.  Windows only moves the position to the file's end.  Returns 0, also
// for other outputs; -1 on failure, with errno.
int OS_WriteAtEnd(int fd);

// The errno of a write that has just failed: EPIPE if the reader of a pipe has left.  Windows has another
// errno for this.
int OS_WriteError();

// Number of bytes in a pipe or local socket that the reader has not read yet; a local socket's number
// includes the system's overhead.  Returns -1 if the reader has closed the pipe or socket, or if the system
// cannot report the number.  Always 0 on Windows.
int OS_UnreadBytes(int fd);

} // extern "C"
