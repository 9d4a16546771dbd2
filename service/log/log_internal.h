// An operation for tests of the log.
#pragma once

extern "C" {

// Stops the log and closes the sink.  The next entry reads the environment again and restarts the log.
// systemLogPath: path of the socket that is used for syslog from then on.
void LOG__Reset(const char *systemLogPath = "/dev/log");

} // extern "C"
