// The signals that ask the program to end.
#pragma once

#include "platform/os/types.h"

extern "C" {

// From now on the first signal that asks the program to end (interrupt, termination, hang-up) is noted, and a
// later one ends it; some ask twice at once.  A signal that the program was started to ignore stays ignored.
void OS_NoteEndSignals();
// The noted signal, or 0.
int OS_NotedSignal();
// Ends the program as the noted signal would have; without one it returns.
void OS_EndBySignal();
// Waits; a signal may cut it short.
void OS_Sleep(int milliseconds);

} // extern "C"
