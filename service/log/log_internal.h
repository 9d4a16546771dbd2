// An operation for tests of the log.
#pragma once

extern "C" {

// Closes the sink and forgets the environment; the next entry starts the log again.  systemLogPath: socket of
// the daemon that is the system's log from then on.
void LOG__Reset(const char *systemLogPath = "/dev/log");

} // extern "C"
