// The process's time zone, and calendar time in it.
#pragma once

#include <ctime>

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// Reads the process's time zone from the environment or the system's settings.  Sets _timezone to the offset
// of the zone's standard time, in seconds west of Greenwich.
void _tzset();
extern long _timezone;

// Converts an instant to calendar time in the process's time zone.  Returns 0; non-zero, with the output
// undefined, if calendar time cannot represent the instant.
int localtime_s(std::tm *fields, const std::time_t *time);

} // extern "C"

#endif

extern "C" {

// Can the C library read a value of TZ?  Always 1 on Linux.  The C library of Windows reads the name of a
// zone, such as "Europe/Berlin", as Coordinated Universal Time.
int OS_KnowsZone(const char *zone);

} // extern "C"

// Can localtime_s and mktime convert this time, in seconds since 1970?  On Windows they refuse times before
// 1970 and after the year 3000; for these only the zone's standard offset is known.  Each limit is one day
// inside that range, so that the result is right for local time as well as for Coordinated Universal Time.
inline bool OS_HasZoneRules([[maybe_unused]] std::int64_t seconds) {
#ifdef _WIN32
    return seconds >= 86'400 && seconds < 32'535'129'600;
#else
    return true;
#endif
}
