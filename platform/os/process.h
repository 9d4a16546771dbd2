// The calling process: its id, start-up, locale and name.
#pragma once

#include "platform/os/types.h"

extern "C" {

#ifndef _WIN32

// The process id, correct in a child too, however the child was made; only one that shares its parent's
// memory (vfork) may get the parent's id.  Repeated calls cost no system call.
int _getpid();

#endif

// Prepares the process; the first call of a program.  Afterwards a write to a pipe without a reader or beyond
// the file size limit fails instead of ending the program by a signal.  The signal that reports a writer of a
// file under OS_LockOutWriters is ignored, too.  No file that the program opens gets the number of a standard
// stream that was closed at the start.
void OS_PrepareProcess();

// Sets a category of the C library to the user's locale.  Does nothing on Windows, which has no UTF-8 locale:
// names would be compared by a code page that is not theirs.
void OS_ChooseLocale(int category);

// Has a function called in each child that fork makes.  0, or non-zero on failure.
int OS_WatchForks(void (*function)());

// The name of the program's file without its folder; valid until the program ends.
const char *OS_ProgramName();

} // extern "C"
