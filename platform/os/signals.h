// The signals that ask the program to end.
#pragma once

#include "platform/os/types.h"

extern "C" {

// From now on, notes the first signal that asks the program to end (interrupt, termination, hang-up) and
// continues; a later signal ends the program.  On Linux, another signal within 50 ms of the first is ignored,
// because some senders send two.  A signal that is ignored before the call stays ignored.  When Windows
// closes the console or shuts down, the program has 4.5 seconds to end.
void OS_NoteEndSignals();
// Returns the noted signal; 0 if no signal was noted.
int OS_NotedSignal();
// Ends the program as the noted signal would have ended it, on Windows always as Ctrl+C would; returns if no
// signal was noted.
void OS_EndBySignal();
// Sleeps.  On Linux a signal may end the sleep early.
void OS_Sleep(int milliseconds);

} // extern "C"
