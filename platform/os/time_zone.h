// The process's time zone, and calendar time in it and in Coordinated Universal Time.
#pragma once

#include <ctime>

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// Reads the time zone from the environment and sets _timezone, its standard time in seconds west of
// Greenwich.
void _tzset();
extern long _timezone;

// Calendar time of an instant, in Coordinated Universal Time and in the process's time zone.  0; non-zero,
// with the output undefined, if calendar time cannot represent it.
int gmtime_s(std::tm *fields, const std::time_t *time);
int localtime_s(std::tm *fields, const std::time_t *time);

// Converts a calendar time in Coordinated Universal Time to an instant and brings its fields into range; -1
// if it cannot be represented.
std::time_t _mkgmtime(std::tm *time);

} // extern "C"

#endif
