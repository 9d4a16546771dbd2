// The calling process: its id, start-up, locale and name.
#pragma once

#include "platform/os/types.h"

extern "C" {

#ifndef _WIN32

// Returns the process id, in a child the child's id.  Only a child that shares its parent's memory (vfork)
// may get the parent's id.  Usually only the first call in a process makes a system call.
int _getpid();

#endif

// Prepares the process; a program calls this function first.  Afterwards a write to a pipe without a reader,
// or beyond the file size limit, fails instead of ending the program by a signal.  The signal that Linux
// sends when a writer opens a file locked by OS_LockOutWriters is ignored.  Writing to a standard stream that
// was closed at the start still fails: no file that the program opens later gets its number.  On Windows, the
// standard streams are in binary mode.
void OS_PrepareProcess();

// Sets a category of the C library to the user's locale, or changes nothing if that locale is not installed.
// Does nothing on Windows, because the C library there has no UTF-8 locale: names in UTF-8 would be compared
// as if they were in another code page.
void OS_ChooseLocale(int category);

// Registers a function that each child calls after fork.  Returns 0, or non-zero on failure.  Does nothing on
// Windows, which has no fork.
int OS_WatchForks(void (*function)());

// The program's name without the folder, on Linux from argv[0]; valid until the program ends.
const char *OS_ProgramName();

} // extern "C"
