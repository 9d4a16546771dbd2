// The environment of the process.
#pragma once

#include "platform/os/types.h"

extern "C" {

#ifndef _WIN32

// "name=value" into the process environment, which keeps a copy; an empty value removes the variable.  Other
// threads may read the environment meanwhile, but not change it by other means.
int _putenv(const char *inp_assignment);

#endif

// The environment as it stands, which _putenv leaves unchanged from then on, and a return to it.
char **OS_KeepEnvironment();
void OS_RestoreEnvironment(char **kept);

// A variable of the environment that steers the program itself; null when it is not set, and when lent rights
// make the caller's environment one not to be trusted.
const char *OS_ProgramVariable(const char *name);

} // extern "C"
