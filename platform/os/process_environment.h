// The environment of the process.
#pragma once

#include "platform/os/types.h"

extern "C" {

#ifndef _WIN32

// Sets the variable of "name=value" in the process environment, which keeps a copy; an empty value removes
// the variable.  0, or -1 with errno.  Other threads may read the environment meanwhile, but must not change
// it by other means.
int _putenv(const char *inp_assignment);

#endif

// OS_KeepEnvironment returns the current environment, which _putenv no longer changes, and
// OS_RestoreEnvironment restores it.  The caller does not release it.  Null when memory runs out, which
// OS_RestoreEnvironment ignores.
char **OS_KeepEnvironment();
void OS_RestoreEnvironment(char **kept);

// An environment variable that configures the program itself; null if it is not set, or if the program has
// lent rights and cannot trust its caller's environment.
const char *OS_ProgramVariable(const char *name);

} // extern "C"
