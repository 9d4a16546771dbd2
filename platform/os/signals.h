// The signals that ask the program to end.
#pragma once

#include "platform/os/types.h"

extern "C" {

// From now on the first signal that asks the program to end (interrupt, termination, hang-up) is only noted,
// and a later one ends the program.  On Linux a signal within 50 ms of the first belongs to it, because some
// senders send two.  A signal that the program was started to ignore stays ignored.
void OS_NoteEndSignals();
// Returns the noted signal, or 0.
int OS_NotedSignal();
// Ends the program as the noted signal would have; returns if there is none.
void OS_EndBySignal();
// A signal may end the sleep early.
void OS_Sleep(int milliseconds);

} // extern "C"
