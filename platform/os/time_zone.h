// The process's time zone, and calendar time in it and in Coordinated Universal Time.
#pragma once

#include <ctime>

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// Reads the process's time zone from the environment or the system's settings.  Sets _timezone to the offset
// of the zone's standard time, in seconds west of Greenwich.
void _tzset();
extern long _timezone;

// Convert an instant to calendar time: gmtime_s in Coordinated Universal Time, localtime_s in the process's
// time zone.  Return 0; non-zero, with the output undefined, if calendar time cannot represent the instant.
int gmtime_s(std::tm *fields, const std::time_t *time);
int localtime_s(std::tm *fields, const std::time_t *time);

// Converts a calendar time in Coordinated Universal Time to an instant and brings the fields into range.
// Returns -1 if the instant cannot be represented.
std::time_t _mkgmtime(std::tm *time);

} // extern "C"

#endif
