// The kind of a program's output, and whether its reader has read it.
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

// Makes all later writes through the descriptor append if it refers to a file, also those of other programs
// that share the descriptor.  Windows only moves the position to the file's end.  0, or -1.
int OS_WriteAtEnd(int fd);

// Number of bytes that the reader of a pipe or local socket has not read yet; -1 when it has no reader any
// more or the system cannot report it.  Always 0 on Windows.
int OS_UnreadBytes(int fd);

} // extern "C"
