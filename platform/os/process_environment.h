// The environment of the process.
#pragma once

#include "platform/os/types.h"

extern "C" {

#ifndef _WIN32

// Sets an environment variable from a text "name=value"; an empty value removes the variable.  The
// environment keeps a copy of the text.  Returns 0, or -1 with errno.  Other threads may read the environment
// during the call, but must not change it by other calls.
int _putenv(const char *inp_assignment);

#endif

// OS_KeepEnvironment returns the current environment.  Later calls of _putenv do not change the returned
// environment, and OS_RestoreEnvironment makes it current again.  The calling function must not release it.
// On Windows the result is null or incomplete when memory runs out, and OS_RestoreEnvironment does nothing
// for null.
char **OS_KeepEnvironment();
void OS_RestoreEnvironment(char **kept);

// Returns the value of an environment variable that configures the program itself.  Null if the variable is
// not set, or if the program started with more rights than the calling user has, because it then cannot trust
// the user's environment.
const char *OS_ProgramVariable(const char *name);

} // extern "C"
