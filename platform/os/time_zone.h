// The process's time zone, and calendar time in it and in Coordinated Universal Time.
#pragma once

#include <ctime>

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

// Reads the process's time zone and sets _timezone, its standard time in seconds west of Greenwich.
void _tzset();
extern long _timezone;

// The calendar time of an instant, in Coordinated Universal Time and in the process's time zone.  0, or
// another number when no calendar time can hold it; what the output holds is undefined then.
int gmtime_s(std::tm *fields, const std::time_t *time);
int localtime_s(std::tm *fields, const std::time_t *time);

// The instant of a calendar time in Coordinated Universal Time, whose fields come into range; -1 when there
// is none.
std::time_t _mkgmtime(std::tm *time);

} // extern "C"

#endif
