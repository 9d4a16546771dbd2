// The calling process: its number, and what the program needs of it.
#pragma once

#include "platform/os/types.h"

extern "C" {

#ifndef _WIN32

// The number of the process, in a child too, whichever call made it; only one that shares its parent's memory
// (vfork) may get the parent's number.  Asking again costs no system call.
int _getpid();

#endif

// Readies the process, first of all: a failed write to a pipe without a reader or beyond the size that files
// may have is an error of that write, and the arrival of a writer whom a file is held against goes unnoticed,
// instead of being the program's end; and no file that it opens takes the place of a standard stream that
// came closed.
void OS_PrepareProcess();

// Takes up the user's locale for a category of the C library's.  On Windows there is none in UTF-8, and names
// would compare by a code page that they are not in: the category stays as it is.
void OS_ChooseLocale(int category);

// Has a function called in each process that a fork makes.  0, or another number when the system will not.
int OS_WatchForks(void (*function)());

// The name of the program's file, without its folder.
const char *OS_ProgramName();

} // extern "C"
