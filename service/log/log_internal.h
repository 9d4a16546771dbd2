// What tests of the log need beside log.h.
#pragma once

extern "C" {

// Closes the sink and forgets the environment; the next entry starts the log again.  The system's log is then
// the daemon at that path.
void LOG__Reset(const char *systemLogPath = "/dev/log");

} // extern "C"
