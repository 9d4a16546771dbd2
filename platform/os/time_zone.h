// The process's time zone.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// Reads the process's time zone and sets _timezone, its standard time in seconds west of Greenwich.
void _tzset();
extern long _timezone;

} // extern "C"

#endif
