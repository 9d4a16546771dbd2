// What a program's output leads to, and whether it arrived there.
#pragma once

#include "platform/os/types.h"

enum class OS_outputKind : std::uint8_t {
    Unknown, // the system does not say, or the descriptor is closed
    File,
    BlockDevice,
    Pipe,
    LocalSocket,
    OtherSocket,
    Device // a terminal or another character device
};

extern "C" {

OS_outputKind OS_KindOfOutput(int fd);

// Makes all later writes through the descriptor, if it leads to a file, go to the file's end; so do those of
// programs that share the descriptor.  0, or -1.
int OS_WriteAtEnd(int fd);

// How many bytes the reader of a pipe or local socket has not read yet; -1 when nobody reads it any more, or
// the system does not say.
int OS_UnreadBytes(int fd);

} // extern "C"
