// Rights that a set-group-id or set-user-id bit lends a program and that its caller has not.
#pragma once

#include "platform/os/types.h"

extern "C" {

// Non-zero when the program has some.
int OS_HasLentRights();

// With whose rights files are used from now on; a program without lent rights has only its caller's.  Both
// end the program when the system refuses, for it would go on with the wrong rights.
void OS_UseCallersRights();
void OS_UseLentRights();

} // extern "C"
