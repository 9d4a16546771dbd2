// Rights beyond its caller's that a set-group-id or set-user-id bit lends a program.
#pragma once

#include "platform/os/types.h"

extern "C" {

// Non-zero if the program has lent rights.
int OS_HasLentRights();

// Selects whose rights the program uses for files from now on; without lent rights both are the caller's.
// Aborts the program if the system refuses, because it would continue with the wrong rights.
void OS_UseCallersRights();
void OS_UseLentRights();

} // extern "C"
