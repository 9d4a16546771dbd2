// What tests of the log need beside service/log.h.
#pragma once

extern "C" {

// Closes the sink and forgets the environment, so that the next entry starts the log anew.
void LOG__Reset();

} // extern "C"
