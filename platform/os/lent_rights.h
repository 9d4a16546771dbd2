// Lent rights: the rights beyond the calling user's that a program gets from a set-group-id or set-user-id
// bit.
#pragma once

#include "platform/os/types.h"

extern "C" {

// Non-zero if the program has lent rights; always 0 on Windows.
int OS_HasLentRights();

// Select the rights that the program uses for files from now on.  Without lent rights, both select the
// calling user's rights.  If the system refuses, the program aborts, because it must not continue with the
// wrong rights.
void OS_UseCallersRights();
void OS_UseLentRights();

} // extern "C"
