// What the program needs of its process.
#pragma once

#include "platform/os/types.h"

extern "C" {

// First of all: a failed write to a pipe without a reader or beyond the size that files may have is an error
// of that write, and the arrival of a writer whom a file is held against goes unnoticed, instead of being the
// program's end; and no file that it opens takes the place of a standard stream that came closed.
void OS_PrepareProcess();

} // extern "C"
